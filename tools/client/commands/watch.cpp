// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "endpoint.h"
#include "output.h"
#include "service/bus.h"
#include "service/requests.h"
#include "usage_failure.h"
#include "values/difference.h"
#include "values/json.h"
#include "values/path.h"

#include <QtCore/QDateTime>
#include <QtCore/QEventLoop>
#include <QtCore/QJsonObject>
#include <QtCore/QQueue>
#include <QtCore/QSocketNotifier>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusServiceWatcher>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <algorithm>
#include <cstdlib>
#include <unistd.h>

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::ConfigurationManager;
using Tools::Failure;
using Tools::Style;

namespace {

struct Event
{
    enum Kind {
        ChangeAnnounced,
        ServiceGone,
        ServiceReturned,
    };

    Kind kind;
    Configuration configuration;
};

void printJson(const Difference &difference)
{
    QJsonObject object {
        {QStringLiteral("time"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
        {QStringLiteral("path"), difference.path}};
    if (difference.before.isValid())
        object.insert(QStringLiteral("old"), toJson(difference.before));
    if (difference.after.isValid())
        object.insert(QStringLiteral("new"), toJson(difference.after));
    print(compactText(object));
}

// Handles events one after the other, including those that come while a request is pending.
class Watch
{
public:
    Watch(const CommandLine &commandLine, const Steps &steps);
    Failure run();

private:
    void add(const Event &event);
    void handle(const Event &event);
    Leaves watchedLeaves(const Configuration &configuration) const;
    void show(const Configuration &configuration, bool isAnnounced);

    int m_timeoutMs;
    bool m_isJson;
    Steps m_steps;
    QString m_path;
    QDBusConnection m_bus = QDBusConnection::systemBus();
    Leaves m_shown;
    QQueue<Event> m_events;
    QEventLoop m_loop;
};

Watch::Watch(const CommandLine &commandLine, const Steps &steps)
    : m_timeoutMs(commandLine.timeoutMs),
      m_isJson(commandLine.isJson),
      m_steps(steps),
      m_path(pathText(steps))
{
    QObject::connect(ConfigurationManager::instance(), &ConfigurationManager::configurationChanged,
                     &m_loop, [this](const Configuration &configuration) {
                         add({Event::ChangeAnnounced, configuration});
                     });
    m_bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                  QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                  &m_loop, SLOT(quit()));
}

Failure Watch::run()
{
    // The reader may close the pipe long before there is a change to write.
    QSocketNotifier outputWatcher(STDOUT_FILENO, QSocketNotifier::Exception);
    QObject::connect(&outputWatcher, &QSocketNotifier::activated, &m_loop,
                     [] { std::quick_exit(EX_OK); });

    Reading reading;
    if (const Failure failure = readConfiguration(m_timeoutMs, &reading))
        return failure;
    printUnseenSettings(unseenSettingsAt(m_path, reading.unseen));
    m_shown = watchedLeaves(reading.configuration);
    const QList<Difference> present = differencesBetween({}, m_shown);
    for (const Difference &leaf : present) {
        if (m_isJson)
            printJson(leaf);
        else
            print(QStringLiteral("%1 = %2").arg(leaf.path, compactText(toJson(leaf.after))));
    }

    // Not earlier: the bus may have started the service for the first request.
    QDBusServiceWatcher serviceWatcher(QLatin1String(DBus::serviceName), m_bus);
    QObject::connect(&serviceWatcher, &QDBusServiceWatcher::serviceOwnerChanged, &m_loop,
                     [this](const QString &, const QString &, const QString &owner) {
                         add({owner.isEmpty() ? Event::ServiceGone : Event::ServiceReturned, {}});
                     });
    while (m_bus.isConnected()) {
        if (m_events.isEmpty())
            m_loop.exec();
        else
            handle(m_events.dequeue());
    }
    return {EX_UNAVAILABLE, QStringLiteral("the bus at %1 is lost").arg(busAddressText()),
            QStringLiteral("start the bus, then run this again")};
}

void Watch::add(const Event &event)
{
    m_events.enqueue(event);
    m_loop.quit();
}

void Watch::handle(const Event &event)
{
    if (event.kind == Event::ServiceGone)
        return printNote(QStringLiteral("the service has gone; waiting for it to return"));
    if (event.kind == Event::ServiceReturned)
        printNote(QStringLiteral("the service has returned"));

    Reading reading {event.configuration, {}};
    // An announced configuration that is empty may be one that could not be read.
    if (reading.configuration.isEmpty()) {
        if (const Failure failure = readConfiguration(m_timeoutMs, &reading))
            return report(failure);
    }
    show(reading.configuration, event.kind == Event::ChangeAnnounced);
}

Leaves Watch::watchedLeaves(const Configuration &configuration) const
{
    QVariant value;
    // There may be no value at the path yet, or no more.
    const Failure failure = findValue(configuration, m_steps, &value);
    return failure ? Leaves() : leavesOf(value, m_path);
}

void Watch::show(const Configuration &configuration, bool isAnnounced)
{
    const Leaves leaves = watchedLeaves(configuration);
    const QList<Difference> differences = differencesBetween(m_shown, leaves);
    m_shown = leaves;
    std::for_each(differences.begin(), differences.end(), m_isJson ? printJson : printDifference);
    if (differences.isEmpty() && isAnnounced && m_steps.isEmpty() && !m_isJson)
        print(QStringLiteral("unchanged"), Style::Aside);
}

} // namespace

Failure watch(const CommandLine &commandLine)
{
    Steps steps;
    if (const Failure failure = parsePathArgument(commandLine, &steps))
        return failure;
    if (const Failure failure = openBus(commandLine.timeoutMs))
        return failure;
    return Watch(commandLine, steps).run();
}

} // namespace Tarnvel::Client
