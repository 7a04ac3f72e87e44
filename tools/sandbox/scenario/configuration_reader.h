// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "json_document.h"
#include "variant.h"

namespace Tarnvel::Sandbox {

/*!
 * \brief The configuration, an a{sv}, that \a value describes.
 *
 * - An integer is an int32, a string a string, a boolean a boolean.
 * - A list of values of one of these types is an array of it, an empty list one of strings.
 * - An object is a nested configuration.
 * - An object with the members "$type" and "value" is a value of the D-Bus type that "$type" names.
 *   Its integers are integers, its "d" numbers, its "s", "o" and "g" strings, its arrays and
 *   structures lists. A dictionary is an object, or a list of [key, value] if its keys are neither
 *   "s" nor "o" nor "g". In a variant, a value stands by these same rules.
 *
 * Everything else is refused, and so is what D-Bus would not carry: then the result is null and
 * \a mistake says where and why.
 */
Variant configurationFromJson(const JsonValue &value, Mistake *mistake);

/*!
 * \brief The array that the List \a value describes by the rules of configurationFromJson().
 *
 * Null and a \a mistake if it describes none.
 */
Variant arrayFromJson(const JsonValue &value, Mistake *mistake);

/*! \brief Sets \a number if \a value is an integer in the range from \a minimum to \a maximum. */
bool integerFromJson(const JsonValue &value, qint64 minimum, qint64 maximum, qint64 *number);

/*! \brief True if D-Bus carries \a text as a string. */
bool isDBusText(const QString &text);

} // namespace Tarnvel::Sandbox
