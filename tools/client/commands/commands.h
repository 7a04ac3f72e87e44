// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "command_line.h"
#include "usage_failure.h"

namespace Tarnvel::Client {

/*!
 * \name The commands
 *
 * Each begins what \a commandLine asks for, and ends the event loop, with the exit status, when it
 * is done. A failure means that the arguments are not those of the command; nothing is begun then.
 */
/*! @{ */

/*! \brief Prints the configuration, or one value, or the types of either. */
Failure get(const CommandLine &commandLine);

/*! \brief Changes values. */
Failure set(const CommandLine &commandLine);

/*! \brief Prints all values and then, until the bus is lost, each difference. */
Failure watch(const CommandLine &commandLine);

/*! \brief Prints what is there of all that a request needs, and what to do about the rest. */
Failure check(const CommandLine &commandLine);

/*! @} */

} // namespace Tarnvel::Client
