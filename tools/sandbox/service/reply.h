// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "scenario/fault.h"

#include <optional>

namespace Tarnvel::Sandbox {

/*!
 * \brief The arguments of a reply, a tuple with a floating reference.
 *
 * They are \a configuration, or none if that is null, changed as \a fault says.
 */
GVariant *replyArguments(GVariant *configuration, const std::optional<Fault> &fault);

} // namespace Tarnvel::Sandbox
