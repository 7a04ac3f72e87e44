// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "fuzzer_input.h"

#include <Tarnvel/ManagedConfiguration/configuration.h>

namespace Tarnvel::Testing {

/*!
 * \brief Generates a configuration from \a input, with values of unsupported types too.
 *
 * Each entry is a key, which ends with a line feed, a letter for the type of its value, and the
 * value. A byte that is not such a letter selects one. '}' ends a nested configuration.
 */
Application::ManagedConfiguration::Configuration generateConfiguration(FuzzerInput &input);

} // namespace Tarnvel::Testing
