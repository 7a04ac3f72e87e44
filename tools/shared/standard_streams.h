// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

namespace Tarnvel::Tools {

/*!
 * \brief Reserves the descriptors of closed standard streams; reading and writing there fails.
 *
 * Call it first: otherwise the next file that is opened, such as the bus, gets the descriptor and
 * everything that is written to the stream. Started programs inherit the streams closed.
 */
void reserveStandardStreams();

} // namespace Tarnvel::Tools
