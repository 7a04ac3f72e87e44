// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "validation.h"

#include "similar_text.h"
#include "terminal.h"
#include "value_checks.h"

#include <QtCore/QHash>
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

QString wrongType(Type type, const JsonValue &value)
{
    const QString found = value.kind == JsonValue::Number && !isInt32(value)
        ? value.text
        : Tools::describe(value.kind);
    return QStringLiteral("expected %1, found %2").arg(describe(type), found);
}

QString invalidNumber(const Scalar &scalar, int number)
{
    QString why;
    QList<int> values;
    for (const JsonValue &value : scalar.values)
        values.append(value.text.toInt());
    if (values.isEmpty() || ValueChecks::isOneOf(number, values, &why))
        ValueChecks::isInRange(number, scalar.minimum, scalar.maximum, &why);
    return why;
}

QString invalidText(const Scalar &scalar, const QString &text)
{
    QString why;
    QStringList values;
    for (const JsonValue &value : scalar.values)
        values.append(value.text);
    const bool isAllowed = (values.isEmpty() || ValueChecks::isOneOf(text, values, &why))
        && ValueChecks::hasLength(text, scalar.minimumLength, scalar.maximumLength, &why);
    if (isAllowed && hasPattern(scalar))
        ValueChecks::doesMatch(text, scalar.pattern, &why);
    return why;
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
    QString why;
    if (!ValueChecks::hasSize(static_cast<qint64>(list.items.size()), setting.minimumItems,
                              setting.maximumItems, &why))
        add(Problem::InvalidValue, list, why);
}

void validateValue(const Setting &setting, const JsonValue &value, std::vector<Problem> *problems);

void validateMembers(const Setting &object, const JsonValue &value, std::vector<Problem> *problems)
{
    QHash<QString, const Setting *> settings;
    QStringList keys;
    for (const Setting &known : object.members) {
        settings.insert(known.key, &known);
        keys.append(known.key);
    }
    int hints = 0;
    for (const JsonMember &member : value.members) {
        if (const Setting *const setting = settings.value(member.name)) {
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
    if (scalar.type == Type::Boolean)
        return {};
    return scalar.type == Type::Integer ? invalidNumber(scalar, value.text.toInt())
                                        : invalidText(scalar, value.text);
}

QString describe(Type type)
{
    static const std::array<const char *, 5> descriptions {
        "an integer", "a boolean", "a string", "a list", "an object",
    };
    return QLatin1String(descriptions.at(static_cast<std::size_t>(type)));
}

} // namespace Tarnvel::Schema
