// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "output.h"
#include "service/bus.h"
#include "service/requests.h"
#include "usage_failure.h"
#include "values/json.h"
#include "values/path.h"

#include <QtCore/QByteArrayList>

#include <algorithm>
#include <unistd.h>

namespace Tarnvel::Client {

using Tools::Failure;

namespace {

// Reads the value at the path that is the only argument, or the configuration without one.
Failure readValue(const CommandLine &commandLine, QString *path, QVariant *value)
{
    Steps steps;
    if (const Failure failure = parsePathArgument(commandLine, &steps))
        return failure;
    if (const Failure failure = openBus(commandLine.timeoutMs))
        return failure;
    Reading reading;
    if (const Failure failure = readConfiguration(commandLine.timeoutMs, &reading))
        return failure;
    *path = pathText(steps);
    printUnseenSettings(unseenSettingsAt(*path, reading.unseen));
    return findValue(reading.configuration, steps, value);
}

// A terminal would obey control characters; a program needs them as they are.
void printRaw(const QVariant &value)
{
    const QString text = value.toString();
    if (isatty(STDOUT_FILENO))
        print(text);
    else
        printText(text);
}

void printValue(const QVariant &value, const CommandLine &commandLine)
{
    const ValueType type = typeOf(value);
    if (commandLine.showsTypes)
        return printText(type == ValueType::Configuration ? indentedText(toJsonOfTypes(value))
                                                          : typeName(type));
    if (!commandLine.isRaw || type == ValueType::Configuration)
        return printText(indentedText(toJson(value)));
    const auto items = itemTypeOf(type) ? value.value<QVariantList>() : QVariantList {value};
    std::for_each(items.begin(), items.end(), printRaw);
}

} // namespace

Failure get(const CommandLine &commandLine)
{
    if (commandLine.showsTypes && commandLine.isRaw)
        return usageFailure(QStringLiteral("--type and --raw are mutually exclusive"));
    QString path;
    QVariant value;
    if (const Failure failure = readValue(commandLine, &path, &value))
        return failure;
    printValue(value, commandLine);
    return {};
}

Failure list(const CommandLine &commandLine)
{
    QString path;
    QVariant value;
    if (const Failure failure = readValue(commandLine, &path, &value))
        return failure;
    QByteArrayList lines;
    const Leaves leaves = leavesOf(value, path);
    for (auto leaf = leaves.begin(); leaf != leaves.end(); ++leaf)
        lines.append(
            QStringLiteral("%1\t%2\t%3")
                .arg(leaf.key(), typeName(typeOf(leaf.value())), compactText(toJson(leaf.value())))
                .toUtf8());
    // By bytes, as the tools for lines of text do in the C locale.
    std::sort(lines.begin(), lines.end());
    if (!lines.isEmpty())
        printText(QString::fromUtf8(lines.join('\n')));
    return {};
}

} // namespace Tarnvel::Client
