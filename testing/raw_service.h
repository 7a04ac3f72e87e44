// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "method_call.h"

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>
#include <gio/gio.h>
#include <memory>

namespace Tarnvel::Testing {

/*!
 * \brief A connection that owns the service's name and receives the calls to its interface.
 *
 * For services that must be able to do anything on the bus, even break its rules: fakes in tests,
 * and the simulated service of the sandbox. It uses GDBus, whose values take any form that D-Bus
 * allows, and shares no code with the library. Calls of any method, with any arguments, on any
 * object path arrive in the event loop of the main thread, which must run on GLib, as Qt's does on
 * Linux.
 */
class RawService
{
public:
    using Handler = std::function<void(const MethodCall &)>;
    using LossHandler = std::function<void()>;

    /*!
     * \brief A service, not on a bus yet, that passes each call to \a handler.
     *
     * Calls \a lossHandler from the event loop when the bus has closed the connection. The service
     * is closed then, and may be opened again.
     */
    explicit RawService(Handler handler, LossHandler lossHandler = {});

    /*! \brief Closes the connection. */
    ~RawService();

    RawService(const RawService &) = delete;
    RawService &operator=(const RawService &) = delete;

    /*!
     * \brief Connects to the bus at \a address and takes the service's name.
     *
     * Returns what went wrong if either fails, or if another connection owns the name; a null
     * string otherwise.
     */
    QString open(const QString &address);

    /*! \brief Drops the connection, as if the service had died; pending calls end in an error. */
    void close();

    /*! \brief True from open() to close(), or to the loss of the connection. */
    bool isOpen() const;

    /*!
     * \brief Announces a change of the configuration at \a path; does nothing if not isOpen().
     *
     * \a arguments, a tuple whose floating reference is consumed, go with the signal, which
     * should have none.
     */
    void announceChange(const QString &path, GVariant *arguments = nullptr);

    /*!
     * \brief Describes the interface to programs that ask for the objects of the service.
     *
     * They find it at \a paths, from now on or from open(); see
     * org.freedesktop.DBus.Introspectable. The handler receives nothing of this.
     */
    void setDescribedObjects(const QStringList &paths);

private:
    static void receiveLoss(GDBusConnection *connection, gboolean isVanished, GError *error,
                            gpointer service);
    bool ownName(GError **error);
    void exportObjects();

    std::shared_ptr<Handler> m_handler;
    LossHandler m_lossHandler;
    GDBusConnection *m_connection = nullptr;
    QStringList m_describedPaths;
    // Of the objects that are exported on the connection.
    QVector<guint> m_exportedIds;
};

} // namespace Tarnvel::Testing
