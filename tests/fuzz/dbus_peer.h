// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "generated_dictionary.h"

#include <QtCore/QMutex>
#include <QtCore/QTemporaryDir>
#include <QtCore/QVariant>
#include <QtDBus/QDBusConnection>

namespace Tarnvel::Testing {

/*!
 * \brief A D-Bus peer that hands a body to QtDBus in the way a service on a bus would.
 *
 * The body goes through a socket to a connection within this process, without a bus. All that can
 * go wrong on that way ends the process. Calls are answered in the worker thread of GDBus, so that
 * a caller that blocks is answered too.
 */
class Peer
{
public:
    Peer();
    ~Peer();

    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;

    /*! \brief The argument of \a body, as a caller of a method receives it. */
    QVariant receive(const Body &body);

private:
    static gboolean accept(GDBusServer *server, GDBusConnection *connection, gpointer peer);
    static GDBusMessage *answer(GDBusConnection *connection, GDBusMessage *message,
                                gboolean incoming, gpointer peer);

    void attachFile(GDBusMessage *reply) const;
    Body body();

    QTemporaryDir m_directory;
    GUnixFDList *m_files;
    GDBusServer *m_server = nullptr;
    GDBusConnection *m_connection = nullptr;
    QDBusConnection m_caller;
    QMutex m_mutex;
    Body m_body;
};

} // namespace Tarnvel::Testing
