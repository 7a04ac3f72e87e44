// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "validation.h"

#include "similar_text.h"
#include "terminal.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <array>

namespace Tarnvel::Schema {

using Tools::JsonMember;
using Tools::JsonValue;

namespace {

// The search takes longer than everything else, and with more, the settings are others.
constexpr int mostHints = 20;

bool isInt32(const JsonValue &value)
{
    bool isInteger = false;
    value.text.toInt(&isInteger);
    return value.kind == JsonValue::Number && isInteger;
}

bool hasType(Type type, const JsonValue &value)
{
    switch (type) {
    case Type::Integer:
        return isInt32(value);
    case Type::Boolean:
        return value.kind == JsonValue::Boolean;
    case Type::String:
        return value.kind == JsonValue::String;
    case Type::List:
        return value.kind == JsonValue::List;
    case Type::Object:
        return value.kind == JsonValue::Object;
    }
    return false;
}

bool areEqual(const JsonValue &left, const JsonValue &right)
{
    if (left.kind != right.kind)
        return false;
    return left.kind == JsonValue::Number ? left.text.toInt() == right.text.toInt()
                                          : left.text == right.text;
}

QString wrongType(Type type, const JsonValue &value)
{
    const QString found = value.kind == JsonValue::Number && !isInt32(value)
        ? value.text
        : Tools::describe(value.kind);
    return QStringLiteral("expected %1, found %2").arg(describe(type), found);
}

QString shown(const JsonValue &value)
{
    return value.kind == JsonValue::String ? Tools::quotedExcerpt(value.text) : toJson(value);
}

QString listOf(const std::vector<JsonValue> &values)
{
    QStringList texts;
    for (const JsonValue &value : values)
        texts.append(shown(value));
    return texts.join(QLatin1String(", "));
}

QString invalidLength(const Scalar &scalar, const JsonValue &value)
{
    const int length = value.text.toUcs4().size();
    if (length < scalar.minimumLength)
        return QStringLiteral("%1 has fewer than %2 characters")
            .arg(shown(value))
            .arg(scalar.minimumLength);
    if (length > scalar.maximumLength)
        return QStringLiteral("%1 has more than %2 characters")
            .arg(shown(value))
            .arg(scalar.maximumLength);
    return {};
}

// Adds at most one problem for each item.
void validateItems(const Setting &setting, const JsonValue &list, std::vector<Problem> *problems)
{
    const auto add = [&](Problem::Kind kind, const JsonValue &value, const QString &message) {
        problems->push_back({kind, setting.path, value.offset, message});
    };
    for (const JsonValue &item : list.items) {
        if (!hasType(setting.scalar.type, item))
            add(Problem::WrongType, item, wrongType(setting.scalar.type, item));
        else if (const QString reason = invalidReason(setting.scalar, item); !reason.isNull())
            add(Problem::InvalidValue, item, reason);
    }
    const auto size = static_cast<qint64>(list.items.size());
    if (size < setting.minimumItems)
        add(Problem::InvalidValue, list,
            QStringLiteral("the list has fewer than %1 items").arg(setting.minimumItems));
    if (size > setting.maximumItems)
        add(Problem::InvalidValue, list,
            QStringLiteral("the list has more than %1 items").arg(setting.maximumItems));
}

void validateValue(const Setting &setting, const JsonValue &value, std::vector<Problem> *problems);

void validateMembers(const Setting &object, const JsonValue &value, std::vector<Problem> *problems)
{
    QStringList keys;
    for (const Setting &known : object.members)
        keys.append(known.key);
    int hints = 0;
    for (const JsonMember &member : value.members) {
        if (const Setting *const setting = object.member(member.name)) {
            validateValue(*setting, member.value, problems);
            continue;
        }
        const QString path = object.path.isEmpty() ? member.name
                                                   : object.path + QLatin1Char('/') + member.name;
        problems->push_back(
            {Problem::UnknownSetting, path, member.offset, QStringLiteral("unknown setting"),
             ++hints > mostHints ? QString() : Tools::similarTextHint(member.name, keys)});
    }
}

void validateValue(const Setting &setting, const JsonValue &value, std::vector<Problem> *problems)
{
    const std::size_t before = problems->size();
    if (!hasType(setting.type, value)) {
        problems->push_back(
            {Problem::WrongType, setting.path, value.offset, wrongType(setting.type, value)});
        return;
    }
    if (setting.type == Type::Object)
        validateMembers(setting, value, problems);
    else if (setting.type == Type::List)
        validateItems(setting, value, problems);
    else if (const QString reason = invalidReason(setting.scalar, value); !reason.isNull())
        problems->push_back({Problem::InvalidValue, setting.path, value.offset, reason});
    if (!setting.deprecated.isNull() && problems->size() == before)
        problems->push_back({Problem::Deprecated, setting.path, value.offset,
                             QStringLiteral("deprecated: ") + setting.deprecated});
}

} // namespace

QString Problem::text() const
{
    return Tools::shownOnOneLine(path.isEmpty() ? message : path + QStringLiteral(": ") + message);
}

std::vector<Problem> validate(const Setting &setting, const JsonValue &value)
{
    std::vector<Problem> problems;
    validateValue(setting, value, &problems);
    return problems;
}

QString invalidReason(const Scalar &scalar, const JsonValue &value)
{
    const auto isValue = [&value](const JsonValue &one) { return areEqual(one, value); };
    if (!scalar.values.empty() && std::none_of(scalar.values.begin(), scalar.values.end(), isValue))
        return QStringLiteral("%1 is not one of %2").arg(shown(value), listOf(scalar.values));
    if (scalar.type == Type::Integer) {
        const int number = value.text.toInt();
        if (number < scalar.minimum)
            return QStringLiteral("%1 is below %2").arg(number).arg(scalar.minimum);
        if (number > scalar.maximum)
            return QStringLiteral("%1 is above %2").arg(number).arg(scalar.maximum);
    }
    if (scalar.type != Type::String)
        return {};
    if (const QString reason = invalidLength(scalar, value); !reason.isNull())
        return reason;
    const bool matches = scalar.pattern.isNull()
        || QRegularExpression(scalar.pattern).match(value.text).hasMatch();
    return matches ? QString()
                   : QStringLiteral("%1 does not match %2").arg(shown(value), scalar.pattern);
}

QString describe(Type type)
{
    static const std::array<const char *, 5> descriptions {
        "an integer", "a boolean", "a string", "a list", "an object",
    };
    return QLatin1String(descriptions.at(static_cast<std::size_t>(type)));
}

} // namespace Tarnvel::Schema
