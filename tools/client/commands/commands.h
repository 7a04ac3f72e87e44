// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "command_line.h"
#include "failure.h"

namespace Tarnvel::Client {

/*!
 * \name The commands
 *
 * Each does what \a commandLine asks for and returns when it is done. The process ends with the
 * status of the returned failure.
 */
/*! @{ */

/*! \brief Prints the configuration, or one value, or the types of either. */
Tools::Failure get(const CommandLine &commandLine);

/*! \brief Prints path, type and value of each setting, in the order of the lines' bytes. */
Tools::Failure list(const CommandLine &commandLine);

/*! \brief Changes values. */
Tools::Failure set(const CommandLine &commandLine);

/*! \brief Prints all values, or those at a path, and then each difference, until the bus is lost.
 */
Tools::Failure watch(const CommandLine &commandLine);

/*!
 * \brief Reports which prerequisites of a request are met, and what to do about the others.
 *
 * The returned failure has a message only if the arguments are wrong.
 */
Tools::Failure check(const CommandLine &commandLine);

/*! @} */

} // namespace Tarnvel::Client
