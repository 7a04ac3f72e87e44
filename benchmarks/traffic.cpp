// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "traffic.h"

#include <QtCore/QThread>
#include <QtDBus/QDBusMessage>

namespace Tarnvel::Benchmarks {

namespace {

constexpr char fence[] = "org.tarnvel.Fence";
constexpr int busTimeoutMs = 10000;

void require(bool isDone, const GError *error)
{
    if (!isDone)
        qFatal("cannot monitor the bus: %s", error->message);
}

} // namespace

Traffic::Traffic(const QString &address)
    : m_fenceConnection(QDBusConnection::connectToBus(address, QStringLiteral("fence")))
{
    GError *error = nullptr;
    const auto flags = static_cast<GDBusConnectionFlags>(
        G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
        | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    m_connection = g_dbus_connection_new_for_address_sync(address.toUtf8().constData(), flags,
                                                          nullptr, nullptr, &error);
    require(m_connection, error);
    g_autoptr(GVariant) result = g_dbus_connection_call_sync(
        m_connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
        "org.freedesktop.DBus.Monitoring", "BecomeMonitor", g_variant_new("(asu)", nullptr, 0),
        nullptr, G_DBUS_CALL_FLAGS_NONE, busTimeoutMs, nullptr, &error);
    require(result, error);
    g_dbus_connection_add_filter(m_connection, receive, this, nullptr);
    // Does not count the messages of this constructor.
    take();
}

Traffic::~Traffic()
{
    g_dbus_connection_close_sync(m_connection, nullptr, nullptr);
    g_object_unref(m_connection);
}

int Traffic::take()
{
    m_isFenceReceived = false;
    m_fenceConnection.send(QDBusMessage::createSignal(QStringLiteral("/"), QLatin1String(fence),
                                                      QStringLiteral("Passed")));
    while (!m_isFenceReceived)
        QThread::yieldCurrentThread();
    return m_messages.exchange(0);
}

// Runs in GDBus's own thread.
GDBusMessage *Traffic::receive(GDBusConnection *, GDBusMessage *message, gboolean isIncoming,
                               gpointer traffic)
{
    if (isIncoming)
        static_cast<Traffic *>(traffic)->count(message);
    g_object_unref(message);
    return nullptr;
}

void Traffic::count(GDBusMessage *message)
{
    if (g_strcmp0(g_dbus_message_get_interface(message), fence) == 0) {
        m_isFenceReceived = true;
        return;
    }
    ++m_messages;
}

} // namespace Tarnvel::Benchmarks
