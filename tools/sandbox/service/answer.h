// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "scenario/fault.h"

#include <optional>

namespace Tarnvel::Sandbox {

/*!
 * \brief The values of an answer, a tuple with a floating reference.
 *
 * It holds \a configuration, or nothing if that is null, in the form that \a fault gives it.
 */
GVariant *answerValues(GVariant *configuration, const std::optional<Fault> &fault);

} // namespace Tarnvel::Sandbox
