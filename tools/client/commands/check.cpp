// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "endpoint.h"
#include "output.h"
#include "service/bus.h"
#include "service/requests.h"
#include "values/difference.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;
using Tools::Style;

namespace {

void printFinding(const char *subject, const QString &finding, const QString &hint = QString())
{
    const QString line = QLatin1String(subject) + QLatin1String(": ") + finding;
    print(line, hint.isEmpty() ? Style::Good : Style::Bad);
    if (!hint.isEmpty())
        print(QStringLiteral("  what to do: ") + hint);
}

// These print a finding and return the exit status that it calls for.

int checkBus(const Failure &failure)
{
    printFinding("bus", failure ? failure.text() : QStringLiteral("there, at ") + busAddressText(),
                 failure.hint);
    return failure.status;
}

int checkService(ServiceState state, int timeoutMs)
{
    const QString name = QLatin1String(DBus::serviceName);
    switch (state) {
    case ServiceState::NoBus:
        printFinding("service", QStringLiteral("not to be seen without a bus"),
                     QStringLiteral("see to the bus first"));
        return EX_UNAVAILABLE;
    case ServiceState::Absent:
        printFinding(
            "service",
            QStringLiteral("missing: nobody owns %1, and the bus cannot start it").arg(name),
            QStringLiteral("start it, or run this in managed-configuration-sandbox"));
        return EX_UNAVAILABLE;
    case ServiceState::Activatable:
        printFinding(
            "service",
            QStringLiteral("%1 is not running; the bus starts it when it is called").arg(name));
        return EX_OK;
    case ServiceState::Running:
        break;
    }
    printFinding(
        "service",
        QStringLiteral("%1 is running as process %2").arg(name).arg(serviceProcess(timeoutMs)));
    return EX_OK;
}

int checkNames(const CommandLine &commandLine)
{
    const QString &organization = commandLine.organization;
    const QString &application = commandLine.application;
    const QString path = DBus::applicationPath(organization, application);
    const Failure failure = checkIdentity(commandLine);
    printFinding("identity",
                 QStringLiteral("organization \"%1\", application \"%2\"%3")
                     .arg(organization, application,
                          failure ? QStringLiteral(": ") + failure.text() : QString()),
                 failure.hint);
    printFinding("object path", failure ? path + QStringLiteral(" is none") : path,
                 failure ? QStringLiteral("see to the identity first") : QString());
    return failure.status;
}

void checkAnswer(const Configuration &configuration, const Failure &failure)
{
    if (failure)
        printFinding("configuration", failure.text(), failure.hint);
    else
        printFinding("configuration",
                     QStringLiteral("read, settings: %1").arg(leavesOf(configuration).size()));
    QCoreApplication::exit(failure.status);
}

} // namespace

Failure check(const CommandLine &commandLine)
{
    if (!commandLine.arguments.isEmpty())
        return usageFailure(QStringLiteral("check takes no arguments"));
    const int timeoutMs = commandLine.timeoutMs;
    Failure noBus = openBus(timeoutMs);
    const ServiceState state = noBus ? ServiceState::NoBus : serviceState(timeoutMs);
    if (!noBus && state == ServiceState::NoBus)
        noBus = busFailure(QStringLiteral("it does not answer"));
    // The first thing amiss is the reason for all that follow.
    for (const int status :
         {checkBus(noBus), checkService(state, timeoutMs), checkNames(commandLine)}) {
        if (status == EX_OK)
            continue;
        printFinding("configuration", QStringLiteral("not asked for"),
                     QStringLiteral("see to the above first"));
        // The event loop, which this must end, has yet to begin.
        QTimer::singleShot(0, qApp, [status] { QCoreApplication::exit(status); });
        return {};
    }
    readConfiguration(timeoutMs, checkAnswer);
    return {};
}

} // namespace Tarnvel::Client
