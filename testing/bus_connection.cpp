// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_connection.h"

#include <chrono>
#include <future>
#include <thread>

namespace Tarnvel::Testing {

namespace {

// GDBus waits without end for a bus that accepts a connection and then says nothing.
class Deadline
{
public:
    explicit Deadline(int timeoutMs)
        : m_cancellable(g_cancellable_new()), m_thread([this, timeoutMs] {
              const std::chrono::milliseconds timeout(timeoutMs);
              if (m_isMet.get_future().wait_for(timeout) == std::future_status::timeout)
                  g_cancellable_cancel(m_cancellable);
          })
    {
    }

    ~Deadline()
    {
        m_isMet.set_value();
        m_thread.join();
        g_object_unref(m_cancellable);
    }

    Deadline(const Deadline &) = delete;
    Deadline &operator=(const Deadline &) = delete;

    GCancellable *cancellable() const
    {
        return m_cancellable;
    }

private:
    GCancellable *m_cancellable;
    std::promise<void> m_isMet;
    // Last, as it uses the others.
    std::thread m_thread;
};

} // namespace

GDBusConnection *openConnection(const QString &address, GError **error, int timeoutMs)
{
    const Deadline deadline(timeoutMs);
    const auto flags = static_cast<GDBusConnectionFlags>(
        G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
        | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return g_dbus_connection_new_for_address_sync(address.toUtf8().constData(), flags, nullptr,
                                                  deadline.cancellable(), error);
}

bool closeConnection(GDBusConnection *connection)
{
    const Deadline deadline(busTimeoutMs);
    return g_dbus_connection_close_sync(connection, deadline.cancellable(), nullptr);
}

GVariant *callBus(GDBusConnection *connection, const char *method, GVariant *arguments,
                  const char *replyType, GError **error)
{
    return g_dbus_connection_call_sync(
        connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
        arguments, G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, busTimeoutMs, nullptr, error);
}

} // namespace Tarnvel::Testing
