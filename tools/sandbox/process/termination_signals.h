// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QSocketNotifier>

#include <csignal>
#include <functional>

namespace Tarnvel::Sandbox {

/*!
 * \brief The signals that ask this process to end: SIGHUP, SIGINT, SIGQUIT and SIGTERM.
 *
 * SIGHUP is not one of them if it is ignored, so that nohup(1) works.
 */
sigset_t terminationSignals();

/*!
 * \brief True if \a signal, received with si_code \a code, comes from a key typed at the terminal.
 *
 * The terminal sends such a signal to all processes of the foreground process group.
 */
bool isTyped(int signal, int code);

/*!
 * \brief Receives the terminationSignals() in the event loop.
 *
 * It blocks them, so create it before any second thread. A signal that comes before the event
 * loop runs is kept for it.
 */
class TerminationSignals
{
public:
    /*! \brief Calls \a handler for each signal, until this object is destroyed. */
    explicit TerminationSignals(const std::function<void(int signal, bool isTyped)> &handler);
    ~TerminationSignals();

private:
    sigset_t m_signals;
    int m_file;
    QSocketNotifier m_notifier;
};

} // namespace Tarnvel::Sandbox
