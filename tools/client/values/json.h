// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "value_type.h"

#include <QtCore/QJsonValue>
#include <QtCore/QString>
#include <QtCore/QVariant>

namespace Tarnvel::Client {

/*! \brief \a value as JSON: nothing is lost but the type of an empty list. */
QJsonValue toJson(const QVariant &value);

/*! \brief The types in \a value: objects stay, all else becomes the name of its type. */
QJsonValue toJsonOfTypes(const QVariant &value);

/*! \brief \a value on one line. */
QString compactText(const QJsonValue &value);

/*! \brief \a value with each member and item on a line of its own, without a line feed behind. */
QString indentedText(const QJsonValue &value);

/*!
 * \brief The value of \a type that \a text describes.
 *
 * Integers are decimal, booleans "true" or "false", and a string is taken as it is. A list is a
 * JSON list. A configuration is a JSON object of integers, booleans, strings, lists of one of
 * these, and objects; an empty list in it is one of strings.
 *
 * If \a text describes none, the result is invalid and \a mistake says why.
 */
QVariant valueFromText(ValueType type, const QString &text, QString *mistake);

} // namespace Tarnvel::Client
