// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_connection.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace Tarnvel::Testing {

namespace {

// GDBus waits without end for a bus that accepts a connection and then says nothing.
class Deadline
{
public:
    Deadline() : m_cancellable(g_cancellable_new()), m_thread([this] { wait(); }) { }

    ~Deadline()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_isMet = true;
        }
        m_condition.notify_one();
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
    void wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_condition.wait_for(lock, std::chrono::milliseconds(busTimeoutMs),
                                  [this] { return m_isMet; }))
            g_cancellable_cancel(m_cancellable);
    }

    GCancellable *m_cancellable;
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_isMet = false;
    // Last, as it uses the others.
    std::thread m_thread;
};

} // namespace

GDBusConnection *openConnection(const QString &address, GError **error)
{
    const Deadline deadline;
    const auto flags = static_cast<GDBusConnectionFlags>(
        G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
        | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return g_dbus_connection_new_for_address_sync(address.toUtf8().constData(), flags, nullptr,
                                                  deadline.cancellable(), error);
}

bool closeConnection(GDBusConnection *connection)
{
    const Deadline deadline;
    return g_dbus_connection_close_sync(connection, deadline.cancellable(), nullptr);
}

} // namespace Tarnvel::Testing
