// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QJsonValue>
#include <QtCore/QString>

#include <glib.h>

namespace Tarnvel::Sandbox {

/*!
 * \brief \a value for people and for logs, as a scenario file would hold it.
 *
 * Of a value that a scenario file holds under a "$type", GLib's text form stands there.
 */
QJsonValue toJson(GVariant *value);

/*! \brief toJson() as a text on one line. */
QString toJsonText(GVariant *value);

} // namespace Tarnvel::Sandbox
