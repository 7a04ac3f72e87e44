// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "dbus_peer.h"

#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

#include <fcntl.h>
#include <gio/gunixfdlist.h>

namespace Tarnvel::Testing {

namespace {

// GDBus's thread reads this while receive() waits for the reply.
GVariant *replyArgument = nullptr;
GDBusConnection *callerConnection = nullptr;

// Runs in GDBus's own thread, so that it replies although the caller blocks.
GDBusMessage *reply(GDBusConnection *connection, GDBusMessage *message, gboolean isIncoming,
                    gpointer /*data*/)
{
    static const int file = open("/dev/null", O_RDONLY | O_CLOEXEC);
    static GUnixFDList *const files = g_unix_fd_list_new_from_array(&file, 1);
    if (!isIncoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
        return message;
    GDBusMessage *const reply = g_dbus_message_new_method_reply(message);
    g_dbus_message_set_body(reply, g_variant_new_tuple(&replyArgument, 1));
    g_dbus_message_set_unix_fd_list(reply, files);
    g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
    g_object_unref(reply);
    g_object_unref(message);
    return nullptr;
}

gboolean accept(GDBusServer * /*server*/, GDBusConnection *connection, gpointer /*data*/)
{
    callerConnection = G_DBUS_CONNECTION(g_object_ref(connection));
    g_dbus_connection_add_filter(connection, reply, nullptr, nullptr);
    return TRUE;
}

QDBusConnection connectToPeer()
{
    static const QTemporaryDir directory;
    const QByteArray address = "unix:path=" + directory.filePath("socket").toUtf8();
    g_autofree gchar *guid = g_dbus_generate_guid();
    static GDBusServer *const server = g_dbus_server_new_sync(
        address.constData(), G_DBUS_SERVER_FLAGS_NONE, guid, nullptr, nullptr, nullptr);
    g_signal_connect(server, "new-connection", G_CALLBACK(accept), nullptr);
    g_dbus_server_start(server);
    QDBusConnection caller = QDBusConnection::connectToPeer(QString::fromUtf8(address), "peer");
    while (callerConnection == nullptr)
        g_main_context_iteration(nullptr, TRUE);
    return caller;
}

} // namespace

QVariant receive(GVariant *value)
{
    static const QDBusConnection caller = connectToPeer();
    replyArgument = value;
    const QDBusMessage reply = caller.call(QDBusMessage::createMethodCall({}, "/", {}, "Get"));
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 1)
        qFatal("the value did not arrive: %s", qUtf8Printable(reply.errorMessage()));
    return reply.arguments().constFirst();
}

} // namespace Tarnvel::Testing
