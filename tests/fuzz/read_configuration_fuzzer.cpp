// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_manager_p.h"
#include "configuration_p.h"
#include "dbus_peer.h"
#include "description.h"
#include "failure.h"
#include "generated_dictionary.h"
#include "message_log.h"

#include <QtCore/QCoreApplication>
#include <QtDBus/QDBusMetaType>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

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

QLatin1String elementTypeName(const QByteArray &signature)
{
    static const QMap<QByteArray, const char *> names {
        {"n", "short"},      {"q", "ushort"}, {"u", "uint"},         {"x", "qlonglong"},
        {"t", "qulonglong"}, {"d", "double"}, {"as", "QStringList"}, {"ay", "QByteArray"}};
    return QLatin1String(names.value(signature, QVariant::typeToName(QVariant::UserType)));
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
    warnings.append(QLatin1String("Unsupported type for arrays:  ")
                    + elementTypeName(signature.mid(1)));
    return {};
}

Configuration configurationFrom(GVariant *dictionary, QStringList &warnings)
{
    QMap<QString, QVariant> entries;
    const bool isConfiguration = g_variant_is_of_type(dictionary, G_VARIANT_TYPE_VARDICT) != 0;
    for (gsize i = 0; isConfiguration && i < g_variant_n_children(dictionary); ++i) {
        const Value entry = child(dictionary, i);
        const QVariant stored = storedFor(child(child(entry.get(), 1).get(), 0).get(), warnings);
        if (stored.isValid())
            entries.insert(stringFrom(child(entry.get(), 0).get()), stored);
    }
    return Configuration(new ConfigurationPrivate(entries));
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
