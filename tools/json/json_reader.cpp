// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "json_reader.h"

#include "similar_text.h"

#include <glib.h>
#include <limits>
#include <optional>

namespace Tarnvel::Tools {

namespace {

// The value itself where it is short.
QString shown(const JsonValue &value)
{
    if (value.kind == JsonValue::Number)
        return value.text;
    return value.kind == JsonValue::String ? quotedExcerpt(value.text) : describe(value.kind);
}

bool isOfKind(const JsonValue *value, JsonValue::Kind kind, Diagnostics *diagnostics)
{
    if (value && value->kind != kind)
        addUnexpected(*value, describe(kind), diagnostics);
    return value && value->kind == kind;
}

std::optional<qint64> integerOf(const JsonValue &value, qint64 minimum, qint64 maximum)
{
    gint64 number = 0;
    if (value.kind != JsonValue::Number
        || !g_ascii_string_to_signed(value.text.toLatin1().constData(), 10, minimum, maximum,
                                     &number, nullptr))
        return {};
    return number;
}

} // namespace

bool readBoolean(const JsonValue *value, Diagnostics *diagnostics)
{
    return isOfKind(value, JsonValue::Boolean, diagnostics) && value->isTrue;
}

QString readString(const JsonValue *value, Diagnostics *diagnostics)
{
    return isOfKind(value, JsonValue::String, diagnostics) ? value->text : QString();
}

qint64 readInteger(const JsonValue *value, qint64 minimum, qint64 maximum, Diagnostics *diagnostics)
{
    const auto number = value ? integerOf(*value, minimum, maximum) : 0;
    if (!number)
        addUnexpected(*value, QStringLiteral("an integer from %1 to %2").arg(minimum).arg(maximum),
                      diagnostics);
    return number.value_or(0);
}

qint32 readInt32(const JsonValue *value, Diagnostics *diagnostics)
{
    using Limits = std::numeric_limits<qint32>;
    const auto number = value ? integerOf(*value, Limits::min(), Limits::max()) : 0;
    if (!number)
        addUnexpected(*value, QStringLiteral("a 32-bit integer"), diagnostics);
    return static_cast<qint32>(number.value_or(0));
}

double readNumber(const JsonValue *value, int maximum, Diagnostics *diagnostics)
{
    if (!value)
        return 0;
    const double number = g_ascii_strtod(value->text.toLatin1().constData(), nullptr);
    if (value->kind == JsonValue::Number && number >= 0 && number <= maximum)
        return number;
    addUnexpected(*value, QStringLiteral("a number from 0 to %1").arg(maximum), diagnostics);
    return 0;
}

const std::vector<JsonValue> &readList(const JsonValue *value, Diagnostics *diagnostics)
{
    static const std::vector<JsonValue> none;
    return isOfKind(value, JsonValue::List, diagnostics) ? value->items : none;
}

void addUnexpected(const JsonValue &value, const QString &expected, Diagnostics *diagnostics)
{
    diagnostics->add(value.offset,
                     QStringLiteral("expected %1, found %2").arg(expected, shown(value)));
}

ObjectReader::ObjectReader(const JsonValue &value, Diagnostics *diagnostics)
    : m_value(value), m_diagnostics(diagnostics)
{
    isOfKind(&value, JsonValue::Object, diagnostics);
}

const JsonValue *ObjectReader::find(QLatin1String name)
{
    m_known.append(name);
    return m_value.member(name);
}

const JsonValue *ObjectReader::require(QLatin1String name)
{
    const JsonValue *const value = find(name);
    if (!value && m_value.kind == JsonValue::Object)
        m_diagnostics->add(m_value.offset, QStringLiteral("\"%1\" is missing").arg(name));
    return value;
}

void ObjectReader::addUnknownMembers(const QString &object)
{
    for (const JsonMember &member : m_value.members) {
        if (m_known.contains(member.name))
            continue;
        const QString similar = similarTextHint(member.name, m_known);
        m_diagnostics->add(
            member.offset,
            QStringLiteral("unknown member %1 of %2").arg(quotedExcerpt(member.name), object),
            similar.isEmpty() ? QStringLiteral("use one of ") + m_known.join(QLatin1String(", "))
                              : similar);
    }
}

} // namespace Tarnvel::Tools
