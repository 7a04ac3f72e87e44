// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtDBus/QDBusConnection>

#include <atomic>
#include <gio/gio.h>

namespace Tarnvel::Benchmarks {

/*!
 * \brief Counts the messages on the bus, as a monitor of the bus sees them.
 *
 * All count: calls, answers and signals, to the service and to the bus itself.
 */
class Traffic
{
public:
    /*! \brief Starts to watch the bus at \a address; ends the process if it cannot. */
    explicit Traffic(const QString &address);

    /*! \brief Stops. */
    ~Traffic();

    Traffic(const Traffic &) = delete;
    Traffic &operator=(const Traffic &) = delete;

    /*!
     * \brief How many messages there have been since the last call.
     *
     * Whoever asks has had the answer to the last message of its own.
     */
    int take();

private:
    static GDBusMessage *see(GDBusConnection *connection, GDBusMessage *message,
                             gboolean isIncoming, gpointer traffic);
    void count(GDBusMessage *message);

    QDBusConnection m_fenceConnection;
    GDBusConnection *m_connection = nullptr;
    std::atomic<int> m_messages {0};
    std::atomic<bool> m_hasSeenFence {false};
};

} // namespace Tarnvel::Benchmarks
