// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "payloads.h"

#include <QtCore/QByteArray>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace Tarnvel::Benchmarks {

namespace {

constexpr int levels = 6;
constexpr int devices = 2000;

void add(GVariantBuilder &entries, const QByteArray &key, GVariant *value)
{
    g_variant_builder_add(&entries, "{sv}", key.constData(), value);
}

GVariant *parse(const char *text)
{
    g_autoptr(GError) error = nullptr;
    GVariant *value = g_variant_parse(nullptr, text, nullptr, nullptr, &error);
    if (!value)
        qFatal("%s: %s", text, error->message);
    return value;
}

GVariant *makeSmall()
{
    return parse("{'theme': <'dark'>, 'language': <'de_DE'>, 'volume': <70>, 'muted': <false>,"
                 " 'server': <'https://configuration.example.org/v1'>, 'port': <8443>,"
                 " 'timeout': <30>, 'recent': <['report.pdf', 'plan.odt', 'notes.txt']>,"
                 " 'geometry': <[120, 80, 1280, 800]>,"
                 " 'proxy': <{'host': <'proxy.example.org'>}>}");
}

// Each level has six plain values and two levels below it.
GVariant *makeLarge(int level = 1)
{
    GVariantBuilder entries;
    g_variant_builder_init(&entries, G_VARIANT_TYPE_VARDICT);
    add(entries, "title", g_variant_new_string("A page of the settings"));
    add(entries, "enabled", g_variant_new_boolean(TRUE));
    add(entries, "maximum", g_variant_new_int32(4096));
    add(entries, "default", g_variant_new_int32(level));
    add(entries, "sizes", parse("[640, 800, 1024]"));
    add(entries, "choices", parse("['never', 'ask', 'always']"));
    if (level < levels) {
        add(entries, "general", makeLarge(level + 1));
        add(entries, "advanced", makeLarge(level + 1));
    }
    return g_variant_builder_end(&entries);
}

GVariant *makeFleet()
{
    GVariant *device = g_variant_ref_sink(
        parse("{'name': <'Till at the entrance'>, 'site': <'Hamburg'>, 'address': <'192.0.2.17'>,"
              " 'port': <9100>, 'enabled': <true>, 'interval': <60>, 'retries': <3>,"
              " 'roles': <['till', 'scanner']>, 'windows': <[22, 23, 0, 1]>}"));
    GVariantBuilder entries;
    g_variant_builder_init(&entries, G_VARIANT_TYPE_VARDICT);
    for (int number = 0; number < devices; ++number)
        add(entries, QByteArray("device-").append(QByteArray::number(10000 + number)), device);
    g_variant_unref(device);
    return g_variant_builder_end(&entries);
}

GVariant *makeMixedValue(int number)
{
    switch (number % 8) {
    case 0:
    case 1:
        return g_variant_new_string("a text of common length");
    case 2:
    case 3:
        return g_variant_new_int32(number);
    case 4:
        return g_variant_new_boolean(number % 16 == 4);
    case 5:
        return parse("[1, 2, 3, 4]");
    case 6:
        return parse("['one', 'two', 'three']");
    default:
        return parse("{'host': <'example.org'>, 'port': <443>}");
    }
}

GVariant *makeMixed(int count, bool isSorted)
{
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    if (!isSorted)
        std::shuffle(numbers.begin(), numbers.end(), std::mt19937());
    GVariantBuilder entries;
    g_variant_builder_init(&entries, G_VARIANT_TYPE_VARDICT);
    for (const int number : numbers) {
        const QByteArray key = QByteArray("setting-").append(QByteArray::number(1000000 + number));
        add(entries, key, makeMixedValue(number));
    }
    return g_variant_builder_end(&entries);
}

GVariant *makeList(int count)
{
    std::vector<gint32> items(static_cast<std::size_t>(count));
    std::iota(items.begin(), items.end(), 0);
    GVariantBuilder entries;
    g_variant_builder_init(&entries, G_VARIANT_TYPE_VARDICT);
    add(entries, "list",
        g_variant_new_fixed_array(G_VARIANT_TYPE_INT32, items.data(), items.size(),
                                  sizeof(gint32)));
    return g_variant_builder_end(&entries);
}

int countEntries(GVariant *dictionary)
{
    int count = 0;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, dictionary);
    GVariant *value = nullptr;
    while (g_variant_iter_loop(&iterator, "{&sv}", nullptr, &value)) {
        ++count;
        if (g_variant_is_of_type(value, G_VARIANT_TYPE_VARDICT))
            count += countEntries(value);
    }
    return count;
}

} // namespace

QStringList payloadNames()
{
    QStringList names {QStringLiteral("small"), QStringLiteral("large"), QStringLiteral("fleet")};
    for (const int count : {10, 100, 1000, 20000, 100000}) {
        for (const char *kind : {"mixed_", "unsorted_", "list_"})
            names.append(QLatin1String(kind) + QString::number(count));
    }
    return names;
}

GVariant *makePayload(const QString &name)
{
    if (name == QLatin1String("small"))
        return makeSmall();
    if (name == QLatin1String("large"))
        return makeLarge();
    if (name == QLatin1String("fleet"))
        return makeFleet();
    const int count = name.section(QLatin1Char('_'), 1).toInt();
    if (name.startsWith(QLatin1String("list_")))
        return makeList(count);
    return makeMixed(count, name.startsWith(QLatin1String("mixed_")));
}

int countEntries(const QString &name)
{
    g_autoptr(GVariant) payload = g_variant_ref_sink(makePayload(name));
    return countEntries(payload);
}

} // namespace Tarnvel::Benchmarks
