// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QVariant>

#include <optional>

namespace Tarnvel::Client {

/*! \brief The types of values that a user can tell apart. */
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

/*! \brief The values of \a type, for a message: "a list of integers". */
QString typeDescription(ValueType type);

/*! \brief The type called \a name; nullopt if there is none. */
std::optional<ValueType> typeFromName(const QString &name);

/*! \brief The type of \a value in a configuration; Configuration if it is invalid. */
ValueType typeOf(const QVariant &value);

/*! \brief The type of the items of a list of \a type; nullopt unless \a type is a list type. */
std::optional<ValueType> itemTypeOf(ValueType type);

/*! \brief The type of a list of \a itemType; that of a list of strings if there is none. */
ValueType listTypeOf(ValueType itemType);

/*! \brief Makes a list of the list type \a type from \a items, which have its item type. */
QVariant makeList(ValueType type, const QVariantList &items);

} // namespace Tarnvel::Client
