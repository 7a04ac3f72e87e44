// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "schema_check.h"

#include "output.h"
#include "validation.h"
#include "values/difference.h"
#include "values/json.h"
#include "values/path.h"
#include "values/value_type.h"

#include <QtCore/QHash>

#include <algorithm>
#include <sysexits.h>

namespace Tarnvel::Client {

using Schema::Problem;
using Schema::Setting;
using Tools::Failure;
using Tools::JsonValue;
using Tools::Style;

namespace {

using SettingsByPath = QHash<QString, const Setting *>;

// Under paths as those of the values, whose keys are written by keyText().
void addSettings(const Setting &object, const QString &prefix, SettingsByPath *settings)
{
    for (const Setting &setting : object.members) {
        const QString path = prefix + keyText(setting.key);
        settings->insert(path, &setting);
        addSettings(setting, path + QLatin1Char('/'), settings);
    }
}

ValueType valueTypeOf(const Setting &setting)
{
    static const QMap<QByteArray, ValueType> types {
        {"i", ValueType::Int},
        {"b", ValueType::Bool},
        {"s", ValueType::String},
        {"ai", ValueType::Ints},
        {"ab", ValueType::Bools},
        {"as", ValueType::Strings},
        {"a{sv}", ValueType::Configuration},
    };
    return types.value(dbusType(setting));
}

// JSON has all types but that of an empty list.
JsonValue jsonOf(const Reading &reading)
{
    const QJsonObject object = toJson(QVariant::fromValue(reading.configuration)).toObject();
    const QByteArray text = QJsonDocument(object).toJson();
    Tools::Diagnostics diagnostics({}, text);
    return Tools::parseJson(text, &diagnostics);
}

JsonValue emptyList()
{
    JsonValue list;
    list.kind = JsonValue::List;
    return list;
}

// A service may keep the default of a deprecated setting although nobody has set it.
void removeUnusedSettings(const Setting &object, bool isDeprecated, JsonValue *value)
{
    const auto isUnused = [&object, isDeprecated](Tools::JsonMember &member) {
        const Setting *const setting = object.member(member.name);
        if (!setting)
            return false;
        const bool isUnwanted = isDeprecated || !setting->deprecated.isNull();
        if (setting->type != Schema::Type::Object)
            return isUnwanted
                && Schema::toJson(member.value) == Schema::toJson(setting->defaultValue);
        removeUnusedSettings(*setting, isUnwanted, &member.value);
        return isUnwanted && member.value.kind == JsonValue::Object && member.value.members.empty();
    };
    std::vector<Tools::JsonMember> &members = value->members;
    members.erase(std::remove_if(members.begin(), members.end(), isUnused), members.end());
}

Problem wrongType(const Setting &setting, const QString &path, const QString &found)
{
    return {
        Problem::WrongType, path, 0,
        QStringLiteral("expected %1, found %2").arg(typeDescription(valueTypeOf(setting)), found)};
}

std::vector<Problem> problemsOfUnseen(const Setting *setting, const QString &path,
                                      const QString &signature)
{
    if (!setting)
        return {{Problem::UnknownSetting, path, 0, QStringLiteral("unknown setting")}};
    // An empty list may be valid, although applications see the default.
    if (setting->type == Schema::Type::List && signature == QLatin1String(dbusType(*setting)))
        return validate(*setting, emptyList());
    return {wrongType(*setting, path, QStringLiteral("D-Bus type ") + unseenTypeText(signature))};
}

bool isOtherEmptyList(const Setting &setting, const QVariant &value)
{
    return setting.type == Schema::Type::List && valueTypeOf(setting) != ValueType::Strings
        && typeOf(value) == ValueType::Strings && value.toStringList().isEmpty();
}

std::vector<Problem> problemsOf(const Schema::Schema &schema, const Reading &reading)
{
    SettingsByPath settings;
    addSettings(schema.root, QString(), &settings);
    JsonValue configuration = jsonOf(reading);
    removeUnusedSettings(schema.root, false, &configuration);
    std::vector<Problem> problems = validate(schema.root, configuration);
    const Leaves leaves = leavesOf(QVariant::fromValue(reading.configuration));
    for (auto leaf = leaves.begin(); leaf != leaves.end(); ++leaf) {
        const Setting *const setting = settings.value(leaf.key());
        if (setting && isOtherEmptyList(*setting, leaf.value()))
            problems.push_back(
                wrongType(*setting, leaf.key(), QStringLiteral("an empty list of strings")));
    }
    const UnseenSettings &unseen = reading.unseen;
    for (auto one = unseen.begin(); one != unseen.end(); ++one) {
        for (const Problem &problem :
             problemsOfUnseen(settings.value(one.key()), one.key(), one.value()))
            problems.push_back(problem);
    }
    return problems;
}

QString hintFor(const Problem &problem)
{
    if (!problem.hint.isEmpty())
        return problem.hint;
    return problem.kind == Problem::UnknownSetting
        ? QStringLiteral("remove the setting; the application does not know it")
        : QStringLiteral("correct the value; until then, the application uses the default");
}

} // namespace

Failure checkSettings(const Schema::Schema &schema, const Reading &reading)
{
    int status = EX_OK;
    const std::vector<Problem> problems = problemsOf(schema, reading);
    for (const Problem &problem : problems) {
        const bool isWarning = problem.kind == Problem::Deprecated;
        print(QStringLiteral("schema: ") + problem.text(), isWarning ? Style::News : Style::Bad);
        if (isWarning)
            continue;
        print(QStringLiteral("  what to do: ") + hintFor(problem));
        status = EX_DATAERR;
    }
    if (problems.empty())
        print(QStringLiteral("schema: all settings agree with it"), Style::Good);
    return {status};
}

} // namespace Tarnvel::Client
