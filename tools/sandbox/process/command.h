// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "signal_state.h"

#include <QtCore/QProcess>
#include <QtCore/QStringList>

#include <functional>

namespace Tarnvel::Sandbox {

/*!
 * \brief The command that is run in the sandbox, on the sandbox's own channels and terminal.
 *
 * It is killed should the sandbox end before it.
 */
class Command
{
public:
    /*!
     * \brief \a words, the program and its arguments, to be run in \a environment.
     *
     * It finds the signals as \a signals has them.
     */
    Command(const QStringList &words, const QProcessEnvironment &environment,
            const SignalState &signals);

    /*!
     * \brief Starts the command, and calls \a finished once it has ended.
     *
     * \a finished receives the exit status as a shell has it: 128 and its number added when a
     * signal ended the command. False if the command cannot be started; errorString() then says
     * why, and \a finished is never called.
     */
    bool start(const std::function<void(int status)> &finished);

    /*!
     * \brief Kills the command if it is still there in 5 seconds; \a signal asks for this end.
     *
     * Passes \a signal on to the command, unless \a isTyped: then the terminal has done so.
     */
    void end(int signal, bool isTyped);

    /*! \brief What went wrong in start(). */
    QString errorString() const;

private:
    class Process : public QProcess
    {
    public:
        explicit Process(const SignalState &signals);

    protected:
        void setupChildProcess() override;

    private:
        SignalState m_signals;
    };

    Process m_process;
};

} // namespace Tarnvel::Sandbox
