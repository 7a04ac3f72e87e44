// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// What the library takes: callgrind counts the instructions.

#include "configuration_manager_p.h"
#include "configuration_p.h"
#include "fixture.h"
#include "measure.h"
#include "payloads.h"
#include "references/by_hand.h"
#include "references/step_by_step_lookup.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMetaType>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Benchmarks;

namespace {

void measureWire(const QString &payload, int times)
{
    const QVariant received = receive(payload);
    const auto configuration = qdbus_cast<Configuration>(received);
    measure(QStringLiteral("decode.") + payload, times,
            [&received] { qdbus_cast<Configuration>(received); });
    measure(QStringLiteral("encode.") + payload, times, [&configuration] {
        QDBusArgument argument;
        argument << configuration;
    });
}

void measureWireByHand(const QString &payload, int times)
{
    const QVariant received = receive(payload);
    const QVariantMap map = readByHand(received.value<QDBusArgument>());
    measure(QStringLiteral("decode_by_hand.") + payload, times,
            [&received] { readByHand(received.value<QDBusArgument>()); });
    measure(QStringLiteral("encode_by_hand.") + payload, times, [&map] {
        QDBusArgument argument;
        argument << map;
    });
}

void measureLookup(const QString &what, const Configuration &configuration, const QString &path)
{
    constexpr int times = 10;
    if (configuration.getByXpath(path) != getByXpathStepByStep(configuration, path)
        || !configuration.getByXpath(path).isValid())
        qFatal("the lookups of %s differ", qUtf8Printable(path));
    measure(QStringLiteral("lookup.") + what, times,
            [&configuration, &path] { configuration.getByXpath(path); });
    measure(QStringLiteral("lookup_step_by_step.") + what, times,
            [&configuration, &path] { getByXpathStepByStep(configuration, path); });
}

void measureLookups()
{
    for (const int count : {10, 1000, 100000}) {
        const QString payload = QStringLiteral("list_%1").arg(count);
        measureLookup(QStringLiteral("index_of_%1").arg(count),
                      qdbus_cast<Configuration>(receive(payload)), QStringLiteral("list[7]"));
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
    BenchmarkFixture fixture(argc, argv);
    qRegisterMetaType<Configuration>();
    qDBusRegisterMetaType<Configuration>();
    for (const char *payload : {"small", "large", "fleet", "mixed_10", "mixed_100", "mixed_1000",
                                "mixed_20000", "unsorted_1000"}) {
        const int times = countEntries(payload) < 1000 ? 100 : 1;
        measureWire(payload, times);
        measureWireByHand(payload, times);
    }
    // By hand these take long, and nothing is compared with them.
    for (const char *payload : {"mixed_100000", "unsorted_100000"})
        measureWire(payload, 1);
    measureLookups();
}
