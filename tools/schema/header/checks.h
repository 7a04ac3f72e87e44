// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "code.h"
#include "setting.h"

namespace Tarnvel::Schema {

// A generated class has private structs: Checks for all settings; for those of each object,
// Constants with their values and patterns, and Allowed with a function that decides whether a
// value is allowed.

/*! \brief Writes Checks, and its base ValueChecks. */
void writeChecks(Code *code);

/*! \brief Writes Constants and Allowed for the members of \a object. */
void writeAllowed(Code *code, const Setting &object);

/*! \brief An expression for the values of the setting, or for its pattern. */
QString constantName(const Setting &setting);

/*! \brief The function that decides whether a value of the setting is allowed. */
QString checkName(const Setting &setting);

} // namespace Tarnvel::Schema
