// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "service/bus.h"
#include "service/requests.h"
#include "usage_failure.h"
#include "values/assignment.h"

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;
using Tools::Failure;

Failure set(const CommandLine &commandLine)
{
    if (commandLine.arguments.isEmpty())
        return usageFailure(QStringLiteral("set needs at least one PATH=VALUE"));
    QList<Assignment> assignments;
    for (const QString &argument : commandLine.arguments) {
        Assignment assignment;
        if (const Failure failure = parseAssignment(argument, &assignment))
            return failure;
        assignments.append(assignment);
    }
    if (const Failure failure = openBus(commandLine.timeoutMs))
        return failure;
    Reading reading;
    if (const Failure failure = readConfiguration(commandLine.timeoutMs, &reading))
        return failure;

    // The service merges whole values of top-level keys.
    Configuration &configuration = reading.configuration;
    Configuration change;
    for (const Assignment &assignment : qAsConst(assignments)) {
        if (const Failure failure = assign(assignment, &configuration))
            return failure;
        const QString key = assignment.steps.first().toKey();
        change.set(key, configuration.get(key));
    }
    return changeConfiguration(commandLine.timeoutMs, change);
}

} // namespace Tarnvel::Client
