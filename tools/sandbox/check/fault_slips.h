// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "json_document.h"

namespace Tarnvel::Sandbox {

/*! \brief Adds to \a diagnostics the faults in \a document, a scenario, that are never injected. */
void addFaultSlips(const Tools::JsonValue &document, Tools::Diagnostics *diagnostics);

} // namespace Tarnvel::Sandbox
