// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "method_call.h"

#include "bus_connection.h"

#include <gio/gunixfdlist.h>

namespace Tarnvel::Testing {

namespace {

template<typename Object>
std::shared_ptr<Object> share(Object *object)
{
    return {static_cast<Object *>(g_object_ref(object)), g_object_unref};
}

} // namespace

MethodCall::MethodCall(GDBusConnection *connection, GDBusMessage *message)
    : m_connection(share(connection)), m_message(share(message))
{
}

QString MethodCall::path() const
{
    return QString::fromUtf8(g_dbus_message_get_path(m_message.get()));
}

QString MethodCall::method() const
{
    return QString::fromUtf8(g_dbus_message_get_member(m_message.get()));
}

Caller MethodCall::caller() const
{
    const char *const name = g_dbus_message_get_sender(m_message.get());
    g_autoptr(GVariant) reply = callBus(m_connection.get(), "GetConnectionCredentials",
                                        g_variant_new("(s)", name), "(a{sv})", nullptr);
    if (!reply)
        return {};
    g_autoptr(GVariant) credentials = g_variant_get_child_value(reply, 0);
    Caller caller;
    guint32 number = 0;
    if (g_variant_lookup(credentials, "ProcessID", "u", &number))
        caller.processId = number;
    if (g_variant_lookup(credentials, "UnixUserID", "u", &number))
        caller.userId = number;
    return caller;
}

GVariant *MethodCall::arguments() const
{
    static GVariant *const none = g_variant_ref_sink(g_variant_new_tuple(nullptr, 0));
    GVariant *const body = g_dbus_message_get_body(m_message.get());
    return body ? body : none;
}

void MethodCall::reply(GVariant *values, const QVector<int> &files) const
{
    GDBusMessage *reply = g_dbus_message_new_method_reply(m_message.get());
    g_dbus_message_set_body(reply, values);
    if (!files.isEmpty()) {
        g_autoptr(GUnixFDList) list = g_unix_fd_list_new();
        for (const int file : files)
            g_unix_fd_list_append(list, file, nullptr);
        g_dbus_message_set_unix_fd_list(reply, list);
    }
    send(reply);
}

void MethodCall::replyError(const QString &name, const QString &message) const
{
    send(g_dbus_message_new_method_error_literal(m_message.get(), name.toUtf8().constData(),
                                                 message.toUtf8().constData()));
}

void MethodCall::send(GDBusMessage *reply) const
{
    // A caller or a bus that has gone away no longer wants the reply.
    g_dbus_connection_send_message(m_connection.get(), reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE,
                                   nullptr, nullptr);
    g_object_unref(reply);
}

} // namespace Tarnvel::Testing
