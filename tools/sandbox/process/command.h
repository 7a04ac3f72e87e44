// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <csignal>
#include <functional>

namespace Tarnvel::Sandbox {

/*! \brief The signals that were blocked or ignored when this process started. Create it first. */
class SignalState
{
public:
    /*! \brief Saves the state; from then on this process ignores SIGPIPE, but not SIGCHLD. */
    SignalState();

    /*! \brief Restores the state, in a child between fork and exec. */
    void restore() const;

private:
    sigset_t m_blocked;
    sigset_t m_ignored;
};

/*! \brief The command that the sandbox runs, on the sandbox's own streams and terminal. */
class Command
{
public:
    /*!
     * \brief Starts a program with its \a arguments, the program first, on the bus at \a
     * busAddress.
     *
     * Calls \a finished with the shellStatus() when the program has ended, unless this fails: then
     * it was not found or cannot be run. The event loop must be GLib's. The program starts
     * with the state in \a signals, and is killed if this process ends.
     */
    Tools::Failure start(const QStringList &arguments, const QString &busAddress,
                         SignalState signals, const std::function<void(int status)> &finished);

    /*!
     * \brief Passes \a signal on to the command, and kills it if it has not ended in 5 seconds.
     *
     * If the signal \a isTyped, the command has received it from the terminal.
     */
    void end(int signal, bool isTyped);

private:
    std::function<void(int status)> m_finished;
    pid_t m_processId = 0;
    QObject m_context;
};

} // namespace Tarnvel::Sandbox
