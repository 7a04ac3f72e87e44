// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "setting.h"

#include "terminal.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

#include <algorithm>
#include <array>

namespace Tarnvel::Schema {

using Tools::JsonMember;
using Tools::JsonValue;

namespace {

QString quoted(const QString &text)
{
    const QByteArray list = QJsonDocument(QJsonArray {text}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(list.mid(1, list.size() - 2));
}

QString toIndentedJson(const JsonValue &value, const QString &indentation)
{
    const bool isObjectList = value.kind == JsonValue::List && !value.items.empty()
        && value.items.front().kind == JsonValue::Object;
    if (!isObjectList && (value.kind != JsonValue::Object || value.members.empty()))
        return Tools::shownOnOneLine(toJson(value));
    const QString inner = indentation + QStringLiteral("  ");
    QStringList lines;
    for (const JsonMember &member : value.members)
        lines.append(inner + Tools::shownOnOneLine(quoted(member.name)) + QStringLiteral(": ")
                     + toIndentedJson(member.value, inner));
    for (const JsonValue &item : value.items)
        lines.append(inner + toIndentedJson(item, inner));
    const QString form = isObjectList ? QStringLiteral("[\n%1\n%2]") : QStringLiteral("{\n%1\n%2}");
    return form.arg(lines.join(QLatin1String(",\n")), indentation);
}

} // namespace

const Setting *Setting::member(const QString &key) const
{
    const auto found = std::find_if(members.begin(), members.end(),
                                    [&key](const Setting &one) { return one.key == key; });
    return found == members.end() ? nullptr : &*found;
}

QByteArray dbusType(const Setting &setting)
{
    static const std::array<const char *, 5> types {"i", "b", "s", "a", "a{sv}"};
    const QByteArray type = types.at(static_cast<std::size_t>(setting.type));
    return setting.type == Type::List
        ? type + types.at(static_cast<std::size_t>(setting.scalar.type))
        : type;
}

bool hasPattern(const Scalar &scalar)
{
    return !scalar.pattern.pattern().isEmpty();
}

QString toJson(const JsonValue &value)
{
    QStringList parts;
    switch (value.kind) {
    case JsonValue::Null:
        return QStringLiteral("null");
    case JsonValue::Boolean:
        return value.isTrue ? QStringLiteral("true") : QStringLiteral("false");
    case JsonValue::Number:
        return value.text;
    case JsonValue::String:
        return quoted(value.text);
    case JsonValue::List:
        for (const JsonValue &item : value.items)
            parts.append(toJson(item));
        return QStringLiteral("[%1]").arg(parts.join(QLatin1String(", ")));
    case JsonValue::Object:
        for (const JsonMember &member : value.members)
            parts.append(quoted(member.name) + QStringLiteral(": ") + toJson(member.value));
        return QStringLiteral("{%1}").arg(parts.join(QLatin1String(", ")));
    }
    return {};
}

QByteArray toJsonFile(const JsonValue &object)
{
    return toIndentedJson(object, {}).toUtf8() + '\n';
}

} // namespace Tarnvel::Schema
