// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "fault.h"
#include "json_document.h"

namespace Tarnvel::Sandbox {

/*! \brief Sets \a fault to the one that \a value describes; if it describes none, \a mistake. */
bool faultFromJson(const JsonValue &value, Fault *fault, Mistake *mistake);

} // namespace Tarnvel::Sandbox
