// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// Runs what costs, so that callgrind can count its instructions: to be run under callgrind, with
// --instr-atstart=no. Each measurement makes a dump of its own, named "<what>/<times>": what was
// measured, and how often it was done.

#include "configuration_manager_p.h"
#include "configuration_p.h"
#include "fixture.h"
#include "payloads.h"
#include "references/by_hand.h"
#include "references/step_by_step_lookup.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMetaType>

#include <valgrind/callgrind.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Benchmarks;

namespace {

template<typename Action>
void measure(const QString &what, int times, Action action)
{
    // What is set up at the first use is no part of the cost.
    action();
    const QByteArray name = QStringLiteral("%1/%2").arg(what).arg(times).toUtf8();
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    for (int time = 0; time < times; ++time)
        action();
    CALLGRIND_DUMP_STATS_AT(name.constData());
    CALLGRIND_STOP_INSTRUMENTATION;
}

void measureWire(const QString &shape, int times)
{
    const QVariant received = receive(shape);
    const auto configuration = qdbus_cast<Configuration>(received);
    measure(QStringLiteral("decode.") + shape, times,
            [&received] { qdbus_cast<Configuration>(received); });
    measure(QStringLiteral("encode.") + shape, times, [&configuration] {
        QDBusArgument argument;
        argument << configuration;
    });
}

void measureWireByHand(const QString &shape, int times)
{
    const QVariant received = receive(shape);
    const QVariantMap map = readByHand(received.value<QDBusArgument>());
    measure(QStringLiteral("decode_by_hand.") + shape, times,
            [&received] { readByHand(received.value<QDBusArgument>()); });
    measure(QStringLiteral("encode_by_hand.") + shape, times, [&map] {
        QDBusArgument argument;
        argument << map;
    });
}

void measureLookup(const QString &what, const Configuration &configuration, const QString &path)
{
    constexpr int times = 10;
    if (configuration.getByXpath(path) != getByXpathPlainly(configuration, path)
        || !configuration.getByXpath(path).isValid())
        qFatal("the lookups of %s differ", qUtf8Printable(path));
    measure(QStringLiteral("lookup.") + what, times,
            [&configuration, &path] { configuration.getByXpath(path); });
    measure(QStringLiteral("lookup_plainly.") + what, times,
            [&configuration, &path] { getByXpathPlainly(configuration, path); });
}

void measureLookups()
{
    for (const int count : {10, 1000, 100000}) {
        const QString shape = QStringLiteral("list_%1").arg(count);
        measureLookup(QStringLiteral("index_of_%1").arg(count),
                      qdbus_cast<Configuration>(receive(shape)), QStringLiteral("list[7]"));
    }
    const auto large = qdbus_cast<Configuration>(receive(QStringLiteral("large")));
    QString path = QStringLiteral("maximum");
    for (int depth = 1; depth <= 6; ++depth) {
        measureLookup(QStringLiteral("depth_%1").arg(depth), large, path);
        path.prepend(QStringLiteral("general/"));
    }
}

} // namespace

int main(int argc, char *argv[])
{
    Bench bench(argc, argv);
    qRegisterMetaType<Configuration>();
    qDBusRegisterMetaType<Configuration>();
    for (const char *shape : {"small", "large", "fleet", "mixed_10", "mixed_100", "mixed_1000",
                              "mixed_20000", "unsorted_1000"}) {
        const int times = countEntries(shape) < 1000 ? 100 : 1;
        measureWire(shape, times);
        measureWireByHand(shape, times);
    }
    // What these cost by hand takes long, and nobody asks for it.
    for (const char *shape : {"mixed_100000", "unsorted_100000"})
        measureWire(shape, 1);
    measureLookups();
}
