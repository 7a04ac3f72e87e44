// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "endpoint.h"
#include "output.h"
#include "service/bus.h"
#include "service/requests.h"
#include "values/difference.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSocketNotifier>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusServiceWatcher>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <optional>
#include <unistd.h>

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::ConfigurationManager;

namespace {

Tools::Style styleOf(const QString &line)
{
    if (line.startsWith(QLatin1String("added")))
        return Tools::Style::Good;
    return line.startsWith(QLatin1String("removed")) ? Tools::Style::Bad : Tools::Style::News;
}

} // namespace

class Watch : public QObject
{
    Q_OBJECT

public:
    Watch(int timeoutMs, QObject *parent);

private Q_SLOTS:
    void endWithoutBus();

private:
    void start(const Configuration &configuration, const Failure &failure);
    void followAnnouncement(const Configuration &configuration);
    void followService(const QString &newOwner);
    void readAgain(bool isAnnounced);
    void show(const Configuration &configuration, bool isAnnounced);

    int m_timeoutMs;
    // What is printed; nothing before the start.
    std::optional<Leaves> m_leaves;
    // Counts what is newer than an answer that is still under way.
    int m_news = 0;
    QDBusServiceWatcher m_serviceWatcher;
    QSocketNotifier m_outputWatcher;
};

Watch::Watch(int timeoutMs, QObject *parent)
    : QObject(parent),
      m_timeoutMs(timeoutMs),
      m_serviceWatcher(QLatin1String(DBus::serviceName), QDBusConnection::systemBus(),
                       QDBusServiceWatcher::WatchForOwnerChange),
      m_outputWatcher(STDOUT_FILENO, QSocketNotifier::Exception)
{
    connect(ConfigurationManager::instance(), &ConfigurationManager::configurationChanged, this,
            &Watch::followAnnouncement);
    connect(
        &m_serviceWatcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &, const QString &owner) { followService(owner); });
    QDBusConnection::systemBus().connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                                         QStringLiteral("org.freedesktop.DBus.Local"),
                                         QStringLiteral("Disconnected"), this,
                                         SLOT(endWithoutBus()));
    // Whoever reads may leave long before there is a change to write.
    connect(&m_outputWatcher, &QSocketNotifier::activated, this, [] { finish({}); });
    readConfiguration(timeoutMs,
                      [this](const Configuration &configuration, const Failure &failure) {
                          start(configuration, failure);
                      });
}

void Watch::endWithoutBus()
{
    finish({EX_UNAVAILABLE, QStringLiteral("the bus at %1 is lost").arg(busAddressText()),
            QStringLiteral("start the bus, then this again")});
}

void Watch::start(const Configuration &configuration, const Failure &failure)
{
    if (m_leaves)
        return;
    if (failure)
        return finish(failure);
    m_leaves = leavesOf(configuration);
    for (auto leaf = m_leaves->begin(); leaf != m_leaves->end(); ++leaf)
        print(QStringLiteral("%1 = %2").arg(leaf.key(), leaf.value()));
}

void Watch::followAnnouncement(const Configuration &configuration)
{
    // An empty one may be one that could not be read.
    if (!m_leaves || configuration.isEmpty())
        return readAgain(true);
    ++m_news;
    show(configuration, true);
}

void Watch::followService(const QString &newOwner)
{
    // The bus may start the service for the first request.
    if (!m_leaves)
        return;
    if (newOwner.isEmpty())
        return printNote(QStringLiteral("the service has gone; waiting for it to return"));
    printNote(QStringLiteral("the service has returned"));
    readAgain(false);
}

void Watch::readAgain(bool isAnnounced)
{
    const int news = ++m_news;
    readConfiguration(
        m_timeoutMs,
        [this, news, isAnnounced](const Configuration &configuration, const Failure &failure) {
            if (news != m_news)
                return;
            if (!m_leaves)
                start(configuration, failure);
            else if (failure)
                report(failure);
            else
                show(configuration, isAnnounced);
        });
}

void Watch::show(const Configuration &configuration, bool isAnnounced)
{
    const Leaves leaves = leavesOf(configuration);
    const QStringList lines = differences(*m_leaves, leaves);
    m_leaves = leaves;
    for (const QString &line : lines)
        print(line, styleOf(line));
    if (lines.isEmpty() && isAnnounced)
        print(QStringLiteral("unchanged"), Tools::Style::Aside);
}

Failure watch(const CommandLine &commandLine)
{
    if (!commandLine.arguments.isEmpty())
        return usageFailure(QStringLiteral("watch takes no arguments"));
    if (const Failure failure = openBus(commandLine.timeoutMs))
        return failure;
    new Watch(commandLine.timeoutMs, QCoreApplication::instance());
    return {};
}

} // namespace Tarnvel::Client

#include "watch.moc"
