// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "raw_service.h"

#include "bus_connection.h"
#include "endpoint.h"

#include <gio/gunixfdlist.h>
#include <utility>

namespace Tarnvel::Testing {

namespace {

template<typename Object>
std::shared_ptr<Object> share(Object *object)
{
    return {static_cast<Object *>(g_object_ref(object)), g_object_unref};
}

struct Delivery
{
    std::weak_ptr<RawService::Handler> handler;
    MethodCall call;
};

gboolean deliver(gpointer data)
{
    const auto *delivery = static_cast<Delivery *>(data);
    if (const auto handler = delivery->handler.lock())
        (*handler)(delivery->call);
    return G_SOURCE_REMOVE;
}

// An error if the bus does not answer in time.
GVariant *callBus(GDBusConnection *connection, const char *method, GVariant *arguments,
                  const char *answerType, GError **error)
{
    return g_dbus_connection_call_sync(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus", method, arguments,
                                       G_VARIANT_TYPE(answerType), G_DBUS_CALL_FLAGS_NONE,
                                       busTimeoutMs, nullptr, error);
}

bool isForApplication(GDBusMessage *message)
{
    return g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL
        && g_strcmp0(g_dbus_message_get_interface(message), DBus::applicationInterface) == 0;
}

// Runs in GDBus's own thread. Exported objects would not do: their paths are not known beforehand,
// and GDBus would insist on the right signature and on exactly one answer.
GDBusMessage *filterMessage(GDBusConnection *connection, GDBusMessage *message, gboolean isIncoming,
                            gpointer handler)
{
    if (!isIncoming || !isForApplication(message))
        return message;
    auto *delivery = new Delivery {*static_cast<std::weak_ptr<RawService::Handler> *>(handler),
                                   MethodCall(connection, message)};
    g_main_context_invoke_full(nullptr, G_PRIORITY_DEFAULT, deliver, delivery,
                               [](gpointer data) { delete static_cast<Delivery *>(data); });
    g_object_unref(message);
    return nullptr;
}

} // namespace

MethodCall::MethodCall(GDBusConnection *connection, GDBusMessage *message)
    : m_connection(share(connection)), m_message(share(message))
{
}

QString MethodCall::path() const
{
    return QString::fromUtf8(g_dbus_message_get_path(m_message.get()));
}

QString MethodCall::method() const
{
    return QString::fromUtf8(g_dbus_message_get_member(m_message.get()));
}

QString MethodCall::sender() const
{
    return QString::fromUtf8(g_dbus_message_get_sender(m_message.get()));
}

Caller MethodCall::caller() const
{
    const char *const name = g_dbus_message_get_sender(m_message.get());
    g_autoptr(GVariant) answer = callBus(m_connection.get(), "GetConnectionCredentials",
                                         g_variant_new("(s)", name), "(a{sv})", nullptr);
    if (!answer)
        return {};
    g_autoptr(GVariant) credentials = g_variant_get_child_value(answer, 0);
    Caller caller;
    guint32 number = 0;
    if (g_variant_lookup(credentials, "ProcessID", "u", &number))
        caller.processId = number;
    if (g_variant_lookup(credentials, "UnixUserID", "u", &number))
        caller.userId = number;
    return caller;
}

GVariant *MethodCall::arguments() const
{
    static GVariant *const none = g_variant_ref_sink(g_variant_new_tuple(nullptr, 0));
    GVariant *const body = g_dbus_message_get_body(m_message.get());
    return body ? body : none;
}

void MethodCall::reply(GVariant *values, const QVector<int> &files) const
{
    GDBusMessage *answer = g_dbus_message_new_method_reply(m_message.get());
    g_dbus_message_set_body(answer, values);
    if (!files.isEmpty()) {
        g_autoptr(GUnixFDList) list = g_unix_fd_list_new();
        for (const int file : files)
            g_unix_fd_list_append(list, file, nullptr);
        g_dbus_message_set_unix_fd_list(answer, list);
    }
    send(answer);
}

void MethodCall::replyError(const QString &name, const QString &message) const
{
    send(g_dbus_message_new_method_error_literal(m_message.get(), name.toUtf8().constData(),
                                                 message.toUtf8().constData()));
}

void MethodCall::send(GDBusMessage *answer) const
{
    // A caller or a bus that has gone away no longer wants the answer.
    g_dbus_connection_send_message(m_connection.get(), answer, G_DBUS_SEND_MESSAGE_FLAGS_NONE,
                                   nullptr, nullptr);
    g_object_unref(answer);
}

RawService::RawService(Handler handler, LossHandler lossHandler)
    : m_handler(std::make_shared<Handler>(std::move(handler))),
      m_lossHandler(std::move(lossHandler))
{
}

RawService::~RawService()
{
    close();
}

bool RawService::open(const QString &address)
{
    g_autoptr(GError) error = nullptr;
    m_connection = openConnection(address, &error);
    if (m_connection) {
        g_signal_connect(m_connection, "closed", G_CALLBACK(receiveLoss), this);
        receiveCalls();
        if (ownName(&error))
            return true;
    }
    m_errorString = QString::fromUtf8(error->message);
    close();
    return false;
}

void RawService::close()
{
    if (!m_connection)
        return;
    g_signal_handlers_disconnect_by_data(m_connection, this);
    closeConnection(m_connection);
    g_clear_object(&m_connection);
}

bool RawService::isOpen() const
{
    return m_connection;
}

void RawService::announceChange(const QString &path, GVariant *arguments)
{
    if (!m_connection) {
        if (arguments)
            g_variant_unref(g_variant_ref_sink(arguments));
        return;
    }
    g_dbus_connection_emit_signal(m_connection, nullptr, path.toUtf8().constData(),
                                  DBus::applicationInterface, DBus::configurationChangedSignal,
                                  arguments, nullptr);
}

QString RawService::errorString() const
{
    return m_errorString;
}

void RawService::receiveLoss(GDBusConnection *, gboolean, GError *, gpointer service)
{
    auto *const self = static_cast<RawService *>(service);
    self->close();
    if (self->m_lossHandler)
        self->m_lossHandler();
}

void RawService::receiveCalls()
{
    g_dbus_connection_add_filter(
        m_connection, filterMessage, new std::weak_ptr<Handler>(m_handler),
        [](gpointer handler) { delete static_cast<std::weak_ptr<Handler> *>(handler); });
}

bool RawService::ownName(GError **error)
{
    constexpr guint32 doNotQueue = 4;
    constexpr guint32 primaryOwner = 1;
    g_autoptr(GVariant)
        result = callBus(m_connection, "RequestName",
                         g_variant_new("(su)", DBus::serviceName, doNotQueue), "(u)", error);
    if (!result)
        return false;
    guint32 outcome = 0;
    g_variant_get(result, "(u)", &outcome);
    if (outcome == primaryOwner)
        return true;
    g_set_error(error, G_IO_ERROR, G_IO_ERROR_EXISTS, "%s is owned by another connection",
                DBus::serviceName);
    return false;
}

} // namespace Tarnvel::Testing
