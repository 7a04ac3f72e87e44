// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "raw_service.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace Tarnvel::Testing {

/*! \brief Parses GVariant text, such as "({'theme': <'dark'>},)". */
inline GVariant *parseValue(const QString &text)
{
    g_autoptr(GError) error = nullptr;
    GVariant *value = g_variant_parse(nullptr, text.toUtf8().constData(), nullptr, nullptr, &error);
    if (!value)
        qFatal("%s: %s", qUtf8Printable(text), error->message);
    return value;
}

/*!
 * \brief A service that a test controls, and that records the calls it receives.
 *
 * It sees the calls as GDBus does, and so observes the messages without sharing code with
 * Qt D-Bus. Its replies are given as GVariant text, of a tuple.
 */
class FakeService
{
public:
    /*! \brief A call as it came in. */
    struct Call
    {
        QString path;
        QString method;
        /*! The arguments as GVariant text with types: "({'volume': <int32 7>},)". */
        QString arguments;
    };

    using Handler = RawService::Handler;

    /*! \brief A service for the bus at \a address that is not running yet. */
    explicit FakeService(const QString &address) : m_address(address)
    {
        reset();
    }

    /*! \brief Connects to the bus. */
    bool start()
    {
        const QString error = m_service->open(m_address);
        if (!error.isNull())
            qWarning("%s", qUtf8Printable(error));
        return error.isNull();
    }

    /*! \brief Leaves the bus; pending calls get no reply. */
    void stop()
    {
        m_service->close();
    }

    /*! \brief Leaves the bus and forgets its calls and its handler: as if it were new. */
    void reset()
    {
        // A new raw service, so that no call to the old one still comes in.
        m_service.emplace([this](const MethodCall &call) { receive(call); });
        m_calls.clear();
        m_unanswered.clear();
        replyWith(QStringLiteral("(@a{sv} {},)"));
    }

    /*! \brief From now on, replies to every call with \a values. */
    void replyWith(const QString &values)
    {
        const std::shared_ptr<GVariant> body(parseValue(values), g_variant_unref);
        replyThrough([body](const MethodCall &call) { call.reply(body.get()); });
    }

    /*! \brief From now on, replies to every call with an error. */
    void replyWithError(const QString &name, const QString &message)
    {
        replyThrough([=](const MethodCall &call) { call.replyError(name, message); });
    }

    /*! \brief From now on, leaves the reply to every call to \a handler. */
    void replyThrough(const Handler &handler)
    {
        m_handler = handler;
    }

    /*! \brief From now on, replies to calls only when replyTo() is called. */
    void leaveUnanswered()
    {
        m_unanswered.clear();
        replyThrough([this](const MethodCall &call) { m_unanswered.append(call); });
    }

    /*! \brief How many calls have been left unanswered since then. */
    int unanswered() const
    {
        return m_unanswered.count();
    }

    /*! \brief Replies to the one at \a index of these calls, oldest first; may be repeated. */
    void replyTo(int index, const QString &values) const
    {
        g_autoptr(GVariant) body = parseValue(values);
        m_unanswered.at(index).reply(body);
    }

    /*! \brief The calls received so far, oldest first. */
    const QList<Call> &calls() const
    {
        return m_calls;
    }

    /*! \brief The arguments of the changes among them. */
    QStringList changes() const
    {
        QStringList changes;
        for (const Call &call : m_calls) {
            if (call.method == QLatin1String("ChangeConfiguration"))
                changes.append(call.arguments);
        }
        return changes;
    }

    /*! \brief Announces a change at \a path; see RawService::announceChange(). */
    void announceChange(const QString &path, const QString &arguments = QString())
    {
        g_autoptr(GVariant) values = arguments.isEmpty() ? nullptr : parseValue(arguments);
        m_service->announceChange(path, values);
    }

private:
    void receive(const MethodCall &call)
    {
        g_autofree gchar *arguments = g_variant_print(call.arguments(), TRUE);
        m_calls.append({call.path(), call.method(), QString::fromUtf8(arguments)});
        // A copy: the handler may set another one.
        const Handler handler = m_handler;
        handler(call);
    }

    QString m_address;
    QList<Call> m_calls;
    QList<MethodCall> m_unanswered;
    Handler m_handler;
    std::optional<RawService> m_service;
};

} // namespace Tarnvel::Testing
