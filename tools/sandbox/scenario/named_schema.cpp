// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "named_schema.h"

#include "json_reader.h"
#include "schema_reader.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Tarnvel::Sandbox {

using Schema::Setting;
using Tools::JsonValue;

namespace {

Variant makeScalar(const JsonValue &value)
{
    if (value.kind == JsonValue::Number)
        return adopt(g_variant_new_int32(value.text.toInt()));
    if (value.kind == JsonValue::Boolean)
        return adopt(g_variant_new_boolean(value.isTrue));
    return adopt(g_variant_new_string(value.text.toUtf8().constData()));
}

Variant makeValue(const Setting &setting, const JsonValue &value)
{
    if (setting.type != Schema::Type::List)
        return makeScalar(value);
    GVariantBuilder builder;
    const QByteArray type = dbusType(setting);
    g_variant_builder_init(&builder, G_VARIANT_TYPE(type.constData()));
    for (const JsonValue &item : value.items)
        g_variant_builder_add_value(&builder, makeScalar(item).get());
    return adopt(g_variant_builder_end(&builder));
}

bool isEmptyList(const Variant &value)
{
    return g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING_ARRAY)
        && g_variant_n_children(value.get()) == 0;
}

Variant completed(const Setting &setting, const Variant &value)
{
    if (setting.type == Schema::Type::Object)
        return withDefaults(setting, value ? value : makeConfiguration({}));
    if (!value)
        return makeValue(setting, setting.defaultValue);
    return setting.type == Schema::Type::List && isEmptyList(value) ? makeValue(setting, {})
                                                                    : value;
}

} // namespace

std::shared_ptr<const Schema::Schema> readNamedSchema(const JsonValue &value,
                                                      Tools::Diagnostics *diagnostics)
{
    const QString name = Tools::readString(&value, diagnostics);
    if (value.kind != JsonValue::String)
        return nullptr;
    const auto schema = std::make_shared<Schema::Schema>();
    const QVector<Tools::Failure> failures = readSchema(
        QDir::cleanPath(QFileInfo(diagnostics->fileName()).dir().filePath(name)), schema.get());
    for (const Tools::Failure &failure : failures)
        diagnostics->add(value.offset, failure.text(), failure.hint);
    return failures.isEmpty() ? schema : nullptr;
}

Variant withDefaults(const Setting &object, const Variant &configuration)
{
    // It is invalid, or the administrator has set a value of another type.
    if (!configuration || !g_variant_is_of_type(configuration.get(), G_VARIANT_TYPE_VARDICT))
        return configuration;
    Entries entries = entriesOf(configuration.get());
    for (const Setting &setting : object.members) {
        Variant &value = entries[setting.key];
        value = completed(setting, value);
    }
    return makeConfiguration(entries);
}

} // namespace Tarnvel::Sandbox
