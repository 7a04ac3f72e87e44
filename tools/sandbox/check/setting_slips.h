// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "json_document.h"

namespace Tarnvel::Sandbox {

/*!
 * \brief Adds to \a diagnostics the slips with settings in \a document, a scenario.
 *
 * They are paths in "locked" and "allowed" that no configuration of the application has, and what
 * its configurations hold that is not allowed, or that its schema does not describe. Faults that
 * replace the configuration count.
 */
void addSettingSlips(const Tools::JsonValue &document, Tools::Diagnostics *diagnostics);

} // namespace Tarnvel::Sandbox
