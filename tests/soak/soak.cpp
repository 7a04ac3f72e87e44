// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "endpoint.h"
#include "load.h"
#include "misbehaving_service.h"
#include "private_bus.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QLoggingCategory>
#include <Tarnvel/ManagedConfiguration/error.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <malloc.h>
#include <unistd.h>

using namespace Tarnvel::Soak;
using Tarnvel::Application::ManagedConfiguration::Error;

namespace {

// With fewer requests, not all requiredEvents() happen.
constexpr int minimumRequests = 10000;

// By how many bytes the process may grow after the warm-up, on the heap and in physical memory, and
// for each announcement that a living manager has received.
constexpr qint64 heapBudget = 1 << 20;
constexpr qint64 residentBudget = 1 << 22;
constexpr qint64 announcementBudget = 1023;

/*! \brief The resources in use by this process. */
struct Footprint
{
    qint64 heap;
    qint64 resident;
    int files;
    int threads;
};

int countEntries(const char *directory)
{
    return QDir(QLatin1String(directory)).entryList(QDir::AllEntries | QDir::System).size();
}

Footprint takeFootprint(const char *when)
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    malloc_trim(0);
    const struct mallinfo2 info = mallinfo2();
    qint64 totalPages = 0;
    qint64 residentPages = 0;
    std::ifstream("/proc/self/statm") >> totalPages >> residentPages;
    const Footprint footprint {static_cast<qint64>(info.uordblks + info.hblkhd),
                               residentPages * sysconf(_SC_PAGESIZE), countEntries("/proc/self/fd"),
                               countEntries("/proc/self/task")};
    std::printf("%s: heap %lld, resident %lld, files %d, threads %d\n", when, footprint.heap,
                footprint.resident, footprint.files, footprint.threads);
    return footprint;
}

bool require(bool isMet, const QString &problem)
{
    if (!isMet)
        std::fprintf(stderr, "FAILED: %s\n", qUtf8Printable(problem));
    return isMet;
}

bool checkMemory(const Footprint &before, const Footprint &after, int announcements)
{
    const qint64 kept = announcements * announcementBudget;
    const bool isWithinBudget = after.heap - before.heap <= heapBudget + kept
        && after.resident - before.resident <= residentBudget + kept;
    return require(
        isWithinBudget || !SOAK_MEASURES_MEMORY,
        QStringLiteral("memory leaks: only %1 announcements are kept").arg(announcements));
}

// Without any of these, the soak has not tested what it is for.
Tally requiredEvents()
{
    Tally tally;
    for (const char *event :
         {"error replies", "replies of another type", "replies with extra arguments",
          "double replies", "late replies", "calls without a reply", "abandoned requests",
          "abandoned announcements"})
        tally.insert(event, 0);
    for (int code = Error::NoError; code <= Error::UnsupportedType; ++code)
        tally.insert(QStringLiteral("answers with code %1").arg(code), 0);
    return tally;
}

bool soak(Load &load, int requests)
{
    // The warm-up fills caches and pools.
    if (!load.run(std::max(requests / 10, minimumRequests / 2)))
        return false;
    load.destroyManagers();
    const Footprint before = takeFootprint("after the warm-up");
    if (!load.run(requests))
        return false;
    const int announcements = load.receivedAnnouncements();
    bool hasPassed = checkMemory(before, takeFootprint("with managers"), announcements);
    load.destroyManagers();
    const Footprint after = takeFootprint("without managers");
    hasPassed &= checkMemory(before, after, 0);
    hasPassed &= require(after.files <= before.files && after.threads <= before.threads,
                         QStringLiteral("files stay open, or threads keep running"));
    return hasPassed;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int requests = arguments.value(1, QStringLiteral("20000")).toInt();
    const uint seed = arguments.value(2, QStringLiteral("1")).toUInt();
    if (requests < minimumRequests)
        qFatal("usage: soak [REQUESTS [SEED]], with at least %d requests", minimumRequests);

    // Warnings of arrays of other types are part of the load.
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false"));
    Tarnvel::Testing::PrivateBus bus;
    if (const QString error = bus.start(); !error.isNull())
        qFatal("%s", qUtf8Printable(error));
    qputenv(Tarnvel::DBus::busAddressVariable, bus.address().toUtf8());
    Tally tally = requiredEvents();
    MisbehavingService service(bus.address(), seed, tally);
    Load load(service, seed, tally);
    bool hasPassed = soak(load, requests);
    for (auto event = tally.cbegin(); event != tally.cend(); ++event) {
        std::printf("%9d %s\n", event.value(), qUtf8Printable(event.key()));
        hasPassed = hasPassed && require(event.value() > 0, event.key() + QLatin1String(": none"));
    }
    return hasPassed ? 0 : 1;
}
