// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command_line.h"
#include "commands/commands.h"
#include "standard_streams.h"
#include "terminal.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

#include <algorithm>
#include <cstdlib>
#include <sysexits.h>

using namespace Tarnvel::Schema;
using Tarnvel::Tools::Failure;
using Tarnvel::Tools::printLine;
using Tarnvel::Tools::Style;

namespace {

struct Command
{
    const char *name;
    Report (*run)(const CommandLine &commandLine, QByteArray *output);
    /*! The number of files, or the least number if there can be more. */
    int files;
    /*! The options that it has, beside those of all commands. */
    const char *options;
};

constexpr Command commands[] = {
    {"check", check, 2, ""},
    {"docs", docs, 1, "output"},
    {"infer", infer, 1, "application output"},
    {"scenario", scenario, 1, "output"},
    {"header", header, 1, "class output"},
};

Failure checkOptions(const Command &command, const CommandLine &commandLine)
{
    const QStringList known = QString::fromLatin1(command.options).split(QLatin1Char(' '));
    for (const QString &option : commandLine.options) {
        if (!known.contains(option))
            return usageFailure(QStringLiteral("\"--%1\" is not an option of \"%2\"")
                                    .arg(option, commandLine.command));
    }
    const QFileInfo output(commandLine.outputFile);
    for (const QString &file : commandLine.files) {
        if (output.isFile() && output == QFileInfo(file))
            return usageFailure(QStringLiteral("the output would replace ") + file);
    }
    return {};
}

Report run(const CommandLine &commandLine, QByteArray *output)
{
    for (const Command &command : commands) {
        if (commandLine.command != QLatin1String(command.name))
            continue;
        const auto count = commandLine.files.size();
        const bool canHaveMore = command.run == check;
        if (count < command.files || (count > command.files && !canHaveMore))
            return {usageFailure(QStringLiteral("\"%1\" needs %2")
                                     .arg(commandLine.command,
                                          canHaveMore ? QStringLiteral("a schema and scenarios")
                                                      : QStringLiteral("one file")))};
        if (const Failure failure = checkOptions(command, commandLine))
            return {failure};
        return command.run(commandLine, output);
    }
    return {usageFailure(QStringLiteral("there is no command \"%1\"").arg(commandLine.command))};
}

Failure write(const QString &fileName, const QByteArray &output)
{
    // A file stays as it is if the new one cannot be written whole. A device or a pipe is not
    // replaced.
    const QFileInfo existing(fileName);
    const bool isReplaced = !fileName.isEmpty() && (!existing.exists() || existing.isFile());
    QSaveFile file(fileName);
    QFile stream(fileName);
    QFileDevice *const written = isReplaced ? static_cast<QFileDevice *>(&file) : &stream;
    const bool isOpen = fileName.isEmpty() ? stream.open(stdout, QIODevice::WriteOnly)
                                           : written->open(QIODevice::WriteOnly);
    if (isOpen && written->write(output) == output.size()
        && (isReplaced ? file.commit() : stream.flush()))
        return {};
    return {EX_CANTCREAT,
            written->errorString(),
            {},
            fileName.isEmpty() ? QStringLiteral("standard output") : fileName};
}

int report(const Report &report)
{
    int status = EXIT_SUCCESS;
    for (const Failure &failure : report) {
        Failure shown = failure;
        if (!failure)
            shown.message.prepend(QLatin1String("warning: "));
        printLine(stderr, Tarnvel::Tools::shownOnOneLine(shown.text()),
                  failure ? Style::Bad : Style::News);
        if (!failure.hint.isEmpty())
            printLine(stderr, QStringLiteral("  what to do: ") + failure.hint);
        status = std::max(status, failure.status);
    }
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
    Tarnvel::Tools::reserveStandardStreams();
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("managed-configuration-schema"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SCHEMA_TOOL_VERSION));

    CommandLine commandLine;
    if (const Failure failure = parseCommandLine(QCoreApplication::arguments(), &commandLine))
        return report({failure});
    QByteArray output;
    const int status = report(run(commandLine, &output));
    if (status != EXIT_SUCCESS)
        return status;
    const Failure failure = write(commandLine.outputFile, output);
    return failure ? report({failure}) : EXIT_SUCCESS;
}
