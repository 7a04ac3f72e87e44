// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "literals.h"

#include <QtCore/QVector>

#include <array>
#include <limits>

namespace Tarnvel::Schema {

using Tools::JsonValue;

namespace {

QString scalarExpression(Type type, const JsonValue &value)
{
    if (type == Type::Boolean)
        return value.isTrue ? QStringLiteral("true") : QStringLiteral("false");
    if (type == Type::Integer)
        return toExpression(value.text.toInt());
    return toStringLiteral(value.text);
}

} // namespace

CppType cppType(const Setting &setting)
{
    static const std::array<CppType, 3> scalars {{
        {"int", "int ", "isInteger", "value.toInt()"},
        {"bool", "bool ", "isBoolean", "value.toBool()"},
        {"QString", "const QString &", "isString", "value.toString()"},
    }};
    static const std::array<CppType, 3> lists {{
        {"QList<int>", "const QList<int> &", "isIntegerList", "Checks::listOf<int>(value)"},
        {"QList<bool>", "const QList<bool> &", "isBooleanList", "Checks::listOf<bool>(value)"},
        {"QStringList", "const QStringList &", "isStringList", "Checks::strings(value)"},
    }};
    if (setting.type == Type::Object)
        return {"", "", "isObject", ""};
    const auto index = static_cast<std::size_t>(setting.scalar.type);
    return setting.type == Type::List ? lists.at(index) : scalars.at(index);
}

QString toLiteral(const QString &text)
{
    QString literal;
    const QVector<uint> codePoints = text.toUcs4();
    for (const uint codePoint : codePoints) {
        // After a question mark, another one could complete a trigraph.
        const bool needsBackslash = codePoint == '"' || codePoint == '\\'
            || (codePoint == '?' && literal.endsWith(QLatin1Char('?')));
        if (codePoint > 0xffff)
            literal += QStringLiteral("\\U%1").arg(codePoint, 8, 16, QLatin1Char('0'));
        else if (codePoint > 0x9f)
            literal += QStringLiteral("\\u%1").arg(codePoint, 4, 16, QLatin1Char('0'));
        else if (codePoint < ' ' || codePoint > '~')
            literal += QStringLiteral("\\%1").arg(codePoint, 3, 8, QLatin1Char('0'));
        else
            literal += (needsBackslash ? QStringLiteral("\\") : QString())
                + QChar(static_cast<ushort>(codePoint));
    }
    return QLatin1Char('"') + literal + QLatin1Char('"');
}

QString toStringLiteral(const QString &text)
{
    const auto form = text.isEmpty() ? QLatin1String("QLatin1String(%1)")
                                     : QLatin1String("QStringLiteral(%1)");
    return QString(form).arg(toLiteral(text));
}

QString toExpression(qint32 number)
{
    return number == std::numeric_limits<qint32>::min() ? QStringLiteral("(-2147483647 - 1)")
                                                        : QString::number(number);
}

QString toExpressions(Type type, const std::vector<JsonValue> &values)
{
    QStringList expressions;
    for (const JsonValue &value : values)
        expressions.append(scalarExpression(type, value));
    return expressions.join(QLatin1String(", "));
}

QString toExpression(const Setting &setting, const JsonValue &value)
{
    if (setting.type != Type::List)
        return scalarExpression(setting.type, value);
    const QString items = toExpressions(setting.scalar.type, value.items);
    const QString type = setting.scalar.type == Type::String ? QStringLiteral("QStringList")
        : setting.scalar.type == Type::Integer               ? QStringLiteral("QList<int>")
                                                             : QStringLiteral("QList<bool>");
    return items.isEmpty() ? type + QStringLiteral("()")
                           : QStringLiteral("%1 {%2}").arg(type, items);
}

} // namespace Tarnvel::Schema
