// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "code.h"
#include "setting.h"

namespace Tarnvel::Schema {

/*! \brief Writes the class that changes the settings in \a object, of the class \a className. */
void writeChange(Code *code, const Setting &object, const QString &className);

} // namespace Tarnvel::Schema
