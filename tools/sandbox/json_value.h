// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "variant.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace Tarnvel::Sandbox {

/*! \brief The place of the member \a key of the object at \a place, such as "applications/key". */
QString memberPlace(const QString &place, const QString &key);

/*! \brief The place of an item of the list at \a place, such as "applications[0]". */
QString itemPlace(const QString &place, int index);

/*! \brief What is wrong, and where: "applications[0]/locked: not a list". */
QString mistakeAt(const QString &place, const QString &text);

/*!
 * \brief The configuration that \a object, which stands at \a place, describes.
 *
 * - An integer is an int32, a string a string, a boolean a boolean.
 * - A list of values of one of these types is an array of it, an empty list one of strings.
 * - An object is a nested configuration.
 *
 * Everything else is refused, and so is what D-Bus would not carry: then the result is null and
 * \a mistake says where and why.
 */
Variant configurationFromJson(const QJsonObject &object, const QString &place, QString *mistake);

} // namespace Tarnvel::Sandbox
