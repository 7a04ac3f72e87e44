// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "setting_slips.h"

#include "report/variant_json.h"
#include "scenario/configuration_reader.h"
#include "scenario/named_schema.h"
#include "scenario/plain_json.h"
#include "scenario/scenario_reader.h"
#include "service/change_validation.h"
#include "valid_part.h"
#include "validation.h"

#include <algorithm>

namespace Tarnvel::Sandbox {

namespace {

constexpr int mostSettingsInHint = 10;

struct WrittenConfiguration
{
    const Tools::JsonValue *json;
    Variant value;
};
using WrittenConfigurations = QVector<WrittenConfiguration>;

// All that the service can keep for the application; none if one of them is invalid.
WrittenConfigurations readConfigurations(const Tools::JsonValue &application,
                                         const Schema::Schema *schema)
{
    const QString member = QStringLiteral("configuration");
    QVector<const Tools::JsonValue *> written {application.member(member)};
    for (const Tools::JsonValue &fault : itemsOf(application, QStringLiteral("faults"))) {
        if (const Tools::JsonValue *const configuration = fault.member(member))
            written.append(configuration);
    }
    WrittenConfigurations configurations;
    for (const Tools::JsonValue *const json : qAsConst(written)) {
        const std::optional<Variant> value = readValidPart(
            [](const Tools::JsonValue *part, Tools::Diagnostics *diagnostics) {
                return readConfiguration(part, diagnostics);
            },
            json);
        if (!value || !*value)
            return {};
        configurations.append({json, schema ? withDefaults(schema->root, *value) : *value});
    }
    return configurations;
}

// The settings from which the path could lead on.
QString settingsHint(const Variant &configuration, QStringList keys)
{
    Variant parent;
    do {
        keys.removeLast();
        parent = valueAt(configuration, keys);
    } while (!parent || !g_variant_is_of_type(parent.get(), G_VARIANT_TYPE_VARDICT));
    QStringList settings = entriesOf(parent.get()).keys();
    if (settings.isEmpty())
        return {};
    if (settings.size() > mostSettingsInHint)
        settings = settings.mid(0, mostSettingsInHint) << QStringLiteral("...");
    const QString names = settings.join(QLatin1String(", "));
    return keys.isEmpty() ? QStringLiteral("use a setting of the configuration: %1").arg(names)
                          : QStringLiteral("use a setting of %1: %2")
                                .arg(Tools::quotedExcerpt(keys.join(QLatin1Char('/'))), names);
}

void addLostPath(const QString &path, int offset, const WrittenConfigurations &configurations,
                 Tools::Diagnostics *diagnostics)
{
    const QStringList keys = settingKeys(path);
    const auto hasSetting = [&keys](const WrittenConfiguration &configuration) {
        return valueAt(configuration.value, keys) != nullptr;
    };
    // An invalid path is no slip.
    if (keys.isEmpty() || configurations.isEmpty()
        || std::any_of(configurations.begin(), configurations.end(), hasSetting))
        return;
    diagnostics->addSlip(offset, QStringLiteral("%1 leads nowhere").arg(Tools::quotedExcerpt(path)),
                         settingsHint(configurations.first().value, keys));
}

bool canHaveRange(const Variant &setting)
{
    return g_variant_is_of_type(setting.get(), G_VARIANT_TYPE_INT32)
        || g_variant_is_of_type(setting.get(), G_VARIANT_TYPE("ai"))
        || (g_variant_is_of_type(setting.get(), G_VARIANT_TYPE_ARRAY)
            && g_variant_n_children(setting.get()) == 0);
}

void addForbiddenValues(const AllowedValues &allowed, const WrittenConfigurations &configurations,
                        Tools::Diagnostics *diagnostics)
{
    const QStringList keys = settingKeys(allowed.path);
    for (const WrittenConfiguration &configuration : configurations) {
        const Variant setting = valueAt(configuration.value, keys);
        if (!setting)
            continue;
        const int offset = writtenAt(*configuration.json, keys).offset;
        const QString name = Tools::quotedExcerpt(allowed.path);
        if (allowed.values.isEmpty() && !canHaveRange(setting))
            diagnostics->addSlip(
                offset, QStringLiteral("%1 has a range, but is not an integer").arg(name),
                QStringLiteral("remove the range, or make the setting an integer"));
        else if (const Variant forbidden = forbiddenValue(allowed, setting))
            diagnostics->addSlip(offset,
                                 QStringLiteral("%1 may only be %2, not %3")
                                     .arg(name, allowedText(allowed), toJsonText(forbidden.get())),
                                 QStringLiteral("change the value, or allow it"));
    }
}

// A deprecated setting is no slip: the application may be tested with it.
void addProblems(const Schema::Schema &schema, const WrittenConfigurations &configurations,
                 Tools::Diagnostics *diagnostics)
{
    for (const WrittenConfiguration &configuration : configurations) {
        for (const Schema::Problem &problem :
             validate(schema.root, plainConfiguration(*configuration.json))) {
            if (problem.kind != Schema::Problem::Deprecated)
                diagnostics->addSlip(problem.offset, problem.text(), problem.hint);
        }
    }
}

std::shared_ptr<const Schema::Schema> readSchemaOf(const Tools::JsonValue &application,
                                                   const QString &fileName)
{
    const Tools::JsonValue *const schema = application.member(QStringLiteral("schema"));
    // What is wrong with the schema is no slip.
    Tools::Diagnostics diagnostics(fileName, {});
    return schema ? readNamedSchema(*schema, &diagnostics) : nullptr;
}

void addSlipsOf(const Tools::JsonValue &application, Tools::Diagnostics *diagnostics)
{
    const auto schema = readSchemaOf(application, diagnostics->fileName());
    const WrittenConfigurations configurations = readConfigurations(application, schema.get());
    if (schema)
        addProblems(*schema, configurations, diagnostics);
    for (const Tools::JsonValue &path : itemsOf(application, QStringLiteral("locked"))) {
        if (path.kind == Tools::JsonValue::String)
            addLostPath(path.text, path.offset, configurations, diagnostics);
    }
    const Tools::JsonValue *const allowed = application.member(QStringLiteral("allowed"));
    if (!allowed)
        return;
    for (const Tools::JsonMember &setting : allowed->members) {
        addLostPath(setting.name, setting.offset, configurations, diagnostics);
        if (const auto values = readValidPart(readAllowedValues, setting))
            addForbiddenValues(*values, configurations, diagnostics);
    }
}

} // namespace

void addSettingSlips(const Tools::JsonValue &document, Tools::Diagnostics *diagnostics)
{
    for (const Tools::JsonValue &application : itemsOf(document, QStringLiteral("applications")))
        addSlipsOf(application, diagnostics);
}

} // namespace Tarnvel::Sandbox
