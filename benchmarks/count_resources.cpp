// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// Prints, as lines "<name> <number>", the allocations and messages of requests and lookups, and the
// bytes that stay allocated.

#include "application.h"
#include "configuration_manager_p.h"
#include "fixture.h"
#include "heap.h"
#include "payloads.h"
#include "references/by_hand.h"
#include "traffic.h"

#include <QtCore/QEventLoop>
#include <QtDBus/QDBusArgument>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Benchmarks;

namespace {

template<typename Number>
void print(const QString &name, Number number)
{
    std::printf("%s %.10g\n", qUtf8Printable(name), static_cast<double>(number));
}

// The thread of Qt D-Bus allocates and frees at the same time, so a single count may be off by a
// few.
template<typename Action>
qint64 medianAllocations(Action action)
{
    constexpr int times = 101;
    std::vector<qint64> counts;
    for (int time = 0; time < times; ++time) {
        const qint64 before = readHeap().allocations;
        action();
        counts.push_back(readHeap().allocations - before);
    }
    std::nth_element(counts.begin(), counts.begin() + times / 2, counts.end());
    return counts[times / 2];
}

void request(ConfigurationManager &manager)
{
    QEventLoop loop;
    manager.getConfiguration([&loop](const Configuration &, const Error &error) {
        if (error)
            qFatal("%s", qUtf8Printable(error.message()));
        loop.quit();
    });
    loop.exec();
    // Deletes the watcher of the call.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void changeAndFollow(ConfigurationManager &manager)
{
    QEventLoop loop;
    int open = 2;
    const auto finish = [&loop, &open] {
        if (--open == 0)
            loop.quit();
    };
    QObject::connect(&manager, &ConfigurationManager::configurationChanged, &loop, finish);
    manager.changeConfiguration(Configuration(), [finish](const Error &) { finish(); });
    loop.exec();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void countStart(Traffic &traffic)
{
    const qint64 before = readHeap().allocations;
    ConfigurationManager &manager = *ConfigurationManager::instance();
    // When instance() returns, Qt D-Bus's thread is still sending. The reply to this request comes
    // after the replies to all of that.
    request(manager);
    print(QStringLiteral("allocations.instance_and_request"), readHeap().allocations - before);
    print(QStringLiteral("messages.instance_and_request"), traffic.take());
}

void countRequests(Traffic &traffic)
{
    ConfigurationManager &manager = *ConfigurationManager::instance();
    request(manager);
    print(QStringLiteral("messages.request"), traffic.take());
    changeAndFollow(manager);
    print(QStringLiteral("messages.change_and_announcement"), traffic.take());
    print(QStringLiteral("allocations.request"),
          medianAllocations([&manager] { request(manager); }));

    constexpr int announcements = 1000;
    const qint64 before = readHeap().bytes;
    for (int time = 0; time < announcements; ++time)
        changeAndFollow(manager);
    print(QStringLiteral("bytes.announcement"),
          static_cast<double>(readHeap().bytes - before) / announcements);
}

void countReading(const QString &payload)
{
    const QVariant received = receive(payload);
    const auto decode = [&received] { return qdbus_cast<Configuration>(received); };
    const auto decodeByHand = [&received] { return readByHand(received.value<QDBusArgument>()); };
    print(QStringLiteral("allocations.decode.") + payload, medianAllocations(decode));
    print(QStringLiteral("allocations.decode_by_hand.") + payload, medianAllocations(decodeByHand));

    const qint64 before = readHeap().bytes;
    const Configuration configuration = decode();
    const qint64 between = readHeap().bytes;
    const QVariantMap map = decodeByHand(); // clazy:exclude=unused-non-trivial-variable
    const qint64 after = readHeap().bytes;
    const double entries = countEntries(payload);
    print(QStringLiteral("bytes.entry.") + payload,
          static_cast<double>(between - before) / entries);
    print(QStringLiteral("bytes.entry_by_hand.") + payload,
          static_cast<double>(after - between) / entries);
}

void countLookup(const QString &name, const QString &payload, const QString &path)
{
    const auto configuration = qdbus_cast<Configuration>(receive(payload));
    print(QStringLiteral("allocations.lookup.") + name,
          medianAllocations([&configuration, &path] { configuration.getByXpath(path); }));
}

} // namespace

int main(int argc, char *argv[])
{
    BenchmarkFixture fixture(argc, argv);
    {
        Traffic traffic(fixture.address());
        setApplication(QStringLiteral("small"));
        countStart(traffic);
        countRequests(traffic);
    }
    for (const char *payload : {"small", "large", "fleet", "mixed_1000"})
        countReading(QLatin1String(payload));
    for (const int count : {10, 1000, 100000}) {
        const QString payload = QStringLiteral("list_%1").arg(count);
        countLookup(QStringLiteral("index_of_%1").arg(count), payload, QStringLiteral("list[7]"));
    }
    countLookup(QStringLiteral("depth_1"), QStringLiteral("large"), QStringLiteral("maximum"));
    countLookup(QStringLiteral("depth_6"), QStringLiteral("large"),
                QStringLiteral("general/general/general/general/general/maximum"));
}
