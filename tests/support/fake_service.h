// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "raw_service.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <functional>
#include <optional>

namespace Tarnvel::Testing {

/*! \brief A value in GVariant's text form, such as "({'theme': <'dark'>},)". */
GVariant *parseValue(const QString &text);

/*!
 * \brief A service under a test's command, which records what it is asked.
 *
 * It sees the calls as GDBus does, and so is an observer of the wire that shares nothing with
 * QtDBus. What it replies is a tuple in GVariant's text form.
 */
class FakeService
{
public:
    /*! \brief A call as it came in. */
    struct Call
    {
        QString path;
        QString method;
        /*! The arguments in GVariant's text form, types included: "({'volume': <int32 7>},)". */
        QString arguments;
    };

    using Handler = RawService::Handler;

    /*! \brief A service for the bus at \a address that is not running yet. */
    explicit FakeService(const QString &address);

    /*! \brief Appears on the bus. */
    bool start();

    /*! \brief Drops off the bus, with calls unanswered if there are any. */
    void stop();

    /*! \brief Drops off the bus and forgets its calls and its handler: as if it were new. */
    void reset();

    /*! \brief From now on, answers every call with \a values. */
    void answerWith(const QString &values);

    /*! \brief From now on, answers every call with an error. */
    void answerWithError(const QString &name, const QString &message);

    /*! \brief From now on, leaves the answer to every call to \a handler. */
    void answerThrough(const Handler &handler);

    /*! \brief From now on, answers no call before replyTo() says so. */
    void leaveUnanswered();

    /*! \brief How many calls have been left unanswered since then. */
    int unanswered() const;

    /*! \brief Answers the one at \a index of these calls, oldest first; may be repeated. */
    void replyTo(int index, const QString &values) const;

    /*! \brief The calls received so far, oldest first. */
    const QList<Call> &calls() const;

    /*! \brief Announces a change at \a path; see RawService::announceChange(). */
    void announceChange(const QString &path, const QString &arguments = QString());

private:
    void receive(const MethodCall &call);

    QString m_address;
    QList<Call> m_calls;
    QList<MethodCall> m_unanswered;
    Handler m_handler;
    std::optional<RawService> m_service;
};

} // namespace Tarnvel::Testing
