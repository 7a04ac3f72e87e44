// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command_line.h"
#include "commands/commands.h"
#include "standard_streams.h"
#include "terminal.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSaveFile>

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
};

constexpr Command commands[] = {
    {"check", check, 2},       {"docs", docs, 1},     {"infer", infer, 1},
    {"scenario", scenario, 1}, {"header", header, 1},
};

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
        return command.run(commandLine, output);
    }
    return {usageFailure(QStringLiteral("there is no command \"%1\"").arg(commandLine.command))};
}

// A file that exists stays as it is if the new one cannot be written whole.
Failure write(const QString &fileName, const QByteArray &output)
{
    if (fileName.isEmpty()) {
        const bool isWritten = std::fwrite(output.constData(), 1,
                                           static_cast<std::size_t>(output.size()), stdout)
            == static_cast<std::size_t>(output.size());
        if (isWritten && std::fflush(stdout) == 0)
            return {};
        return {EX_CANTCREAT, qt_error_string(errno), {}, QStringLiteral("standard output")};
    }
    QSaveFile file(fileName);
    if (file.open(QIODevice::WriteOnly) && file.write(output) == output.size() && file.commit())
        return {};
    return {EX_CANTCREAT, file.errorString(), {}, fileName};
}

int report(const Report &report)
{
    int status = EXIT_SUCCESS;
    for (const Failure &failure : report) {
        printLine(stderr, Tarnvel::Tools::shownOnOneLine(failure.text()),
                  failure ? Style::Bad : Style::News);
        if (!failure.hint.isEmpty())
            printLine(stderr, QStringLiteral("  what to do: ") + failure.hint);
        if (status == EXIT_SUCCESS)
            status = failure.status;
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
