// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "fault.h"
#include "json_document.h"

namespace Tarnvel::Sandbox {

// What an expectation has in common with a fault. For null, each returns a default value.

/*! \brief The method that \a value names. */
QString readMethod(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics);

/*! \brief The full name of the error that \a value names, with or without its prefix. */
QString readErrorName(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics);

/*! \brief The kind of fault that \a value names; null if it names none. */
const FaultDescription *readFaultDescription(const Tools::JsonValue *value,
                                             Tools::Diagnostics *diagnostics);

/*! \brief The fault that \a value describes; adds to \a diagnostics if it describes none. */
Fault readFault(const Tools::JsonValue &value, Tools::Diagnostics *diagnostics);

} // namespace Tarnvel::Sandbox
