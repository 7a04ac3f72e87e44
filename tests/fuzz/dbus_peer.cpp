// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "dbus_peer.h"

#include "outcome.h"

#include <QtCore/QMutexLocker>
#include <QtDBus/QDBusError>
#include <QtDBus/QDBusMessage>

#include <fcntl.h>
#include <gio/gunixfdlist.h>
#include <unistd.h>

namespace Tarnvel::Testing {

namespace {

GUnixFDList *oneOpenFile()
{
    const int file = open("/dev/null", O_RDONLY | O_CLOEXEC);
    return g_unix_fd_list_new_from_array(&file, 1);
}

} // namespace

Peer::Peer() : m_files(oneOpenFile()), m_caller(QString())
{
    const QByteArray address = "unix:path=" + m_directory.filePath("socket").toUtf8();
    gchar *const guid = g_dbus_generate_guid();
    GError *error = nullptr;
    m_server = g_dbus_server_new_sync(address.constData(), G_DBUS_SERVER_FLAGS_NONE, guid, nullptr,
                                      nullptr, &error);
    g_free(guid);
    if (m_server == nullptr)
        fail(QStringLiteral("the peer cannot listen"), QString::fromUtf8(error->message));
    g_signal_connect(m_server, "new-connection", G_CALLBACK(accept), this);
    g_dbus_server_start(m_server);

    m_caller = QDBusConnection::connectToPeer(QString::fromUtf8(address), QStringLiteral("peer"));
    if (!m_caller.isConnected())
        fail(QStringLiteral("the peer cannot be reached"), m_caller.lastError().message());
    while (m_connection == nullptr)
        g_main_context_iteration(nullptr, TRUE);
}

Peer::~Peer()
{
    QDBusConnection::disconnectFromPeer(QStringLiteral("peer"));
    g_dbus_server_stop(m_server);
    g_clear_object(&m_connection);
    g_object_unref(m_server);
    g_object_unref(m_files);
}

QVariant Peer::receive(const Body &body)
{
    {
        const QMutexLocker locker(&m_mutex);
        m_body = body;
    }
    const QDBusMessage call = QDBusMessage::createMethodCall(QString(), QStringLiteral("/"),
                                                             QString(), QStringLiteral("Get"));
    const QDBusMessage reply = m_caller.call(call);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 1)
        fail(QLatin1String("the body did not arrive: ") + reply.errorMessage(), textOf(body));
    return reply.arguments().constFirst();
}

gboolean Peer::accept(GDBusServer * /*server*/, GDBusConnection *connection, gpointer peer)
{
    auto *const self = static_cast<Peer *>(peer);
    self->m_connection = G_DBUS_CONNECTION(g_object_ref(connection));
    g_dbus_connection_add_filter(connection, answer, peer, nullptr);
    return TRUE;
}

GDBusMessage *Peer::answer(GDBusConnection *connection, GDBusMessage *message, gboolean incoming,
                           gpointer peer)
{
    if (!incoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
        return message;

    auto *const self = static_cast<Peer *>(peer);
    const Body body = self->body();
    GVariant *argument = body.argument.get();
    GDBusMessage *const reply = g_dbus_message_new_method_reply(message);
    g_dbus_message_set_body(reply, g_variant_new_tuple(&argument, 1));
    if (body.hasHandles)
        self->attachFile(reply);
    g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
    g_object_unref(reply);
    g_object_unref(message);
    return nullptr;
}

void Peer::attachFile(GDBusMessage *reply) const
{
    g_dbus_message_set_unix_fd_list(reply, m_files);
}

Body Peer::body()
{
    const QMutexLocker locker(&m_mutex);
    return m_body;
}

} // namespace Tarnvel::Testing
