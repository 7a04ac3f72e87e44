// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "fault.h"
#include "json_document.h"

namespace Tarnvel::Sandbox {

/*! \brief The fault that \a value describes; adds to \a diagnostics if it describes none. */
Fault readFault(const JsonValue &value, Diagnostics *diagnostics);

} // namespace Tarnvel::Sandbox
