// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "output.h"
#include "service/bus.h"
#include "service/requests.h"
#include "usage_failure.h"
#include "values/json.h"
#include "values/path.h"

namespace Tarnvel::Client {

using Tools::Failure;

namespace {

void printValue(const QVariant &value, bool showsTypes)
{
    if (!showsTypes)
        printText(indentedText(toJson(value)));
    else if (typeOf(value) == ValueType::Configuration)
        printText(indentedText(toJsonOfTypes(value)));
    else
        print(typeName(typeOf(value)));
}

} // namespace

Failure get(const CommandLine &commandLine)
{
    if (commandLine.arguments.size() > 1)
        return usageFailure(QStringLiteral("get takes at most one path"));
    Steps steps;
    for (const QString &path : commandLine.arguments) {
        if (const Failure failure = parsePath(path, &steps))
            return failure;
    }
    if (const Failure failure = openBus(commandLine.timeoutMs))
        return failure;
    Reading reading;
    if (const Failure failure = readConfiguration(commandLine.timeoutMs, &reading))
        return failure;
    printUnseenSettings(unseenSettingsAt(pathText(steps, steps.size()), reading.unseen));
    QVariant value;
    if (const Failure failure = findValue(reading.configuration, steps, &value))
        return failure;
    printValue(value, commandLine.showsTypes);
    return {};
}

} // namespace Tarnvel::Client
