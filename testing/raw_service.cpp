// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "raw_service.h"

#include "application_interface.h"
#include "bus_connection.h"
#include "endpoint.h"

#include <utility>

namespace Tarnvel::Testing {

namespace {

using WeakHandler = std::weak_ptr<RawService::Handler>;
using Task = std::function<void()>;

gboolean runTask(gpointer task)
{
    (*static_cast<Task *>(task))();
    return G_SOURCE_REMOVE;
}

template<typename Type>
void deleteAs(gpointer data)
{
    delete static_cast<Type *>(data);
}

bool isForApplication(GDBusMessage *message)
{
    return g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL
        && g_strcmp0(g_dbus_message_get_interface(message), DBus::applicationInterface) == 0;
}

// Runs in GDBus's own thread, before GDBus looks for an exported object. Exported objects describe
// themselves, but cannot handle calls: not all paths are known in advance, and GDBus requires the
// right signature and exactly one reply.
GDBusMessage *filterMessage(GDBusConnection *connection, GDBusMessage *message, gboolean isIncoming,
                            gpointer data)
{
    if (!isIncoming || !isForApplication(message))
        return message;
    const Task task = [weakHandler = *static_cast<WeakHandler *>(data),
                       call = MethodCall(connection, message)] {
        if (const auto handler = weakHandler.lock())
            (*handler)(call);
    };
    g_main_context_invoke_full(nullptr, G_PRIORITY_DEFAULT, runTask, new Task(task),
                               deleteAs<Task>);
    g_object_unref(message);
    return nullptr;
}

GDBusInterfaceInfo *interfaceInfo()
{
    static GDBusNodeInfo *const node = g_dbus_node_info_new_for_xml(DBus::applicationInterfaceXml,
                                                                    nullptr);
    return node->interfaces[0];
}

} // namespace

RawService::RawService(Handler handler, LossHandler lossHandler)
    : m_handler(std::make_shared<Handler>(std::move(handler))),
      m_lossHandler(std::move(lossHandler))
{
}

RawService::~RawService()
{
    close();
}

QString RawService::open(const QString &address)
{
    g_autoptr(GError) error = nullptr;
    m_connection = openConnection(address, &error);
    if (m_connection) {
        g_signal_connect(m_connection, "closed", G_CALLBACK(receiveLoss), this);
        g_dbus_connection_add_filter(m_connection, filterMessage, new WeakHandler(m_handler),
                                     deleteAs<WeakHandler>);
        exportObjects();
        if (ownName(&error))
            return {};
    }
    close();
    return QString::fromUtf8(error->message);
}

void RawService::close()
{
    if (!m_connection)
        return;
    g_signal_handlers_disconnect_by_data(m_connection, this);
    closeConnection(m_connection);
    g_clear_object(&m_connection);
    m_exportedIds.clear();
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

void RawService::setDescribedObjects(const QStringList &paths)
{
    if (paths == m_describedPaths)
        return;
    m_describedPaths = paths;
    if (m_connection)
        exportObjects();
}

void RawService::receiveLoss(GDBusConnection *, gboolean, GError *, gpointer service)
{
    auto *const self = static_cast<RawService *>(service);
    self->close();
    if (self->m_lossHandler)
        self->m_lossHandler();
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

void RawService::exportObjects()
{
    for (const guint id : qAsConst(m_exportedIds))
        g_dbus_connection_unregister_object(m_connection, id);
    m_exportedIds.clear();
    for (const QString &path : qAsConst(m_describedPaths))
        m_exportedIds.append(
            g_dbus_connection_register_object(m_connection, path.toUtf8().constData(),
                                              interfaceInfo(), nullptr, nullptr, nullptr, nullptr));
}

} // namespace Tarnvel::Testing
