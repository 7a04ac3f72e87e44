// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "variant.h"

#include "bus_limits.h"
#include "text.h"

#include <gio/gio.h>

namespace Tarnvel::Sandbox {

namespace {

// The longest name that a bus gives a connection.
constexpr char longestName[] = ":1.2147483647";

bool isConfiguration(GVariant *value)
{
    return g_variant_is_of_type(value, G_VARIANT_TYPE_VARDICT);
}

// Not g_variant_get_child(), which makes one block of the whole value first.
Variant childAt(GVariant *value, gsize index)
{
    return adopt(g_variant_get_child_value(value, index));
}

QString keyOf(const Variant &entry)
{
    return Tools::fromUtf8(g_variant_get_string(childAt(entry.get(), 0).get(), nullptr));
}

Variant contentOf(const Variant &entry)
{
    return childAt(childAt(entry.get(), 1).get(), 0);
}

// The position of the first key in the configuration that is not before this one.
gsize lowerBound(GVariant *configuration, const QString &key)
{
    gsize first = 0;
    gsize count = g_variant_n_children(configuration);
    while (count > 0) {
        const gsize half = count / 2;
        const bool isBefore = keyOf(childAt(configuration, first + half)) < key;
        first += isBefore ? half + 1 : 0;
        count = isBefore ? count - half - 1 : half;
    }
    return first;
}

Variant valueOf(GVariant *configuration, const QString &key)
{
    const gsize position = lowerBound(configuration, key);
    if (position == g_variant_n_children(configuration))
        return {};
    const Variant entry = childAt(configuration, position);
    return keyOf(entry) == key ? contentOf(entry) : Variant();
}

bool areEntriesEqual(const Variant &left, const Variant &right)
{
    return left.get() == right.get()
        || (areEqual(childAt(left.get(), 0), childAt(right.get(), 0))
            && areEqual(contentOf(left), contentOf(right)));
}

// g_variant_equal() would make a block of each first, which takes longer.
bool areConfigurationsEqual(GVariant *left, GVariant *right)
{
    const gsize count = g_variant_n_children(left);
    if (count != g_variant_n_children(right))
        return false;
    for (gsize index = 0; index < count; ++index) {
        if (!areEntriesEqual(childAt(left, index), childAt(right, index)))
            return false;
    }
    return true;
}

} // namespace

Variant adopt(GVariant *value)
{
    return {g_variant_take_ref(value), g_variant_unref};
}

// Not g_variant_new("{sv}", ...), which costs twice as much: there may be 100,000 entries.
Variant makeEntry(const QString &key, const Variant &value)
{
    return adopt(g_variant_new_dict_entry(g_variant_new_string(key.toUtf8().constData()),
                                          g_variant_new_variant(value.get())));
}

Variant joinEntries(const std::vector<Variant> &entries)
{
    std::vector<GVariant *> pointers;
    pointers.reserve(entries.size());
    for (const Variant &entry : entries)
        pointers.push_back(entry.get());
    return adopt(g_variant_new_array(G_VARIANT_TYPE("{sv}"), pointers.data(), pointers.size()));
}

Variant makeConfiguration(const Entries &entries)
{
    std::vector<Variant> made;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry)
        made.push_back(makeEntry(entry.key(), entry.value()));
    return joinEntries(made);
}

Entries entriesOf(GVariant *configuration)
{
    Entries entries;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, configuration);
    const gchar *key = nullptr;
    GVariant *content = nullptr;
    while (g_variant_iter_next(&iterator, "{&sv}", &key, &content))
        entries.insert(Tools::fromUtf8(key), inOrder(adopt(content)));
    return entries;
}

Variant inOrder(const Variant &value)
{
    return isConfiguration(value.get()) ? makeConfiguration(entriesOf(value.get())) : value;
}

Variant replaceValues(const Variant &configuration, const Entries &changes)
{
    if (changes.isEmpty())
        return configuration;
    std::vector<Variant> entries;
    entries.reserve(g_variant_n_children(configuration.get()));
    for (gsize index = 0; index < g_variant_n_children(configuration.get()); ++index)
        entries.push_back(childAt(configuration.get(), index));
    for (auto change = changes.begin(); change != changes.end(); ++change)
        entries.at(lowerBound(configuration.get(), change.key())) = makeEntry(change.key(),
                                                                              change.value());
    return joinEntries(entries);
}

QStringList settingKeys(const QString &path)
{
    const QStringList keys = path.split(QLatin1Char('/'));
    return keys.contains(QString()) ? QStringList() : keys;
}

Variant valueAt(const Variant &value, const QStringList &path)
{
    Variant current = value;
    for (const QString &key : path) {
        if (!current || !isConfiguration(current.get()))
            return {};
        current = valueOf(current.get(), key);
    }
    return current;
}

Variant valueAt(const Entries &entries, const QStringList &path)
{
    return valueAt(entries.value(path.first()), path.mid(1));
}

bool isTooLarge(const Variant &configuration)
{
    // A value is at most eight times as large in a message, which takes longer to create.
    if (g_variant_get_size(configuration.get()) < DBus::maximumMessageSize / 9)
        return false;
    g_autoptr(GDBusMessage) reply = g_dbus_message_new();
    g_dbus_message_set_message_type(reply, G_DBUS_MESSAGE_TYPE_METHOD_RETURN);
    g_dbus_message_set_reply_serial(reply, 1);
    g_dbus_message_set_destination(reply, longestName);
    GVariant *const body = configuration.get();
    g_dbus_message_set_body(reply, g_variant_new_tuple(&body, 1));
    gsize size = 0;
    // A message that is too large for any bus cannot even be created.
    g_autofree guchar *message = g_dbus_message_to_blob(reply, &size, G_DBUS_CAPABILITY_FLAGS_NONE,
                                                        nullptr);
    return !message || size > DBus::maximumMessageSize;
}

bool areEqual(const Variant &left, const Variant &right)
{
    if (left.get() == right.get())
        return true;
    if (!left || !right)
        return false;
    if (isConfiguration(left.get()) && isConfiguration(right.get()))
        return areConfigurationsEqual(left.get(), right.get());
    return g_variant_equal(left.get(), right.get());
}

} // namespace Tarnvel::Sandbox
