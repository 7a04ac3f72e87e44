// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "client.h"
#include "endpoint.h"

#include <QtCore/QByteArray>

#include <gio/gio.h>

namespace Tarnvel::Benchmarks {

namespace {

// A nested dictionary stays in the table as a value, and also becomes a table of its own.
int readInto(GHashTable *table, GVariant *dictionary, GPtrArray *nestedTables)
{
    int count = 0;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, dictionary);
    gchar *key = nullptr;
    GVariant *value = nullptr;
    while (g_variant_iter_next(&iterator, "{sv}", &key, &value)) {
        ++count;
        if (g_variant_is_of_type(value, G_VARIANT_TYPE_VARDICT)) {
            GHashTable *nested = g_hash_table_new_full(
                g_str_hash, g_str_equal, g_free,
                [](gpointer data) { g_variant_unref(static_cast<GVariant *>(data)); });
            g_ptr_array_add(nestedTables, nested);
            count += readInto(nested, value, nestedTables);
        }
        g_hash_table_insert(table, key, value);
    }
    return count;
}

int readAll(GVariant *reply)
{
    g_autoptr(GPtrArray) nestedTables = g_ptr_array_new_with_free_func(
        [](gpointer table) { g_hash_table_unref(static_cast<GHashTable *>(table)); });
    GHashTable *table = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, [](gpointer data) {
        g_variant_unref(static_cast<GVariant *>(data));
    });
    g_ptr_array_add(nestedTables, table);
    g_autoptr(GVariant) dictionary = g_variant_get_child_value(reply, 0);
    return readInto(table, dictionary, nestedTables);
}

struct CallResult
{
    GVariant *reply = nullptr;
    GError *error = nullptr;
    GMainLoop *loop;
};

void finish(GObject *connection, GAsyncResult *result, gpointer data)
{
    auto &outcome = *static_cast<CallResult *>(data);
    outcome.reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result,
                                                  &outcome.error);
    g_main_loop_quit(outcome.loop);
}

} // namespace

Read makeGDBusClient(const QString &payload)
{
    const std::shared_ptr<GDBusConnection> connection(
        g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr), g_object_unref);
    if (!connection)
        qFatal("GDBus cannot connect to the bus");
    const QByteArray path = DBus::applicationPath(QStringLiteral("acme"), payload).toUtf8();
    return [connection, path] {
        CallResult outcome;
        outcome.loop = g_main_loop_new(nullptr, FALSE);
        g_dbus_connection_call(connection.get(), DBus::serviceName, path.constData(),
                               DBus::applicationInterface, DBus::getConfigurationMethod, nullptr,
                               G_VARIANT_TYPE("(a{sv})"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
                               finish, &outcome);
        g_main_loop_run(outcome.loop);
        g_main_loop_unref(outcome.loop);
        if (!outcome.reply)
            qFatal("%s", outcome.error->message);
        const int count = readAll(outcome.reply);
        g_variant_unref(outcome.reply);
        return count;
    };
}

} // namespace Tarnvel::Benchmarks
