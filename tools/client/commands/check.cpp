// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "endpoint.h"
#include "output.h"
#include "schema_check.h"
#include "schema_reader.h"
#include "service/bus.h"
#include "service/requests.h"
#include "usage_failure.h"
#include "values/difference.h"

#include <QtCore/QCoreApplication>

namespace Tarnvel::Client {

using Tools::Failure;
using Tools::Style;

namespace {

// Sets the identity, as far as the command line does not, to that of the schema.
Failure readSchemaOf(CommandLine *commandLine, Schema::Schema *schema)
{
    const QVector<Failure> failures = readSchema(commandLine->file, schema);
    for (const Failure &failure : failures)
        report(failure);
    if (!failures.isEmpty())
        return {failures.first().status};
    if (commandLine->organization.isEmpty())
        commandLine->organization = schema->organization;
    if (commandLine->application.isEmpty())
        commandLine->application = schema->application;
    if (commandLine->organization != schema->organization
        || commandLine->application != schema->application)
        return usageFailure(QStringLiteral("the schema is for %1/%2, not for %3/%4")
                                .arg(schema->organization, schema->application,
                                     commandLine->organization, commandLine->application));
    QCoreApplication::setOrganizationName(schema->organization);
    QCoreApplication::setApplicationName(schema->application);
    return {};
}

void printResult(const char *subject, const Failure &failure, const QString &success)
{
    const QString text = failure ? failure.text() : success;
    print(QLatin1String(subject) + QStringLiteral(": ") + text, failure ? Style::Bad : Style::Good);
    if (failure)
        print(QStringLiteral("  what to do: ") + failure.hint);
}

// These print the result of a check and return it.

Failure checkBus(int timeoutMs, ServiceState *state)
{
    Failure failure = openBus(timeoutMs);
    if (!failure)
        failure = findService(timeoutMs, state);
    printResult("bus", failure, QStringLiteral("connected to ") + busAddressText());
    return failure;
}

Failure checkService(bool hasBus, ServiceState state, int timeoutMs)
{
    Failure failure;
    if (!hasBus)
        failure = {EX_UNAVAILABLE, QStringLiteral("cannot be checked without a bus"),
                   QStringLiteral("fix the problem above first")};
    else if (state == ServiceState::Absent)
        failure = absentServiceFailure();
    const QString name = QLatin1String(DBus::serviceName);
    printResult(
        "service", failure,
        state == ServiceState::Running
            ? QStringLiteral("%1 is running as process %2")
                  .arg(name, QString::number(serviceProcessId(timeoutMs)))
            : QStringLiteral("%1 is not running; the bus starts it when it is called").arg(name));
    return failure;
}

Failure checkIdentity(const CommandLine &commandLine)
{
    const QString &organization = commandLine.organization;
    const QString &application = commandLine.application;
    print(QStringLiteral("identity: organization \"%1\", application \"%2\"")
              .arg(organization, application),
          Style::Good);
    const Failure failure = validateIdentity(commandLine);
    printResult("object path", failure, DBus::applicationPath(organization, application));
    return failure;
}

Failure checkConfiguration(int timeoutMs, Reading *reading)
{
    const Failure failure = readConfiguration(timeoutMs, reading);
    printResult("configuration", failure,
                QStringLiteral("read, settings: %1")
                    .arg(leavesOf(QVariant::fromValue(reading->configuration)).size()));
    return failure;
}

} // namespace

Failure check(const CommandLine &commandLine)
{
    if (!commandLine.arguments.isEmpty())
        return usageFailure(QStringLiteral("check takes no arguments"));
    CommandLine complete = commandLine;
    Schema::Schema schema;
    if (!commandLine.file.isEmpty()) {
        if (const Failure failure = readSchemaOf(&complete, &schema))
            return failure;
    }
    const int timeoutMs = commandLine.timeoutMs;
    ServiceState state = ServiceState::Absent;
    const Failure bus = checkBus(timeoutMs, &state);
    const Failure service = checkService(!bus, state, timeoutMs);
    const Failure identity = checkIdentity(complete);
    for (const Failure &failure : {bus, service, identity}) {
        if (!failure)
            continue;
        printResult("configuration",
                    {failure.status, QStringLiteral("not read"),
                     QStringLiteral("fix the problem above first")},
                    {});
        return {failure.status};
    }
    Reading reading;
    const Failure failure = checkConfiguration(timeoutMs, &reading);
    if (failure || commandLine.file.isEmpty())
        return {failure.status};
    return checkSettings(schema, reading);
}

} // namespace Tarnvel::Client
