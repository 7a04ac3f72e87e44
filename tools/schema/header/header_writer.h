// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "setting.h"

namespace Tarnvel::Schema {

/*!
 * \brief A C++ header with the class \a className, which reads and changes the settings of \a
 * schema.
 *
 * \a schemaName is named in it. checkNames() must have found nothing.
 */
QString writeHeader(const Schema &schema, const QString &className, const QString &schemaName);

} // namespace Tarnvel::Schema
