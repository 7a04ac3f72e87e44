// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "expectation_reader.h"

#include "event_formatter.h"
#include "exit_status.h"
#include "input_file.h"
#include "json_reader.h"
#include "scenario/configuration_reader.h"
#include "scenario/fault_reader.h"

#include <QtCore/QJsonArray>

#include <algorithm>

namespace Tarnvel::Sandbox {

namespace {

QJsonValue toQtJson(const Tools::JsonValue &value)
{
    switch (value.kind) {
    case Tools::JsonValue::Null:
        return {};
    case Tools::JsonValue::Boolean:
        return value.isTrue;
    case Tools::JsonValue::Number:
        return value.text.toDouble();
    case Tools::JsonValue::String:
        return value.text;
    case Tools::JsonValue::List: {
        QJsonArray array;
        for (const Tools::JsonValue &item : value.items)
            array.append(toQtJson(item));
        return array;
    }
    case Tools::JsonValue::Object:
        break;
    }
    QJsonObject object;
    for (const Tools::JsonMember &member : value.members)
        object.insert(member.name, toQtJson(member.value));
    return object;
}

QStringList applicationNames(const Scenario &scenario)
{
    QStringList names;
    for (const Application &application : scenario)
        names.append(application.name);
    return names;
}

QString readApplication(const Tools::JsonValue *value, const Scenario &scenario,
                        Tools::Diagnostics *diagnostics)
{
    const QString name = Tools::readString(value, diagnostics);
    const QStringList known = applicationNames(scenario);
    if (value && value->kind == Tools::JsonValue::String && !known.contains(name))
        diagnostics->add(
            value->offset,
            QStringLiteral("the scenario has no application %1, only: %2")
                .arg(Tools::quotedExcerpt(name),
                     known.isEmpty() ? QStringLiteral("none") : known.join(QLatin1String(", "))));
    return name;
}

// A call can come at a path without an application, but not from another application.
QString readPath(const Tools::JsonValue *value, const QString &application,
                 const Scenario &scenario, Tools::Diagnostics *diagnostics)
{
    const QString path = Tools::readString(value, diagnostics);
    if (!value || value->kind != Tools::JsonValue::String)
        return path;
    if (!g_variant_is_object_path(path.toUtf8().constData()))
        Tools::addUnexpected(*value, QStringLiteral("an object path"), diagnostics);
    else if (!application.isEmpty() && scenario.value(path).name != application)
        diagnostics->add(value->offset,
                         QStringLiteral("%1 is not the path of %2")
                             .arg(Tools::quotedExcerpt(path), Tools::quotedExcerpt(application)));
    return path;
}

QString readOutcome(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics)
{
    QStringList names;
    for (const Outcome::Kind kind :
         {Outcome::Answered, Outcome::Accepted, Outcome::Refused, Outcome::Unanswered})
        names.append(outcomeName(kind));
    if (value && (value->kind != Tools::JsonValue::String || !names.contains(value->text)))
        Tools::addUnexpected(*value, QStringLiteral("one of ") + names.join(QLatin1String(", ")),
                             diagnostics);
    return value ? value->text : QString();
}

QString readFaultName(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics)
{
    const FaultDescription *const description = readFaultDescription(value, diagnostics);
    return description ? QString(QLatin1String(description->name)) : QString();
}

QJsonValue readChange(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics)
{
    if (value && value->kind != Tools::JsonValue::Object)
        Tools::addUnexpected(*value, Tools::describe(Tools::JsonValue::Object), diagnostics);
    return value ? toQtJson(*value) : QJsonValue();
}

QJsonObject readMembers(Tools::ObjectReader *reader, const Scenario &scenario,
                        Tools::Diagnostics *diagnostics)
{
    QJsonObject members;
    const auto read = [&](const char *name, const auto &readMember) {
        const QLatin1String memberName(name);
        if (const Tools::JsonValue *const member = reader->find(memberName))
            members.insert(memberName, readMember(member, diagnostics));
    };
    read("application", [&scenario](const Tools::JsonValue *value, Tools::Diagnostics *all) {
        return readApplication(value, scenario, all);
    });
    const QString application = members.value(QLatin1String("application")).toString();
    read("path", [&](const Tools::JsonValue *value, Tools::Diagnostics *all) {
        return readPath(value, application, scenario, all);
    });
    read("user", [](const Tools::JsonValue *value, Tools::Diagnostics *all) {
        return Tools::readInteger(value, 0, std::numeric_limits<quint32>::max(), all);
    });
    read("method", readMethod);
    read("change", readChange);
    read("outcome", readOutcome);
    read("error", [](const Tools::JsonValue *value, Tools::Diagnostics *all) {
        return errorText(readErrorName(value, all));
    });
    read("message", Tools::readString);
    read("fault", readFaultName);
    return members;
}

ExpectedCall readCall(const Tools::JsonValue &value, const Scenario &scenario,
                      Tools::Diagnostics *diagnostics)
{
    ExpectedCall call;
    call.location = diagnostics->location(value.offset);
    Tools::ObjectReader reader(value, diagnostics);
    call.members = readMembers(&reader, scenario, diagnostics);
    if (const Tools::JsonValue *const within = reader.find(QLatin1String("within")))
        call.within = Tools::readNumber(within, std::numeric_limits<int>::max(), diagnostics);
    const Tools::JsonValue *const times = reader.find(QLatin1String("times"));
    if (times)
        call.times = static_cast<int>(
            Tools::readInteger(times, 1, std::numeric_limits<int>::max(), diagnostics));
    if (Tools::readBoolean(reader.find(QLatin1String("never")), diagnostics)) {
        call.times = 0;
        if (times)
            diagnostics->add(times->offset,
                             QStringLiteral("\"times\" and \"never\" are mutually exclusive"));
    }
    reader.addUnknownMembers(QStringLiteral("a call"));
    return call;
}

// The path of the application is in its scenario.
QVector<ExpectedSetting> readSettings(const Tools::JsonValue *value, const QString &path,
                                      const Scenario &scenario, Tools::Diagnostics *diagnostics)
{
    const Variant configuration = readConfiguration(value, diagnostics);
    if (!configuration || !g_variant_is_of_type(configuration.get(), G_VARIANT_TYPE_VARDICT))
        return {};
    QVector<ExpectedSetting> settings;
    const Entries entries = entriesOf(configuration.get());
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        const Tools::JsonValue *const setting = value->member(entry.key());
        settings.append({diagnostics->location(setting ? setting->offset : value->offset),
                         scenario.value(path).name, path, entry.key(), entry.value()});
    }
    if (settings.isEmpty())
        diagnostics->add(value->offset, QStringLiteral("expected at least one setting"));
    return settings;
}

QString pathOf(const QString &application, const Scenario &scenario)
{
    const auto found = std::find_if(
        scenario.begin(), scenario.end(),
        [&application](const Application &one) { return one.name == application; });
    return found == scenario.end() ? QString() : found.key();
}

// For the only application, or a list of applications.
QVector<ExpectedSetting> readFinally(const Tools::JsonValue &value, const Scenario &scenario,
                                     Tools::Diagnostics *diagnostics)
{
    if (value.kind != Tools::JsonValue::List && scenario.size() != 1) {
        diagnostics->add(
            value.offset,
            QStringLiteral("the scenario has %1 applications: expected a list of objects with "
                           "\"application\" and \"configuration\"")
                .arg(scenario.size()));
        return {};
    }
    if (value.kind != Tools::JsonValue::List)
        return readSettings(&value, scenario.firstKey(), scenario, diagnostics);
    QVector<ExpectedSetting> settings;
    for (const Tools::JsonValue &item : value.items) {
        Tools::ObjectReader reader(item, diagnostics);
        const QString application = readApplication(reader.require(QLatin1String("application")),
                                                    scenario, diagnostics);
        settings += readSettings(reader.require(QLatin1String("configuration")),
                                 pathOf(application, scenario), scenario, diagnostics);
        reader.addUnknownMembers(QStringLiteral("a final configuration"));
    }
    return settings;
}

Expectation readDocument(const Tools::JsonValue &document, const Scenario &scenario,
                         Tools::Diagnostics *diagnostics)
{
    QVector<ExpectedCall> calls;
    QVector<ExpectedSetting> settings;
    Tools::ObjectReader reader(document, diagnostics);
    const QLatin1String callsMember("calls");
    const Tools::JsonValue *const settingsAtEnd = reader.find(QLatin1String("finally"));
    const Tools::JsonValue *const list = settingsAtEnd ? reader.find(callsMember)
                                                       : reader.require(callsMember);
    for (const Tools::JsonValue &call : Tools::readList(list, diagnostics))
        calls.append(readCall(call, scenario, diagnostics));
    if (settingsAtEnd)
        settings = readFinally(*settingsAtEnd, scenario, diagnostics);
    reader.addUnknownMembers(QStringLiteral("an expectation"));
    return Expectation(calls, settings);
}

} // namespace

QVector<Tools::Failure> parseExpectation(const QString &fileName, const QByteArray &text,
                                         const Scenario &scenario, Expectation *expectation)
{
    Tools::Diagnostics diagnostics(fileName, text);
    const Tools::JsonValue document = Tools::parseJson(text, &diagnostics);
    if (!diagnostics.isEmpty())
        return diagnostics.failures(SandboxFailed);
    const Expectation parsed = readDocument(document, scenario, &diagnostics);
    if (diagnostics.isEmpty())
        *expectation = parsed;
    return diagnostics.failures(SandboxFailed);
}

QVector<Tools::Failure> readExpectation(const QString &fileName, const Scenario &scenario,
                                        Expectation *expectation)
{
    QByteArray text;
    if (const Tools::Failure failure = Tools::readInputFile(fileName, &text, SandboxFailed))
        return {failure};
    return parseExpectation(fileName, text, scenario, expectation);
}

} // namespace Tarnvel::Sandbox
