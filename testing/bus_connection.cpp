// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_connection.h"

#include <chrono>
#include <future>
#include <thread>

namespace Tarnvel::Testing {

namespace {

// Cancels \a work after \a timeoutMs: GDBus has no timeout for a bus that accepts a connection
// but does not reply.
template<typename Work>
auto withDeadline(int timeoutMs, Work work)
{
    g_autoptr(GCancellable) cancellable = g_cancellable_new();
    std::promise<void> done;
    std::thread watch([&done, timeoutMs, cancellable] {
        const std::chrono::milliseconds timeout(timeoutMs);
        if (done.get_future().wait_for(timeout) == std::future_status::timeout)
            g_cancellable_cancel(cancellable);
    });
    const auto result = work(cancellable);
    done.set_value();
    watch.join();
    return result;
}

} // namespace

GDBusConnection *openConnection(const QString &address, GError **error, int timeoutMs)
{
    const auto flags = static_cast<GDBusConnectionFlags>(
        G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
        | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return withDeadline(timeoutMs, [&](GCancellable *cancellable) {
        return g_dbus_connection_new_for_address_sync(address.toUtf8().constData(), flags, nullptr,
                                                      cancellable, error);
    });
}

void closeConnection(GDBusConnection *connection)
{
    withDeadline(busTimeoutMs, [connection](GCancellable *cancellable) {
        return g_dbus_connection_close_sync(connection, cancellable, nullptr);
    });
}

GVariant *callBus(GDBusConnection *connection, const char *method, GVariant *arguments,
                  const char *replyType, GError **error)
{
    return g_dbus_connection_call_sync(
        connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
        arguments, G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, busTimeoutMs, nullptr, error);
}

} // namespace Tarnvel::Testing
