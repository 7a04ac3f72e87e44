// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "fuzzer_input.h"

#include <gio/gio.h>
#include <memory>

namespace Tarnvel::Testing {

using Value = std::shared_ptr<GVariant>;

/*!
 * \brief Generates a dictionary a{sv} from \a input, with values of all types that D-Bus allows.
 *
 * Each entry is a key, which ends with a line feed, the signature of its value, and the value: for
 * a number its bytes, for a text a line, for an array the number of its elements modulo 16 and the
 * elements. A byte that is not a type code where one is expected selects one. All handles refer to
 * the first open file of the message.
 */
Value generateDictionary(FuzzerInput &input);

} // namespace Tarnvel::Testing
