// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_reader.h"

#include "bus_limits.h"
#include "dbus_validation.h"
#include "json_reader.h"

#include <algorithm>

namespace Tarnvel::Sandbox {

namespace {

const QLatin1String textKey(gvariantTextKey);

Variant readScalar(const Tools::JsonValue &value, Tools::Diagnostics *diagnostics)
{
    switch (value.kind) {
    case Tools::JsonValue::Boolean:
        return adopt(g_variant_new_boolean(value.isTrue));
    case Tools::JsonValue::Number:
        return adopt(g_variant_new_int32(Tools::readInt32(&value, diagnostics)));
    case Tools::JsonValue::String:
        return adopt(g_variant_new_string(value.text.toUtf8().constData()));
    default:
        Tools::addUnexpected(value, QStringLiteral("a boolean, an integer or a string"),
                             diagnostics);
        return {};
    }
}

// Is never too deep: the most configurations inside one another leave room for one container.
static_assert(DBus::maximumContainerDepth % DBus::containersPerLevel >= 1);
Variant readArray(const Tools::JsonValue &list, Tools::Diagnostics *diagnostics)
{
    const QVector<Variant> items = readItems(list, diagnostics);
    GVariantBuilder builder;
    g_variant_builder_init(&builder,
                           items.isEmpty() ? G_VARIANT_TYPE_STRING_ARRAY : G_VARIANT_TYPE_ARRAY);
    for (const Variant &item : items)
        g_variant_builder_add_value(&builder, item.get());
    return adopt(g_variant_builder_end(&builder));
}

bool isCarried(const Tools::JsonValue &value, const QString &violation,
               Tools::Diagnostics *diagnostics)
{
    if (!violation.isNull())
        diagnostics->add(value.offset, violation);
    return violation.isNull();
}

Variant readText(const Tools::JsonValue &object, int depth, Tools::Diagnostics *diagnostics)
{
    Tools::ObjectReader reader(object, diagnostics);
    const Tools::JsonValue &text = *reader.require(textKey);
    reader.addUnknownMembers(QStringLiteral("a value with \"%1\"").arg(textKey));
    const QByteArray string = Tools::readString(&text, diagnostics).toUtf8();
    if (text.kind != Tools::JsonValue::String)
        return {};
    g_autoptr(GError) error = nullptr;
    GVariant *const parsed = g_variant_parse(nullptr, string.constData(), nullptr, nullptr, &error);
    if (!parsed) {
        diagnostics->add(
            text.offset,
            QStringLiteral("invalid GVariant text: %1").arg(QString::fromUtf8(error->message)));
        return {};
    }
    const Variant value = adopt(parsed);
    return isCarried(text, dbusViolation(parsed, depth), diagnostics) ? inOrder(value) : Variant();
}

Variant readEntry(const Tools::JsonMember &member, int depth, Tools::Diagnostics *diagnostics);
Variant reuseEntry(const Tools::JsonMember &member, int depth, Tools::Diagnostics *diagnostics,
                   EntryCache *cache);

// The depth is the number of containers around the value. The cache, if any, is for its entries.
Variant readValue(const Tools::JsonValue &value, int depth, Tools::Diagnostics *diagnostics,
                  EntryCache *cache = nullptr)
{
    if (value.kind == Tools::JsonValue::List)
        return readArray(value, diagnostics);
    if (value.kind != Tools::JsonValue::Object)
        return readScalar(value, diagnostics);
    if (value.member(textKey))
        return readText(value, depth, diagnostics);
    const int innerDepth = depth + DBus::containersPerLevel;
    if (!isCarried(value, depthViolation(innerDepth), diagnostics))
        return {};
    // Not Entries, which would allocate a node for each.
    std::vector<std::pair<QString, Variant>> entries;
    for (const Tools::JsonMember &member : value.members) {
        const Variant entry = cache ? reuseEntry(member, innerDepth, diagnostics, cache)
                                    : readEntry(member, innerDepth, diagnostics);
        if (entry)
            entries.emplace_back(member.name, entry);
    }
    const auto isBefore = [](const auto &left, const auto &right) {
        return left.first < right.first;
    };
    // They often are in order, and then sorting costs more than anything else here.
    if (!std::is_sorted(entries.begin(), entries.end(), isBefore))
        std::sort(entries.begin(), entries.end(), isBefore);
    std::vector<Variant> sorted;
    sorted.reserve(entries.size());
    for (const auto &entry : entries)
        sorted.push_back(entry.second);
    return joinEntries(sorted);
}

Variant readEntry(const Tools::JsonMember &member, int depth, Tools::Diagnostics *diagnostics)
{
    const Variant value = readValue(member.value, depth, diagnostics);
    return value ? makeEntry(member.name, value) : Variant();
}

Variant reuseEntry(const Tools::JsonMember &member, int depth, Tools::Diagnostics *diagnostics,
                   EntryCache *cache)
{
    const QByteArray text = diagnostics->text(member.offset, member.value.end);
    Variant entry = cache->reuse(text);
    if (!entry) {
        entry = readEntry(member, depth, diagnostics);
        cache->add(text, entry);
    }
    return entry;
}

} // namespace

Variant readConfiguration(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics,
                          EntryCache *cache)
{
    if (!value)
        return {};
    if (value->kind != Tools::JsonValue::Object) {
        Tools::addUnexpected(*value, Tools::describe(Tools::JsonValue::Object), diagnostics);
        return {};
    }
    const Variant configuration = readValue(*value, 0, diagnostics, cache);
    if (!configuration)
        return {};
    if (!g_variant_is_of_type(configuration.get(), G_VARIANT_TYPE_VARDICT))
        diagnostics->add(value->offset, QStringLiteral("expected a value of type \"a{sv}\""));
    else
        checkSize(configuration, value->offset, diagnostics);
    return configuration;
}

void checkSize(const Variant &configuration, int offset, Tools::Diagnostics *diagnostics)
{
    if (isTooLarge(configuration))
        diagnostics->add(offset,
                         QStringLiteral("D-Bus limits a message to %1 MiB")
                             .arg(DBus::maximumMessageSize / 1024 / 1024));
}

QVector<Variant> readItems(const Tools::JsonValue &list, Tools::Diagnostics *diagnostics)
{
    QVector<Variant> items;
    for (const Tools::JsonValue &item : list.items) {
        const Tools::JsonValue::Kind kind = list.items.front().kind;
        if (item.kind != kind)
            Tools::addUnexpected(
                item, QStringLiteral("%1 like the first item").arg(Tools::describe(kind)),
                diagnostics);
        else if (const Variant value = readScalar(item, diagnostics))
            items.append(value);
    }
    return items;
}

} // namespace Tarnvel::Sandbox
