// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"
#include "service/requests.h"
#include "setting.h"

namespace Tarnvel::Client {

/*!
 * \brief Prints which settings in \a reading do not agree with \a schema, or are deprecated.
 *
 * The returned failure has no message. A deprecated setting is none.
 */
Tools::Failure checkSettings(const Schema::Schema &schema, const Reading &reading);

} // namespace Tarnvel::Client
