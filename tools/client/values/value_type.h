// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QVariant>

#include <optional>

namespace Tarnvel::Client {

/*! \brief The types of values, as far as a user can tell them apart. */
enum class ValueType {
    Int,
    Bool,
    String,
    Ints,
    Bools,
    Strings,
    Configuration,
};

/*! \brief The name of \a type on the command line and in results: "ints". */
QString typeName(ValueType type);

/*! \brief The names of all types, with a comma between them. */
QString allTypeNames();

/*! \brief The type that has the name \a name. */
std::optional<ValueType> typeFromName(const QString &name);

/*! \brief The type of \a value, which a configuration holds. */
ValueType typeOf(const QVariant &value);

/*! \brief The type of the items of a list of \a type; nothing if it is none of lists. */
std::optional<ValueType> itemTypeOf(ValueType type);

/*! \brief The list of type \a type, one of lists, of \a items, which have its items' type. */
QVariant makeList(ValueType type, const QVariantList &items);

} // namespace Tarnvel::Client
