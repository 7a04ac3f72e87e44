// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_manager_p.h"
#include "description.h"
#include "generated_dictionary.h"
#include "message_log.h"
#include "qt_version.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>

#include <fcntl.h>
#include <gio/gunixfdlist.h>
#include <limits>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

// GDBus's thread reads this while receive() waits for the reply.
GVariant *replyArgument = nullptr;
GDBusConnection *callerConnection = nullptr;

// Runs in GDBus's own thread, so that it replies although the caller blocks.
GDBusMessage *reply(GDBusConnection *connection, GDBusMessage *message, gboolean isIncoming,
                    gpointer /*data*/)
{
    static const int file = open("/dev/null", O_RDONLY | O_CLOEXEC);
    static GUnixFDList *const files = g_unix_fd_list_new_from_array(&file, 1);
    if (!isIncoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
        return message;
    GDBusMessage *const reply = g_dbus_message_new_method_reply(message);
    g_dbus_message_set_body(reply, g_variant_new_tuple(&replyArgument, 1));
    g_dbus_message_set_unix_fd_list(reply, files);
    g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
    g_object_unref(reply);
    g_object_unref(message);
    return nullptr;
}

gboolean accept(GDBusServer * /*server*/, GDBusConnection *connection, gpointer /*data*/)
{
    callerConnection = G_DBUS_CONNECTION(g_object_ref(connection));
    g_dbus_connection_add_filter(connection, reply, nullptr, nullptr);
    return TRUE;
}

QDBusConnection connectToPeer()
{
    static const QTemporaryDir directory;
    const QByteArray address = "unix:path=" + directory.filePath("socket").toUtf8();
    g_autofree gchar *guid = g_dbus_generate_guid();
    static GDBusServer *const server = g_dbus_server_new_sync(
        address.constData(), G_DBUS_SERVER_FLAGS_NONE, guid, nullptr, nullptr, nullptr);
    g_signal_connect(server, "new-connection", G_CALLBACK(accept), nullptr);
    g_dbus_server_start(server);
    QDBusConnection caller = QDBusConnection::connectToPeer(QString::fromUtf8(address), "peer");
    while (callerConnection == nullptr)
        g_main_context_iteration(nullptr, TRUE);
    return caller;
}

// Returns \a value as Qt D-Bus receives it in the reply to a call, which goes through a socket to a
// D-Bus peer in this process, without a bus.
QVariant receive(GVariant *value)
{
    static const QDBusConnection caller = connectToPeer();
    replyArgument = value;
    const QDBusMessage reply = caller.call(QDBusMessage::createMethodCall({}, "/", {}, "Get"),
                                           QDBus::Block, std::numeric_limits<int>::max());
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 1)
        qFatal("the value did not arrive: %s", qUtf8Printable(reply.errorMessage()));
    return reply.arguments().constFirst();
}

// The model: reads a dictionary as the library should, without its code for reading.
Configuration configurationFrom(GVariant *dictionary, QStringList &warnings);

Value child(GVariant *container, gsize index)
{
    return {g_variant_get_child_value(container, index), g_variant_unref};
}

// When QString reads UTF-8, it leaves out a byte order mark at the beginning.
QString stringFrom(GVariant *value)
{
    glong length = 0;
    g_autofree gunichar2 *units = g_utf8_to_utf16(g_variant_get_string(value, nullptr), -1, nullptr,
                                                  &length, nullptr);
    const QString text(reinterpret_cast<const QChar *>(units), int(length));
    return text.startsWith(QChar(QChar::ByteOrderMark)) ? text.mid(1) : text;
}

template<typename Item, typename Convert>
QList<Item> listFrom(GVariant *array, Convert convert)
{
    QList<Item> items;
    for (gsize i = 0; i < g_variant_n_children(array); ++i)
        items.append(Item(convert(child(array, i).get())));
    return items;
}

// What a configuration stores for \a value; invalid if it stores nothing.
QVariant storedFor(GVariant *value, QStringList &warnings)
{
    const QByteArray signature = g_variant_get_type_string(value);
    if (signature == "b")
        return g_variant_get_boolean(value) != 0;
    if (signature == "i")
        return g_variant_get_int32(value);
    if (signature == "s")
        return stringFrom(value);
    if (signature == "as")
        return QStringList(listFrom<QString>(value, stringFrom));
    if (signature.startsWith("a{"))
        return QVariant::fromValue(configurationFrom(value, warnings));
    if (!signature.startsWith('a') || signature == "ay" || g_variant_n_children(value) == 0)
        return {};
    if (signature == "ai")
        return QVariant::fromValue(listFrom<int>(value, g_variant_get_int32));
    if (signature == "ab")
        return QVariant::fromValue(listFrom<bool>(value, g_variant_get_boolean));
    static const QMap<QByteArray, QString> elementTypeNames {
        {"n", "short"},      {"q", "ushort"}, {"u", "uint"},         {"x", "qlonglong"},
        {"t", "qulonglong"}, {"d", "double"}, {"as", "QStringList"}, {"ay", "QByteArray"}};
    const QString name = elementTypeNames.value(signature.mid(1), sharedTypeName());
    warnings.append(QLatin1String("Unsupported type for arrays:  ") + name);
    return {};
}

Configuration configurationFrom(GVariant *dictionary, QStringList &warnings)
{
    QMap<QString, QVariant> entries;
    const QByteArray type = g_variant_get_type_string(dictionary);
    const bool isConfiguration = type == "a{sv}" || type == "a{ov}" || type == "a{gv}";
    for (gsize i = 0; isConfiguration && i < g_variant_n_children(dictionary); ++i) {
        const Value entry = child(dictionary, i);
        const QVariant stored = storedFor(child(child(entry.get(), 1).get(), 0).get(), warnings);
        if (stored.isValid())
            entries.insert(stringFrom(child(entry.get(), 0).get()), stored);
    }
    return makeConfiguration(entries);
}

} // namespace

// NOLINTNEXTLINE(readability-non-const-parameter)
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    qDBusRegisterMetaType<Configuration>();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzerInput input(data, size);
    const Value dictionary = generateDictionary(input);
    const QVariant received = receive(dictionary.get());
    MessageLog log;
    const QString configuration = describe(qdbus_cast<Configuration>(received));
    const QStringList actual = QStringList(configuration) + log.take();
    QStringList expectedWarnings;
    const QString expectedValue = describe(configurationFrom(dictionary.get(), expectedWarnings));
    const QStringList expected = QStringList(expectedValue) + expectedWarnings;
    if (actual != expected) {
        g_autofree gchar *text = g_variant_print(dictionary.get(), TRUE);
        fail(QString::fromUtf8(text), actual, expected);
    }
    return 0;
}
