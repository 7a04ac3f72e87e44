// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <sys/wait.h>

namespace Tarnvel::Sandbox {

/*! \brief How the sandbox ends when it cannot end as its command does; as timeout(1) has them. */
enum ExitStatus {
    /*! The command succeeded, but an expected call did not come. */
    ExpectationsNotMet = 124,
    /*! The sandbox itself failed: on the command line, a file, or the bus. */
    SandboxFailed = 125,
    /*! The command was found, but cannot be run. */
    CommandNotExecutable = 126,
    CommandNotFound = 127,
};

/*! \brief The exit status that a shell makes of \a status, from waitpid(): 128+n for signal n. */
inline int shellStatus(int status)
{
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace Tarnvel::Sandbox
