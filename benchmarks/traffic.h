// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtDBus/QDBusConnection>

#include <atomic>
#include <gio/gio.h>

namespace Tarnvel::Benchmarks {

/*!
 * \brief Counts all messages on the bus: calls, replies and signals, also those of the bus itself.
 */
class Traffic
{
public:
    /*! \brief Starts monitoring the bus at \a address; ends the process on failure. */
    explicit Traffic(const QString &address);

    /*! \brief Stops monitoring. */
    ~Traffic();

    Traffic(const Traffic &) = delete;
    Traffic &operator=(const Traffic &) = delete;

    /*!
     * \brief How many messages there were since the last call.
     *
     * Call it after the reply to the last message that is to count.
     */
    int take();

private:
    static GDBusMessage *receive(GDBusConnection *connection, GDBusMessage *message,
                                 gboolean isIncoming, gpointer traffic);
    void count(GDBusMessage *message);

    QDBusConnection m_fenceConnection;
    GDBusConnection *m_connection = nullptr;
    std::atomic<int> m_messages {0};
    std::atomic<bool> m_isFenceReceived {false};
};

} // namespace Tarnvel::Benchmarks
