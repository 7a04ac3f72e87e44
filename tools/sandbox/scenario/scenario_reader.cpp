// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "scenario_reader.h"

#include "configuration_reader.h"
#include "endpoint.h"
#include "exit_status.h"
#include "fault_reader.h"
#include "input_file.h"
#include "json_reader.h"
#include "named_schema.h"

namespace Tarnvel::Sandbox {

namespace {

// The greatest number means no user.
constexpr qint64 maximumUser = std::numeric_limits<quint32>::max() - 1;

void checkPath(const QString &path, int offset, Tools::Diagnostics *diagnostics)
{
    if (settingKeys(path).isEmpty())
        diagnostics->add(offset,
                         QStringLiteral("expected the path of a setting, such as \"a/b\", found %1")
                             .arg(Tools::quotedExcerpt(path)));
}

QStringList readLocked(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics)
{
    QStringList locked;
    for (const Tools::JsonValue &item : Tools::readList(value, diagnostics)) {
        locked.append(Tools::readString(&item, diagnostics));
        if (item.kind == Tools::JsonValue::String)
            checkPath(item.text, item.offset, diagnostics);
    }
    return locked;
}

QVector<quint32> readUsers(const Tools::JsonValue &value, Tools::Diagnostics *diagnostics)
{
    QVector<quint32> users;
    for (const Tools::JsonValue &item : Tools::readList(&value, diagnostics))
        users.append(static_cast<quint32>(Tools::readInteger(&item, 0, maximumUser, diagnostics)));
    return users;
}

void readRange(const Tools::JsonValue &value, AllowedValues *allowed,
               Tools::Diagnostics *diagnostics)
{
    Tools::ObjectReader object(value, diagnostics);
    const Tools::JsonValue *const minimum = object.find(QLatin1String("minimum"));
    const Tools::JsonValue *const maximum = object.find(QLatin1String("maximum"));
    object.addUnknownMembers(QStringLiteral("a range"));
    if (minimum)
        allowed->minimum = Tools::readInt32(minimum, diagnostics);
    if (maximum)
        allowed->maximum = Tools::readInt32(maximum, diagnostics);
    if (!minimum && !maximum)
        diagnostics->add(value.offset, QStringLiteral("\"minimum\" or \"maximum\" is missing"));
    else if (allowed->minimum > allowed->maximum)
        diagnostics->add(value.offset, QStringLiteral("\"minimum\" is greater than \"maximum\""));
}

QVector<AllowedValues> readAllowed(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics)
{
    QVector<AllowedValues> allowed;
    if (value && value->kind != Tools::JsonValue::Object)
        Tools::addUnexpected(*value, QStringLiteral("an object"), diagnostics);
    else if (value)
        for (const Tools::JsonMember &setting : value->members)
            allowed.append(readAllowedValues(setting, diagnostics));
    return allowed;
}

QVector<Fault> readFaults(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics)
{
    QVector<Fault> faults;
    for (const Tools::JsonValue &item : Tools::readList(value, diagnostics))
        faults.append(readFault(item, diagnostics));
    return faults;
}

// Gives the application all settings of the schema that \a value names.
void applySchema(const Tools::JsonValue &value, Application *application,
                 Tools::Diagnostics *diagnostics)
{
    application->schema = readNamedSchema(value, diagnostics);
    if (!application->schema)
        return;
    const Schema::Schema &schema = *application->schema;
    const QString name = schema.organization + QLatin1Char('/') + schema.application;
    if (name != application->name)
        diagnostics->add(
            value.offset,
            QStringLiteral("the schema is for %1, not for %2").arg(name, application->name));
    application->configuration = withDefaults(schema.root, application->configuration);
    if (application->configuration)
        checkSize(application->configuration, value.offset, diagnostics);
    for (Fault &fault : application->faults) {
        if (fault.configuration)
            fault.configuration = withDefaults(schema.root, fault.configuration);
    }
}

void readApplication(const Tools::JsonValue &value, Scenario *scenario,
                     Tools::Diagnostics *diagnostics, EntryCache *cache)
{
    Tools::ObjectReader object(value, diagnostics);
    Application application;
    const Tools::JsonValue *const organizationName = object.require(QLatin1String("organization"));
    const Tools::JsonValue *const applicationName = object.require(QLatin1String("application"));
    const QString organization = Tools::readString(organizationName, diagnostics);
    const QString name = Tools::readString(applicationName, diagnostics);
    application.name = organization + QLatin1Char('/') + name;
    application.configuration = readConfiguration(object.require(QLatin1String("configuration")),
                                                  diagnostics, cache);
    application.locked = readLocked(object.find(QLatin1String("locked")), diagnostics);
    if (const Tools::JsonValue *const configurable = object.find(QLatin1String("configurable")))
        application.isConfigurable = Tools::readBoolean(configurable, diagnostics);
    if (const Tools::JsonValue *const users = object.find(QLatin1String("users")))
        application.users = readUsers(*users, diagnostics);
    const Tools::JsonValue *const allowed = object.find(QLatin1String("allowed"));
    const Tools::JsonValue *const schema = object.find(QLatin1String("schema"));
    application.allowed = readAllowed(allowed, diagnostics);
    application.faults = readFaults(object.find(QLatin1String("faults")), diagnostics);
    if (allowed && schema)
        diagnostics->add(schema->offset,
                         QStringLiteral("\"schema\" and \"allowed\" are mutually exclusive"));
    else if (schema)
        applySchema(*schema, &application, diagnostics);
    object.addUnknownMembers(QStringLiteral("an application"));
    if (!organizationName || !applicationName)
        return;

    const QString path = DBus::applicationPath(organization, name);
    if (!g_variant_is_object_path(path.toUtf8().constData()))
        diagnostics->add(
            value.offset,
            QStringLiteral("%1 is not a valid object path").arg(Tools::quotedExcerpt(path)));
    else if (scenario->contains(path))
        diagnostics->add(
            value.offset,
            QStringLiteral("duplicate application at %1").arg(Tools::quotedExcerpt(path)));
    scenario->insert(path, application);
}

Scenario readDocument(const Tools::JsonValue &document, Tools::Diagnostics *diagnostics,
                      EntryCache *cache)
{
    Scenario scenario;
    Tools::ObjectReader object(document, diagnostics);
    // It names the JSON Schema of the file, for editors.
    Tools::readString(object.find(QLatin1String("$schema")), diagnostics);
    const Tools::JsonValue *const applications = object.require(QLatin1String("applications"));
    for (const Tools::JsonValue &application : Tools::readList(applications, diagnostics))
        readApplication(application, &scenario, diagnostics, cache);
    object.addUnknownMembers(QStringLiteral("a scenario"));
    return scenario;
}

} // namespace

AllowedValues readAllowedValues(const Tools::JsonMember &setting, Tools::Diagnostics *diagnostics)
{
    AllowedValues allowed;
    allowed.path = setting.name;
    checkPath(setting.name, setting.offset, diagnostics);
    const Tools::JsonValue &value = setting.value;
    if (value.kind == Tools::JsonValue::Object)
        readRange(value, &allowed, diagnostics);
    else if (value.kind == Tools::JsonValue::List && !value.items.empty())
        allowed.values = readItems(value, diagnostics);
    else if (value.kind == Tools::JsonValue::List)
        diagnostics->add(value.offset, QStringLiteral("expected at least one allowed value"));
    else
        Tools::addUnexpected(value, QStringLiteral("a list of values or a range"), diagnostics);
    return allowed;
}

QVector<Tools::Failure> parseScenario(const QString &fileName, const QByteArray &text,
                                      Scenario *scenario)
{
    Tools::Diagnostics diagnostics(fileName, text);
    parseScenario(text, scenario, &diagnostics);
    return diagnostics.failures(SandboxFailed);
}

Tools::JsonValue parseScenario(const QByteArray &text, Scenario *scenario,
                               Tools::Diagnostics *diagnostics, EntryCache *cache)
{
    Tools::JsonValue document = Tools::parseJson(text, diagnostics);
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
    if (const Tools::Failure failure = Tools::readInputFile(fileName, &text, SandboxFailed))
        return {failure};
    Tools::Diagnostics diagnostics(fileName, text);
    parseScenario(text, scenario, &diagnostics, cache);
    return diagnostics.failures(SandboxFailed);
}

} // namespace Tarnvel::Sandbox
