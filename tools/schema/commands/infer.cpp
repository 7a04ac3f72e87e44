// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"

#include "json_values.h"
#include "scenario_file.h"
#include "validation.h"

#include <QtCore/QHash>

#include <algorithm>
#include <sysexits.h>

namespace Tarnvel::Schema {

using Tools::JsonMember;
using Tools::JsonValue;

namespace {

// The values of one setting in all configurations, or the items of its lists.
using Values = std::vector<const JsonValue *>;

// The type as a schema names it; null if no setting has it.
QString typeOf(const JsonValue &value)
{
    bool isInteger = false;
    switch (value.kind) {
    case JsonValue::Number:
        value.text.toInt(&isInteger);
        return isInteger ? QStringLiteral("integer") : QString();
    case JsonValue::Boolean:
        return QStringLiteral("boolean");
    case JsonValue::String:
        return QStringLiteral("string");
    case JsonValue::List:
        return QStringLiteral("array");
    case JsonValue::Object:
        return QStringLiteral("object");
    case JsonValue::Null:
        break;
    }
    return {};
}

Values itemsOf(const Values &lists)
{
    Values items;
    for (const JsonValue *const list : lists) {
        for (const JsonValue &item : list->items)
            items.push_back(&item);
    }
    return items;
}

// The values or the range that a scenario allows for a setting or its items.
Scalar readAllowed(const QString &type, const JsonValue &allowed)
{
    Scalar scalar;
    scalar.type = type == QLatin1String("integer") ? Type::Integer : Type::String;
    for (const JsonValue &value : allowed.items) {
        const auto isSame = [&value](const JsonValue &one) { return one.text == value.text; };
        if (std::none_of(scalar.values.begin(), scalar.values.end(), isSame))
            scalar.values.push_back(value);
    }
    if (const JsonValue *const minimum = allowed.member(QStringLiteral("minimum")))
        scalar.minimum = minimum->text.toInt();
    if (const JsonValue *const maximum = allowed.member(QStringLiteral("maximum")))
        scalar.maximum = maximum->text.toInt();
    return scalar;
}

class Inference
{
public:
    Inference(const JsonValue &application, const Tools::Diagnostics &diagnostics, Report *report)
        : m_allowed(application.member(QStringLiteral("allowed"))),
          m_diagnostics(diagnostics),
          m_report(report)
    {
    }

    // The schemas of the settings in the objects, which are the values of one setting.
    JsonValue properties(const Values &objects, const QString &prefix)
    {
        std::vector<std::pair<QString, Values>> settings;
        QHash<QString, std::size_t> indexes;
        for (const JsonValue *const object : objects) {
            for (const JsonMember &member : object->members) {
                if (!indexes.contains(member.name)) {
                    indexes.insert(member.name, settings.size());
                    settings.push_back({member.name, {}});
                    if (member.name.isEmpty() || member.name.contains(QLatin1Char('/')))
                        fail(member.offset,
                             QStringLiteral("a key cannot be empty or contain \"/\""));
                }
                settings.at(indexes.value(member.name)).second.push_back(&member.value);
            }
        }
        JsonValue properties = makeObject({});
        for (const auto &[key, values] : settings)
            properties.members.push_back({key, 0, setting(values, prefix + key)});
        return properties;
    }

private:
    void fail(int offset, const QString &message)
    {
        m_report->append({EX_DATAERR, message, {}, m_diagnostics.location(offset)});
    }

    QString commonType(const Values &values, const QString &path)
    {
        const QString common = typeOf(*values.front());
        for (const JsonValue *const value : values) {
            const QString type = typeOf(*value);
            if (type.isNull())
                fail(value->offset,
                     QStringLiteral("%1: no setting can be %2").arg(path, toJson(*value)));
            else if (type != common)
                fail(value->offset,
                     QStringLiteral("%1: the type \"%2\" is not that of the value before, \"%3\"")
                         .arg(path, type, common));
        }
        return common;
    }

