// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "output.h"
#include "service/bus.h"
#include "service/requests.h"
#include "values/assignment.h"

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;

namespace {

// The change has what the service merges: whole values of the keys of the first level.
Failure makeChange(const QList<Assignment> &assignments, Configuration configuration,
                   Configuration *change)
{
    for (const Assignment &assignment : assignments) {
        const Failure failure = assign(assignment, &configuration);
        if (failure)
            return failure;
        const QString key = assignment.steps.first().toKey();
        change->set(key, configuration.get(key));
    }
    return {};
}

} // namespace

Failure set(const CommandLine &commandLine)
{
    if (commandLine.arguments.isEmpty())
        return usageFailure(QStringLiteral("set needs something to set, such as PATH=VALUE"));
    QList<Assignment> assignments;
    for (const QString &argument : commandLine.arguments) {
        Assignment assignment;
        const Failure failure = parseAssignment(argument, &assignment);
        if (failure)
            return failure;
        assignments.append(assignment);
    }
    if (const Failure failure = openBus(commandLine.timeoutMs))
        return failure;
    const int timeoutMs = commandLine.timeoutMs;
    readConfiguration(
        timeoutMs,
        [assignments, timeoutMs](const Configuration &configuration, const Failure &failure) {
            Configuration change;
            const Failure outcome = failure ? failure
                                            : makeChange(assignments, configuration, &change);
            if (outcome)
                finish(outcome);
            else
                changeConfiguration(change, timeoutMs, finish);
        });
    return {};
}

} // namespace Tarnvel::Client
