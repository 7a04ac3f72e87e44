// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

namespace Tarnvel::Schema {

/*! \brief The text of value_checks.h and entry_checks.h. */
extern const char *const checksTexts[2];

} // namespace Tarnvel::Schema
