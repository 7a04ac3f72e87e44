// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <sys/wait.h>

namespace Tarnvel::Sandbox {

/*! \brief The exit status if it is not that of the command; the values are those of timeout(1). */
enum ExitStatus {
    /*! The command succeeded, but an expectation was not met. */
    ExpectationsNotMet = 124,
    /*! The sandbox itself failed: on the command line, a file, or the bus. */
    SandboxFailed = 125,
    /*! The command was found, but cannot be run. */
    CommandNotExecutable = 126,
    CommandNotFound = 127,
};

/*! \brief The exit status that a shell reports for a waitpid() \a status: 128+n for signal n. */
inline int shellStatus(int status)
{
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace Tarnvel::Sandbox
