// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "variant.h"

#include "bus_limits.h"
#include "text.h"

#include <gio/gio.h>

namespace Tarnvel::Sandbox {

namespace {

// The longest name that a bus gives a connection.
constexpr char longestName[] = ":1.2147483647";

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
    while (g_variant_iter_next(&iterator, "{&sv}", &key, &content))
        entries.insert(Tools::fromUtf8(key), inOrder(adopt(content)));
    return entries;
}

Variant inOrder(const Variant &value)
{
    return isConfiguration(value.get()) ? makeConfiguration(entriesOf(value.get())) : value;
}

Variant mergeConfigurations(const Variant &configuration, GVariant *change)
{
    Entries merged = entriesOf(configuration.get());
    const Entries changed = entriesOf(change);
    for (auto entry = changed.begin(); entry != changed.end(); ++entry)
        merged.insert(entry.key(), entry.value());
    return makeConfiguration(merged);
}

QStringList settingKeys(const QString &path)
{
    const QStringList keys = path.split(QLatin1Char('/'));
    return keys.contains(QString()) ? QStringList() : keys;
}

Variant valueAt(const Variant &configuration, const QStringList &path)
{
    Variant value = configuration;
    for (const QString &key : path) {
        if (!value || !isConfiguration(value.get()))
            return {};
        GVariant *const found = g_variant_lookup_value(value.get(), key.toUtf8().constData(),
                                                       nullptr);
        value = found ? adopt(found) : Variant();
    }
    return value;
}

bool isTooLarge(const Variant &configuration)
{
    g_autoptr(GDBusMessage) reply = g_dbus_message_new();
    g_dbus_message_set_message_type(reply, G_DBUS_MESSAGE_TYPE_METHOD_RETURN);
    g_dbus_message_set_reply_serial(reply, 1);
    g_dbus_message_set_destination(reply, longestName);
    GVariant *const body = configuration.get();
    g_dbus_message_set_body(reply, g_variant_new_tuple(&body, 1));
    gsize size = 0;
    // A message that is too large for any bus cannot even be created.
    g_autofree guchar *message = g_dbus_message_to_blob(reply, &size, G_DBUS_CAPABILITY_FLAGS_NONE,
                                                        nullptr);
    return !message || size > DBus::maximumMessageSize;
}

bool areEqual(const Variant &left, const Variant &right)
{
    return left && right ? g_variant_equal(left.get(), right.get()) : left == right;
}

} // namespace Tarnvel::Sandbox
