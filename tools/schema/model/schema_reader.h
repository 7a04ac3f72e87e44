// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "setting.h"

namespace Tarnvel::Schema {

/*!
 * \brief The schema that \a text describes.
 *
 * It is JSON Schema, draft-07, with the types and keywords that describe values of a configuration.
 * Everything else adds to \a diagnostics, which are those of \a text; the schema is then
 * incomplete.
 */
Schema parseSchema(const QByteArray &text, Tools::Diagnostics *diagnostics);

/*!
 * \brief Sets \a schema to the content of the file \a fileName.
 *
 * Returns all that is wrong with it. A file that cannot be read has the status EX_NOINPUT, one that
 * is not a schema EX_DATAERR.
 */
QVector<Tools::Failure> readSchema(const QString &fileName, Schema *schema);

} // namespace Tarnvel::Schema
