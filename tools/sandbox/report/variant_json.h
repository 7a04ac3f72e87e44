// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QJsonValue>
#include <QtCore/QString>

#include <glib.h>

namespace Tarnvel::Sandbox {

/*! \brief \a value as a scenario holds it; readConfiguration() reads it back. */
QJsonValue toJson(GVariant *value);

/*! \brief toJson() as a text on one line. */
QString toJsonText(GVariant *value);

} // namespace Tarnvel::Sandbox
