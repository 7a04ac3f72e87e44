// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "variant.h"

namespace Tarnvel::Sandbox {

namespace {

bool isConfiguration(GVariant *value)
{
    return g_variant_is_of_type(value, G_VARIANT_TYPE_VARDICT);
}

} // namespace

Variant adopt(GVariant *value)
{
    return {g_variant_take_ref(value), g_variant_unref};
}

Variant makeConfiguration(const Entries &entries)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    for (auto entry = entries.begin(); entry != entries.end(); ++entry)
        g_variant_builder_add(&builder, "{sv}", entry.key().toUtf8().constData(),
                              entry.value().get());
    return adopt(g_variant_builder_end(&builder));
}

Entries entriesOf(GVariant *configuration)
{
    Entries entries;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, configuration);
    const gchar *key = nullptr;
    GVariant *content = nullptr;
    while (g_variant_iter_next(&iterator, "{&sv}", &key, &content)) {
        const Variant value = adopt(content);
        entries.insert(QString::fromUtf8(key),
                       isConfiguration(content) ? makeConfiguration(entriesOf(content)) : value);
    }
    return entries;
}

Variant mergeConfigurations(const Variant &configuration, GVariant *change)
{
    Entries merged = entriesOf(configuration.get());
    const Entries changed = entriesOf(change);
    for (auto entry = changed.begin(); entry != changed.end(); ++entry)
        merged.insert(entry.key(), entry.value());
    return makeConfiguration(merged);
}

Variant valueAt(const Variant &configuration, const QStringList &path)
{
    Variant value = configuration;
    for (const QString &key : path) {
        if (!value || !isConfiguration(value.get()))
            return {};
        value = entriesOf(value.get()).value(key);
    }
    return value;
}

bool areEqual(const Variant &left, const Variant &right)
{
    return left && right ? g_variant_equal(left.get(), right.get()) : left == right;
}

} // namespace Tarnvel::Sandbox