    JsonValue setting(const Values &values, const QString &path)
    {
        const QString type = commonType(values, path);
        JsonValue schema = makeObject({});
        addMember("type", makeString(type), &schema);
        if (type == QLatin1String("object")) {
            addMember("additionalProperties", makeFalse(), &schema);
            addMember("properties", properties(values, path + QLatin1Char('/')), &schema);
        } else if (type == QLatin1String("array")) {
            const Values items = itemsOf(values);
            const QString itemType = items.empty() ? QStringLiteral("string")
                                                   : commonType(items, path);
            JsonValue itemSchema = makeObject({});
            addMember("type", makeString(itemType), &itemSchema);
            addAllowed(path, itemType, items, &itemSchema);
            addMember("items", itemSchema, &schema);
            addMember("default", *values.front(), &schema);
        } else {
            addMember("default", *values.front(), &schema);
            addAllowed(path, type, values, &schema);
        }
        return schema;
    }

    // Leaves out, with a warning, what a schema cannot say, or what the values contradict.
    void addAllowed(const QString &path, const QString &type, const Values &values,
                    JsonValue *schema)
    {
        const JsonValue *const allowed = m_allowed ? m_allowed->member(path) : nullptr;
        if (!allowed)
            return;
        const Scalar scalar = readAllowed(type, *allowed);
        const QString expected = scalar.values.empty() ? QStringLiteral("integer")
                                                       : typeOf(scalar.values.front());
        QString reason;
        if (type != expected || type == QLatin1String("boolean"))
            reason = QStringLiteral("a schema cannot restrict this setting so");
        for (const JsonValue *const value : values) {
            if (reason.isNull())
                reason = invalidReason(scalar, *value);
        }
        if (!reason.isNull()) {
            m_report->append({EX_OK,
                              QStringLiteral("%1: left out: %2").arg(path, reason),
                              {},
                              m_diagnostics.location(allowed->offset)});
            return;
        }
        if (!scalar.values.empty())
            addMember("enum", makeList(scalar.values), schema);
        for (const JsonMember &limit : allowed->members)
            schema->members.push_back(limit);
    }

    const JsonValue *m_allowed;
    const Tools::Diagnostics &m_diagnostics;
    Report *m_report;
};

// Null, and a failure, if there is not exactly one.
const JsonValue *findApplication(const ScenarioFile &scenario, const CommandLine &commandLine,
                                 Report *report)
{
    const QString &name = commandLine.application;
    QStringList names;
    for (const JsonValue &application : scenario.applications) {
        if (nameOf(application) == name || (name.isEmpty() && scenario.applications.size() == 1))
            return &application;
        names.append(nameOf(application));
    }
    const QString file = commandLine.files.constFirst();
    if (name.isEmpty() && !names.isEmpty())
        report->append(
            {EX_USAGE,
             QStringLiteral("there are several applications: ") + names.join(QLatin1String(", ")),
             QStringLiteral("choose one with --application"), file});
    else
        report->append({EX_DATAERR,
                        QStringLiteral("there is no application %1").arg(name).trimmed(),
                        {},
                        file});
    return nullptr;
}

} // namespace

Report infer(const CommandLine &commandLine, QByteArray *output)
{
    Report report;
    const auto scenario = readScenarioFile(commandLine.files.constFirst(), &report);
    const JsonValue *const application = scenario ? findApplication(*scenario, commandLine, &report)
                                                  : nullptr;
    if (!application)
        return report;
    const std::vector<JsonValue> configurations = configurationsOf(*application);
    Values objects;
    for (const JsonValue &configuration : configurations)
        objects.push_back(&configuration);
    JsonValue schema = makeObject({});
    addMember("$schema", makeString(QStringLiteral("http://json-schema.org/draft-07/schema#")),
              &schema);
    addMember("type", makeString(QStringLiteral("object")), &schema);
    addMember("additionalProperties", makeFalse(), &schema);
    addMember("x-organization", *application->member(QStringLiteral("organization")), &schema);
    addMember("x-application", *application->member(QStringLiteral("application")), &schema);
    addMember("properties",
              Inference(*application, scenario->diagnostics, &report).properties(objects, {}),
              &schema);
    *output = toJsonFile(schema);
    return report;
}

} // namespace Tarnvel::Schema
