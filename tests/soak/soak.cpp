// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "footprint.h"
#include "load.h"
#include "supervisor.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Soak;

namespace {

constexpr int fewestRequests = 10000;
constexpr int fewestWarmUpRequests = 3000;
constexpr int fewestWarmUpNotifications = 500;

int loggedMessages = 0;

struct Options
{
    int requests;
    int notifications;
    unsigned int seed;

    int warmUpRequests() const
    {
        return std::max(requests / 10, fewestWarmUpRequests);
    }

    int warmUpNotifications() const
    {
        return std::max(notifications / 10, fewestWarmUpNotifications);
    }

    // Some ten times as long as it takes on an idle machine.
    int deadlineSeconds() const
    {
        return 100 + (requests + notifications) / 500;
    }
};

struct Result
{
    bool isComplete = false;
    Footprint warm {};
    Footprint full {};
    Footprint end {};
    int kept = 0;
    QStringList faults;
};

// Warnings of arrays that do not fit are part of the load. Printed, they would be most of it.
void countMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qUtf8Printable(text));
    else
        ++loggedMessages;
}

Options parseOptions()
{
    const QCommandLineOption requests(QStringLiteral("requests"), QString(),
                                      QStringLiteral("number"), QStringLiteral("20000"));
    const QCommandLineOption notifications(QStringLiteral("notifications"), QString(),
                                           QStringLiteral("number"), QStringLiteral("2000"));
    const QCommandLineOption seed(QStringLiteral("seed"), QString(), QStringLiteral("number"),
                                  QStringLiteral("1"));
    QCommandLineParser parser;
    parser.addOptions({requests, notifications, seed});
    parser.process(QCoreApplication::arguments());
    const Options options {parser.value(requests).toInt(), parser.value(notifications).toInt(),
                           parser.value(seed).toUInt()};
    if (options.requests < fewestRequests || options.notifications < 1)
        qFatal("fewer than %d requests do not meet all that can happen, and no notifications are "
               "no soak",
               fewestRequests);
    return options;
}

// Two runs of the load, so that the first one has filled all caches and pools. The managers are
// gone whenever the footprints that must be equal are taken.
Result soak(const Options &options, Load &load)
{
    Result result;
    if (!load.run(options.warmUpRequests(), options.warmUpNotifications()))
        return result;
    load.dismissAll();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    result.warm = takeFootprint();

    if (!load.run(options.requests, options.notifications))
        return result;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    result.full = takeFootprint();
    result.kept = load.keptNotifications();
    load.dismissAll();
    result.end = takeFootprint();
    result.isComplete = true;
    return result;
}

void require(bool isMet, const QString &fault, QStringList &faults)
{
    if (!isMet)
        faults.append(fault);
}

void checkGrowth(const char *what, qint64 grown, qint64 allowed, QStringList &faults)
{
    require(grown <= allowed,
            QStringLiteral("%1 has grown by %2 bytes, %3 are allowed")
                .arg(QLatin1String(what))
                .arg(grown)
                .arg(allowed),
            faults);
}

void checkMemory(const Result &result, const Budget &budget, QStringList &faults)
{
    const qint64 kept = result.kept * budget.notification;
    checkGrowth("with the managers, the heap", result.full.heap - result.warm.heap,
                budget.heap + kept, faults);
    checkGrowth("with the managers, the resident memory",
                result.full.resident - result.warm.resident, budget.resident + kept, faults);
    checkGrowth("without the managers, the heap", result.end.heap - result.warm.heap, budget.heap,
                faults);
    checkGrowth("without the managers, the resident memory",
                result.end.resident - result.warm.resident, budget.resident, faults);
}

void checkFootprint(const Result &result, const Budget &budget, QStringList &faults)
{
    if (SOAK_MEASURES_MEMORY)
        checkMemory(result, budget, faults);
    require(result.end.files == result.warm.files,
            QStringLiteral("%1 files are open, there were %2")
                .arg(result.end.files)
                .arg(result.warm.files),
            faults);
    require(result.end.threads == result.warm.threads,
            QStringLiteral("%1 threads run, there were %2")
                .arg(result.end.threads)
                .arg(result.warm.threads),
            faults);
}

void checkCounts(const Counts &counts, QStringList &faults)
{
    const int requests = counts.reads + counts.changes;
    require(counts.answers + counts.abandonedRequests == requests,
            QStringLiteral("of %1 requests, %2 were answered and %3 abandoned")
                .arg(requests)
                .arg(counts.answers)
                .arg(counts.abandonedRequests),
            faults);
}

int countWith(const QMap<QString, int> &messages, const char *part)
{
    int count = 0;
    for (auto entry = messages.begin(); entry != messages.end(); ++entry)
        count += entry.key().contains(QLatin1String(part)) ? entry.value() : 0;
    return count;
}

