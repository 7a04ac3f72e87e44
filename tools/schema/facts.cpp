// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "facts.h"

#include <QtCore/QMap>

namespace Tarnvel::Schema {

namespace {

QString typeName(const Setting &setting)
{
    static const QMap<QByteArray, QString> names {
        {"i", QStringLiteral("integer")},
        {"b", QStringLiteral("boolean")},
        {"s", QStringLiteral("string")},
        {"ai", QStringLiteral("list of integers")},
        {"ab", QStringLiteral("list of booleans")},
        {"as", QStringLiteral("list of strings")},
    };
    return names.value(dbusType(setting));
}

// Empty if there is no limit.
QStringList limits(qint32 minimum, qint32 maximum, qint32 lowest)
{
    const bool hasMaximum = maximum != std::numeric_limits<qint32>::max();
    if (minimum != lowest && hasMaximum)
        return {QStringLiteral("%1 to %2").arg(minimum).arg(maximum)};
    if (minimum != lowest)
        return {QStringLiteral("at least %1").arg(minimum)};
    return hasMaximum ? QStringList {QStringLiteral("at most %1").arg(maximum)} : QStringList();
}

QStringList json(const std::vector<Tools::JsonValue> &values)
{
    QStringList texts;
    for (const Tools::JsonValue &value : values)
        texts.append(toJson(value));
    return texts;
}

} // namespace

QVector<Fact> factsOf(const Setting &setting)
{
    const Scalar &scalar = setting.scalar;
    const bool isList = setting.type == Type::List;
    QVector<Fact> facts;
    const auto add = [&facts](const char *name, const QStringList &values, bool isCode) {
        if (!values.isEmpty())
            facts.append({name, values, isCode});
    };
    if (setting.type == Type::Object)
        return facts;
    add("Type", {typeName(setting)}, false);
    add("Default", {toJson(setting.defaultValue)}, true);
    add("Number of items", limits(setting.minimumItems, setting.maximumItems, 0), false);
    add(isList ? "Allowed items" : "Allowed values", json(scalar.values), true);
    add(isList ? "Range of items" : "Range",
        limits(scalar.minimum, scalar.maximum, std::numeric_limits<qint32>::min()), false);
    add(isList ? "Length of items in characters" : "Length in characters",
        limits(scalar.minimumLength, scalar.maximumLength, 0), false);
    add(isList ? "Items contain a match of" : "Contains a match of",
        hasPattern(scalar) ? QStringList {scalar.pattern.pattern()} : QStringList(), true);
    add("Examples", json(setting.examples), true);
    return facts;
}

} // namespace Tarnvel::Schema
