// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "scenario_reader.h"

#include "configuration_reader.h"
#include "endpoint.h"
#include "fault_reader.h"
#include "input_file.h"
#include "json_reader.h"

namespace Tarnvel::Sandbox {

namespace {

// The greatest number means no user.
constexpr qint64 maximumUser = std::numeric_limits<quint32>::max() - 1;

void checkPath(const QString &path, int offset, Diagnostics *diagnostics)
{
    if (settingKeys(path).isEmpty())
        diagnostics->add(offset,
                         QStringLiteral("expected the path of a setting, such as \"a/b\", found %1")
                             .arg(quotedExcerpt(path)));
}

QStringList readLocked(const JsonValue *value, Diagnostics *diagnostics)
{
    QStringList locked;
    for (const JsonValue &item : readList(value, diagnostics)) {
        locked.append(readString(&item, diagnostics));
        if (item.kind == JsonValue::String)
            checkPath(item.text, item.offset, diagnostics);
    }
    return locked;
}

QVector<quint32> readUsers(const JsonValue &value, Diagnostics *diagnostics)
{
    QVector<quint32> users;
    for (const JsonValue &item : readList(&value, diagnostics))
        users.append(static_cast<quint32>(readInteger(&item, 0, maximumUser, diagnostics)));
    return users;
}

void readRange(const JsonValue &value, AllowedValues *allowed, Diagnostics *diagnostics)
{
    ObjectReader object(value, diagnostics);
    const JsonValue *const minimum = object.find(QLatin1String("minimum"));
    const JsonValue *const maximum = object.find(QLatin1String("maximum"));
    object.addUnknownMembers(QStringLiteral("a range"));
    if (minimum)
        allowed->minimum = readInt32(minimum, diagnostics);
    if (maximum)
        allowed->maximum = readInt32(maximum, diagnostics);
    if (!minimum && !maximum)
        diagnostics->add(value.offset, QStringLiteral("\"minimum\" or \"maximum\" is missing"));
    else if (allowed->minimum > allowed->maximum)
        diagnostics->add(value.offset, QStringLiteral("\"minimum\" is greater than \"maximum\""));
}

QVector<AllowedValues> readAllowed(const JsonValue *value, Diagnostics *diagnostics)
{
    QVector<AllowedValues> allowed;
    if (value && value->kind != JsonValue::Object)
        addUnexpected(*value, QStringLiteral("an object"), diagnostics);
    else if (value)
        for (const JsonMember &setting : value->members)
            allowed.append(readAllowedValues(setting, diagnostics));
    return allowed;
}

QVector<Fault> readFaults(const JsonValue *value, Diagnostics *diagnostics)
{
    QVector<Fault> faults;
    for (const JsonValue &item : readList(value, diagnostics))
        faults.append(readFault(item, diagnostics));
    return faults;
}

void readApplication(const JsonValue &value, Scenario *scenario, Diagnostics *diagnostics,
                     EntryCache *cache)
{
    ObjectReader object(value, diagnostics);
    Application application;
    const JsonValue *const organizationName = object.require(QLatin1String("organization"));
    const JsonValue *const applicationName = object.require(QLatin1String("application"));
    const QString organization = readString(organizationName, diagnostics);
    const QString name = readString(applicationName, diagnostics);
    application.name = organization + QLatin1Char('/') + name;
    application.configuration = readConfiguration(object.require(QLatin1String("configuration")),
                                                  diagnostics, cache);
    application.locked = readLocked(object.find(QLatin1String("locked")), diagnostics);
    if (const JsonValue *const configurable = object.find(QLatin1String("configurable")))
        application.isConfigurable = readBoolean(configurable, diagnostics);
    if (const JsonValue *const users = object.find(QLatin1String("users")))
        application.users = readUsers(*users, diagnostics);
    application.allowed = readAllowed(object.find(QLatin1String("allowed")), diagnostics);
    application.faults = readFaults(object.find(QLatin1String("faults")), diagnostics);
    object.addUnknownMembers(QStringLiteral("an application"));
    if (!organizationName || !applicationName)
        return;

    const QString path = DBus::applicationPath(organization, name);
    if (!g_variant_is_object_path(path.toUtf8().constData()))
        diagnostics->add(value.offset,
                         QStringLiteral("%1 is not a valid object path").arg(quotedExcerpt(path)));
    else if (scenario->contains(path))
        diagnostics->add(value.offset,
                         QStringLiteral("duplicate application at %1").arg(quotedExcerpt(path)));
    scenario->insert(path, application);
}

Scenario readDocument(const JsonValue &document, Diagnostics *diagnostics, EntryCache *cache)
{
    Scenario scenario;
    ObjectReader object(document, diagnostics);
    // It names the JSON Schema of the file, for editors.
    readString(object.find(QLatin1String("$schema")), diagnostics);
    const JsonValue *const applications = object.require(QLatin1String("applications"));
    for (const JsonValue &application : readList(applications, diagnostics))
        readApplication(application, &scenario, diagnostics, cache);
    object.addUnknownMembers(QStringLiteral("a scenario"));
    return scenario;
}

} // namespace

AllowedValues readAllowedValues(const JsonMember &setting, Diagnostics *diagnostics)
{
    AllowedValues allowed;
    allowed.path = setting.name;
    checkPath(setting.name, setting.offset, diagnostics);
    const JsonValue &value = setting.value;
    if (value.kind == JsonValue::Object)
        readRange(value, &allowed, diagnostics);
    else if (value.kind == JsonValue::List && !value.items.empty())
        allowed.values = readItems(value, diagnostics);
    else if (value.kind == JsonValue::List)
        diagnostics->add(value.offset, QStringLiteral("expected at least one allowed value"));
    else
        addUnexpected(value, QStringLiteral("a list of values or a range"), diagnostics);
    return allowed;
}

QVector<Tools::Failure> parseScenario(const QString &fileName, const QByteArray &text,
                                      Scenario *scenario)
{
    Diagnostics diagnostics(fileName, text);
    parseScenario(text, scenario, &diagnostics);
    return diagnostics.failures();
}

JsonValue parseScenario(const QByteArray &text, Scenario *scenario, Diagnostics *diagnostics,
                        EntryCache *cache)
{
    JsonValue document = parseJson(text, diagnostics);
    if (!diagnostics->isEmpty())
        return {};
    const Scenario parsed = readDocument(document, diagnostics, cache);
    if (diagnostics->isEmpty())
        *scenario = parsed;
    if (cache)
        cache->endFile(diagnostics->isEmpty());
    return document;
}

QVector<Tools::Failure> readScenario(const QString &fileName, Scenario *scenario, EntryCache *cache)
{
    QByteArray text;
    if (const Tools::Failure failure = readInputFile(fileName, &text))
        return {failure};
    Diagnostics diagnostics(fileName, text);
    parseScenario(text, scenario, &diagnostics, cache);
    return diagnostics.failures();
}

} // namespace Tarnvel::Sandbox
