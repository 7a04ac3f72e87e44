// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "output.h"
#include "service/bus.h"
#include "service/requests.h"
#include "values/json.h"
#include "values/path.h"

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;

namespace {

void printValue(const QVariant &value, bool showsTypes)
{
    if (!showsTypes)
        print(indentedText(toJson(value)));
    else if (typeOf(value) == ValueType::Configuration)
        print(indentedText(toJsonOfTypes(value)));
    else
        print(typeName(typeOf(value)));
}

} // namespace

Failure get(const CommandLine &commandLine)
{
    if (commandLine.arguments.size() > 1)
        return usageFailure(QStringLiteral("get takes one path at most"));
    Steps steps;
    if (!commandLine.arguments.isEmpty()) {
        const Failure failure = parsePath(commandLine.arguments.first(), &steps);
        if (failure)
            return failure;
    }
    if (const Failure failure = openBus(commandLine.timeoutMs))
        return failure;
    const bool showsTypes = commandLine.showsTypes;
    readConfiguration(
        commandLine.timeoutMs,
        [steps, showsTypes](const Configuration &configuration, const Failure &failure) {
            QVariant value;
            const Failure outcome = failure ? failure : findValue(configuration, steps, &value);
            if (!outcome)
                printValue(value, showsTypes);
            finish(outcome);
        });
    return {};
}

} // namespace Tarnvel::Client