// A soak that has not met what it is for has shown nothing.
void checkVariety(const Options &options, const Counts &counts, const Supervisor &supervisor,
                  QStringList &faults)
{
    const int many = options.requests / 100;
    const QMap<QString, qint64> &tally = supervisor.tally();
    for (const char *manner : {"late", "unanswered", "twice", "other signature",
                               "further arguments", "other error", "refused"})
        require(tally.value(QLatin1String(manner)) >= many,
                QStringLiteral("too few calls were dealt with so: %1").arg(QLatin1String(manner)),
                faults);
    for (int code = Error::NoError; code <= Error::UnsupportedType; ++code)
        require(counts.codes.value(static_cast<Error::Code>(code)) > 0,
                QStringLiteral("no request ended in error %1").arg(code), faults);
    for (const char *part : {"pending replies", "nested too deep", "disconnected",
                             "Did not receive", "was not provided"})
        require(countWith(counts.internalErrors, part) > 0,
                QStringLiteral("no request ended so: %1").arg(QLatin1String(part)), faults);
    require(counts.abandonedRequests > 0,
            QStringLiteral("no manager was destroyed with calls under way"), faults);
    require(counts.abandonedAnnouncements > 0,
            QStringLiteral("no manager was destroyed with re-reads under way"), faults);
    require(supervisor.deaths() > 0 && supervisor.goodEnds() > 1,
            QStringLiteral("the service was not restarted in both ways"), faults);
}

void print(const char *name, const QString &text)
{
    std::printf("%-22s %s\n", name, qUtf8Printable(text));
}

void printCounts(const Counts &counts, const Supervisor &supervisor)
{
    print("requests",
          QStringLiteral("%1 reads, %2 changes; %3 answered, %4 abandoned")
              .arg(counts.reads)
              .arg(counts.changes)
              .arg(counts.answers)
              .arg(counts.abandonedRequests));
    print("notifications",
          QStringLiteral("%1; announced %2 times, %3 abandoned")
              .arg(counts.notifications)
              .arg(counts.announcements)
              .arg(counts.abandonedAnnouncements));
    print("managers", QString::number(counts.managers));
    print("service",
          QStringLiteral("%1 deaths, %2 ends in good order")
              .arg(supervisor.deaths())
              .arg(supervisor.goodEnds()));
    print("messages logged", QString::number(loggedMessages));
    for (auto entry = supervisor.tally().begin(); entry != supervisor.tally().end(); ++entry)
        print("  dealt with", QStringLiteral("%1  %2").arg(entry.value(), 9).arg(entry.key()));
    for (auto entry = counts.codes.begin(); entry != counts.codes.end(); ++entry)
        print("  ended in", QStringLiteral("%1  code %2").arg(entry.value(), 9).arg(entry.key()));
    for (auto entry = counts.internalErrors.begin(); entry != counts.internalErrors.end(); ++entry)
        print("  internal error",
              QStringLiteral("%1  %2").arg(entry.value(), 9).arg(entry.key().left(90)));
}

void printFootprint(const char *name, const Footprint &footprint)
{
    print(name,
          QStringLiteral("heap %1, resident %2, files %3, threads %4")
              .arg(footprint.heap)
              .arg(footprint.resident)
              .arg(footprint.files)
              .arg(footprint.threads));
}

void printFootprints(const Result &result)
{
    printFootprint("after the warm-up", result.warm);
    printFootprint("with the managers", result.full);
    printFootprint("without the managers", result.end);
    if (result.kept > 0)
        print("notifications kept",
              QStringLiteral("%1, %2 bytes each")
                  .arg(result.kept)
                  .arg((result.full.heap - result.end.heap) / result.kept));
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const Options options = parseOptions();
    const Budget budget = readBudget(QStringLiteral(SOAK_BUDGET));
    qInstallMessageHandler(countMessage);
    // For an event loop that no longer turns.
    alarm(static_cast<unsigned int>(2 * options.deadlineSeconds()));

    const QString address = qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
    if (address.isEmpty())
        qFatal("run this through soak_bus, on a bus of its own");
    print("seed", QString::number(options.seed));
    QElapsedTimer clock;
    clock.start();
    Supervisor supervisor(address, options.seed);
    Load load(supervisor, options.seed,
              2 * (options.requests + options.warmUpRequests() + options.notifications));
    QTimer::singleShot(options.deadlineSeconds() * 1000, &application, [&load] { load.giveUp(); });
    Result result = soak(options, load);
    result.faults += load.faults();

    if (result.isComplete) {
        supervisor.stop();
        checkCounts(load.counts(), result.faults);
        checkVariety(options, load.counts(), supervisor, result.faults);
        checkFootprint(result, budget, result.faults);
    }
    printCounts(load.counts(), supervisor);
    if (result.isComplete)
        printFootprints(result);
    print("seconds", QString::number(clock.elapsed() / 1000));
    for (const QString &fault : qAsConst(result.faults))
        print("FAULT", fault);
    return result.faults.isEmpty() ? 0 : 1;
}
