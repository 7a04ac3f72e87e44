// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

namespace Tarnvel::Tools {

/*!
 * \brief Makes reading from and writing to a standard channel that is closed fail and do no more.
 *
 * Call it first of all: otherwise what is written goes into whatever is opened next, such as the
 * bus. Programs that are started find the channel closed as it was.
 */
void reserveStandardStreams();

} // namespace Tarnvel::Tools
