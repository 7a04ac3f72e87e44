// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>

#include <gio/gio.h>
#include <memory>
#include <optional>

namespace Tarnvel::Testing {

/*! \brief The process behind a connection to the bus, as far as the bus knows. */
struct Caller
{
    /*! 0 if not known. */
    qint64 processId = 0;
    std::optional<quint32> userId;
};

/*!
 * \brief A method call that the service has received.
 *
 * A raw service may reply at once, later, several times or never. Copies represent the same call.
 */
class MethodCall
{
public:
    /*! \brief The call \a message, which came in on \a connection. */
    MethodCall(GDBusConnection *connection, GDBusMessage *message);

    /*! \brief The object path to which the call went. */
    QString path() const;
    /*! \brief The method called. */
    QString method() const;
    /*!
     * \brief Asks the bus who called, and waits for its reply.
     *
     * Nothing is known of a caller that has left the bus, or if the bus does not reply within
     * busTimeoutMs.
     */
    Caller caller() const;
    /*! \brief The arguments, a tuple. Belongs to the call. */
    GVariant *arguments() const;

    /*!
     * \brief Replies with \a values, a tuple whose floating reference is consumed.
     *
     * \a files are the open files that handles among the values refer to by their position.
     */
    void reply(GVariant *values, const QVector<int> &files = {}) const;
    /*! \brief Replies with the error \a name and its \a message. */
    void replyError(const QString &name, const QString &message) const;

private:
    void send(GDBusMessage *reply) const;

    std::shared_ptr<GDBusConnection> m_connection;
    std::shared_ptr<GDBusMessage> m_message;
};

} // namespace Tarnvel::Testing
