// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

namespace Tarnvel::Schema {

/*! \brief The struct Checks up to its closing brace, in lines for the body of a class. */
extern const char checksText[];

/*! \brief Another function in it, for patterns. */
extern const char patternCheckText[];

} // namespace Tarnvel::Schema
