// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"
#include "value_type.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QString>
#include <QtCore/QVariant>
#include <Tarnvel/ManagedConfiguration/configuration.h>

namespace Tarnvel::Client {

/*! \brief \a value as JSON: only the type of an empty list is lost. */
QJsonValue toJson(const QVariant &value);

/*! \brief The types in \a value: objects stay, everything else becomes the name of its type. */
QJsonValue toJsonOfTypes(const QVariant &value);

/*! \brief \a value on one line. */
QString compactText(const QJsonValue &value);

/*! \brief \a value with each member and item on its own line, without a final line feed. */
QString indentedText(const QJsonValue &value);

/*!
 * \brief Sets \a value to the value of \a type in \a text, an argument of the command line.
 *
 * A string is the text itself; everything else is JSON. The values of a JSON object are integers,
 * booleans, strings, objects, and lists of one of the first three; an empty list is one of strings.
 */
Tools::Failure parseValue(ValueType type, const QString &text, QVariant *value);

/*!
 * \brief The document that \a text holds; null, and \a error is set, if it is not JSON.
 *
 * QJsonDocument::fromJson() would leave out U+FEFF at the beginning of a string.
 */
QJsonDocument parseJson(const QByteArray &text, QJsonParseError *error);

/*!
 * \brief Sets the values in \a object, which have the types of the present ones if there are any.
 *
 * What \a object does not name stays, in nested configurations too.
 */
Tools::Failure mergeJson(const QJsonObject &object,
                         Application::ManagedConfiguration::Configuration *configuration);

} // namespace Tarnvel::Client
