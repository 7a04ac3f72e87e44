// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "value_type.h"

#include <QtCore/QList>
#include <QtCore/QStringList>

namespace Tarnvel::Client {

namespace {

struct NamedType
{
    ValueType type;
    const char *name;
};

constexpr NamedType namedTypes[] = {
    {ValueType::Int, "int"},
    {ValueType::Bool, "bool"},
    {ValueType::String, "string"},
    {ValueType::Ints, "ints"},
    {ValueType::Bools, "bools"},
    {ValueType::Strings, "strings"},
    {ValueType::Configuration, "configuration"},
};

template<typename T>
QVariant makeTypedList(const QVariantList &items)
{
    QList<T> list;
    for (const QVariant &item : items)
        list.append(item.value<T>());
    return QVariant::fromValue(list);
}

} // namespace

QString typeName(ValueType type)
{
    for (const NamedType &entry : namedTypes) {
        if (entry.type == type)
            return QString::fromLatin1(entry.name);
    }
    Q_UNREACHABLE();
}

QString allTypeNames()
{
    QStringList names;
    for (const NamedType &entry : namedTypes)
        names.append(QString::fromLatin1(entry.name));
    return names.join(QStringLiteral(", "));
}

std::optional<ValueType> typeFromName(const QString &name)
{
    for (const NamedType &entry : namedTypes) {
        if (name == QLatin1String(entry.name))
            return entry.type;
    }
    return std::nullopt;
}

ValueType typeOf(const QVariant &value)
{
    const int type = value.userType();
    if (type == QMetaType::Int)
        return ValueType::Int;
    if (type == QMetaType::Bool)
        return ValueType::Bool;
    if (type == QMetaType::QString)
        return ValueType::String;
    if (type == QMetaType::QStringList || type == qMetaTypeId<QList<QString>>())
        return ValueType::Strings;
    if (type == qMetaTypeId<QList<int>>())
        return ValueType::Ints;
    if (type == qMetaTypeId<QList<bool>>())
        return ValueType::Bools;
    return ValueType::Configuration;
}

std::optional<ValueType> itemTypeOf(ValueType type)
{
    switch (type) {
    case ValueType::Ints:
        return ValueType::Int;
    case ValueType::Bools:
        return ValueType::Bool;
    case ValueType::Strings:
        return ValueType::String;
    default:
        return std::nullopt;
    }
}

QVariant makeList(ValueType type, const QVariantList &items)
{
    switch (type) {
    case ValueType::Ints:
        return makeTypedList<int>(items);
    case ValueType::Bools:
        return makeTypedList<bool>(items);
    default:
        // A list of strings that is read has this form, too.
        return QVariant(items).toStringList();
    }
}

} // namespace Tarnvel::Client
