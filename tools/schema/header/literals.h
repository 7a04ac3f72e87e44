// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "setting.h"

namespace Tarnvel::Schema {

/*! \brief Names for the type of a setting, neither an enumeration nor an object. */
struct CppType
{
    const char *type;
    const char *parameter;
    /*! The function of Checks for the type. */
    const char *check;
    /*! Reads the variable "value". */
    const char *read;
};

CppType cppType(const Setting &setting);

/*! \brief \a text as a string literal without prefix, of ASCII only: "gr\\u00f6\\u00dfe". */
QString toLiteral(const QString &text);

/*! \brief An expression for the QString \a text. */
QString toStringLiteral(const QString &text);

/*! \brief An expression for \a number. The literal of the lowest integer would have a wider type.
 */
QString toExpression(qint32 number);

/*! \brief Expressions for integers, booleans or strings, with commas between them. */
QString toExpressions(Type type, const std::vector<Tools::JsonValue> &values);

/*! \brief An expression for the value \a value of \a setting, neither an enumeration nor an object.
 */
QString toExpression(const Setting &setting, const Tools::JsonValue &value);

} // namespace Tarnvel::Schema
