// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "outcome.h"

#include <gio/gio.h>

namespace Tarnvel::Testing {

/*!
 * \brief What must come of reading \a argument, a dictionary a{sv}, as a configuration.
 *
 * The value is written as describe() writes a configuration.
 */
Outcome expectedReading(GVariant *argument);

} // namespace Tarnvel::Testing
