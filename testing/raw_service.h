// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>

#include <functional>
#include <gio/gio.h>
#include <memory>
#include <optional>

namespace Tarnvel::Testing {

/*! \brief The process behind a connection to the bus, as far as the bus knows. */
struct Caller
{
    /*! 0 if it is not known. */
    qint64 processId = 0;
    std::optional<quint32> userId;
};

/*!
 * \brief A method call that the service has received.
 *
 * It may be answered at once, later, several times or never. Copies stand for the same call.
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
    /*! \brief The unique name of the caller. */
    QString sender() const;
    /*!
     * \brief Asks the bus who called, and waits for the answer for at most ten seconds.
     *
     * Nothing is known of a caller that has left the bus.
     */
    Caller caller() const;
    /*! \brief The arguments, a tuple. Belongs to the call. */
    GVariant *arguments() const;

    /*!
     * \brief Answers with \a values, a tuple; takes over a floating reference.
     *
     * \a files are the open files that handles among the values refer to by their position.
     */
    void reply(GVariant *values, const QVector<int> &files = {}) const;
    /*! \brief Answers with the error \a name and its \a message. */
    void replyError(const QString &name, const QString &message) const;

private:
    void send(GDBusMessage *answer) const;

    std::shared_ptr<GDBusConnection> m_connection;
    std::shared_ptr<GDBusMessage> m_message;
};

/*!
 * \brief A connection that owns the service's name and receives the calls to its interface.
 *
 * It stands on GDBus, whose values can take any form D-Bus allows, and shares no code with the
 * library that it is there to talk to. Calls of any method, with any arguments, on any object path
 * arrive in the event loop of the main thread, which must run on GLib, as Qt's does on Linux.
 */
class RawService
{
public:
    using Handler = std::function<void(const MethodCall &)>;
    using LossHandler = std::function<void()>;

    /*!
     * \brief Makes a service that answers calls through \a handler.
     *
     * Calls \a lossHandler in the event loop once the bus has ended the connection. The service is
     * closed then, and may be opened again.
     */
    explicit RawService(Handler handler, LossHandler lossHandler = {});

    /*! \brief Closes the connection. */
    ~RawService();

    RawService(const RawService &) = delete;
    RawService &operator=(const RawService &) = delete;

    /*!
     * \brief Connects to the bus at \a address and takes the service's name.
     *
     * False if either fails, also when another connection owns the name; errorString() then says
     * why.
     */
    bool open(const QString &address);

    /*! \brief Drops the connection, as if the service had died; unanswered calls end in an error.
     */
    void close();

    /*! \brief True from open() to close(), or to the loss of the connection. */
    bool isOpen() const;

    /*!
     * \brief Announces a change of the configuration at \a path; to nobody if not isOpen().
     *
     * \a arguments, a tuple whose floating reference is taken over, go with the signal, which
     * properly has none.
     */
    void announceChange(const QString &path, GVariant *arguments = nullptr);

    /*! \brief What went wrong in open(). */
    QString errorString() const;

private:
    static void receiveLoss(GDBusConnection *connection, gboolean isVanished, GError *error,
                            gpointer service);
    void receiveCalls();
    bool ownName(GError **error);

    std::shared_ptr<Handler> m_handler;
    LossHandler m_lossHandler;
    GDBusConnection *m_connection = nullptr;
    QString m_errorString;
};

} // namespace Tarnvel::Testing
