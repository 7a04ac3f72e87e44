// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QProcess>
#include <QtCore/QStringList>

#include <functional>

namespace Tarnvel::Sandbox {

/*!
 * \brief The command that is run in the sandbox, on the sandbox's own channels.
 *
 * It is killed should the sandbox end before it.
 */
class Command
{
public:
    /*! \brief \a words, the program and its arguments, to be run in \a environment. */
    Command(const QStringList &words, const QProcessEnvironment &environment);

    /*!
     * \brief Starts the command, and calls \a finished once it has ended.
     *
     * \a finished receives the exit status as a shell has it: 128 and its number added when a
     * signal ended the command. False if the command cannot be started; errorString() then says
     * why, and \a finished is never called.
     */
    bool start(const std::function<void(int status)> &finished);

    /*! \brief Sends \a signal to the command, and kills it if it is still there 5 seconds later. */
    void end(int signal);

    /*! \brief What went wrong in start(). */
    QString errorString() const;

private:
    class Process : public QProcess
    {
    protected:
        void setupChildProcess() override;
    };

    Process m_process;
};

} // namespace Tarnvel::Sandbox
