// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <csignal>
#include <functional>

namespace Tarnvel::Sandbox {

/*!
 * \brief The signals that ask this process to end: SIGHUP, SIGINT, SIGQUIT and SIGTERM.
 *
 * SIGHUP is not among them where it is ignored, so that nohup has its effect.
 */
sigset_t terminationSignals();

/*!
 * \brief True if \a signal, which came with \a code, is from a key pressed on the terminal.
 *
 * It then has gone to all processes in the terminal's foreground, and not to this one alone.
 */
bool isTyped(int signal, int code);

/*!
 * \brief Receives the signals that ask this process to end, in the event loop.
 *
 * They are blocked from then on. Make one before there is a second thread. A signal that comes
 * before the event loop runs is kept for it.
 */
class TerminationSignals
{
public:
    using Handler = std::function<void(int signal, bool isTyped)>;

    /*! \brief From now on, calls \a handler for each signal. */
    explicit TerminationSignals(Handler handler);

    /*! \brief Ends the receiving. */
    ~TerminationSignals();

    TerminationSignals(const TerminationSignals &) = delete;
    TerminationSignals &operator=(const TerminationSignals &) = delete;

private:
    void receive();

    Handler m_handler;
    int m_file;
    unsigned int m_source;
};

} // namespace Tarnvel::Sandbox
