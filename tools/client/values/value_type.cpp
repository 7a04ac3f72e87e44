// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "value_type.h"

#include <QtCore/QList>

#include <algorithm>
#include <iterator>

namespace Tarnvel::Client {

namespace {

struct TypeInfo
{
    ValueType type;
    const char *name;
    const char *description;
    std::optional<ValueType> itemType;
};

constexpr TypeInfo typeInfos[] = {
    {ValueType::Int, "int", "a 32-bit integer", {}},
    {ValueType::Bool, "bool", "true or false", {}},
    {ValueType::String, "string", "a string", {}},
    {ValueType::Ints, "ints", "a list of integers", ValueType::Int},
    {ValueType::Bools, "bools", "a list of booleans", ValueType::Bool},
    {ValueType::Strings, "strings", "a list of strings", ValueType::String},
    {ValueType::Configuration, "configuration", "a JSON object", {}},
};

const TypeInfo &infoOf(ValueType type)
{
    return *std::find_if(std::begin(typeInfos), std::end(typeInfos),
                         [type](const TypeInfo &info) { return info.type == type; });
}

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
    return QLatin1String(infoOf(type).name);
}

QString typeDescription(ValueType type)
{
    return QLatin1String(infoOf(type).description);
}

std::optional<ValueType> typeFromName(const QString &name)
{
    for (const TypeInfo &info : typeInfos) {
        if (name == QLatin1String(info.name))
            return info.type;
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
    return infoOf(type).itemType;
}

ValueType listTypeOf(ValueType itemType)
{
    if (itemType == ValueType::Int)
        return ValueType::Ints;
    return itemType == ValueType::Bool ? ValueType::Bools : ValueType::Strings;
}

QVariant makeList(ValueType type, const QVariantList &items)
{
    switch (type) {
    case ValueType::Ints:
        return makeTypedList<int>(items);
    case ValueType::Bools:
        return makeTypedList<bool>(items);
    default:
        // A list of strings that is read has this form too.
        return QVariant(items).toStringList();
    }
}

} // namespace Tarnvel::Client
