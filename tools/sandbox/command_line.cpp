// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command_line.h"

#include "report/log.h"

#include <QtCore/QCommandLineParser>

#include <cstdlib>

namespace Tarnvel::Sandbox {

namespace {

const char description[] =
    "Runs a command on a private D-Bus system bus with a stand-in for the\n"
    "managed-configuration service, which answers as a scenario file says. When the file\n"
    "changes, so do the configurations. Without a command it stays until it is told to\n"
    "end, and prints the line that directs another shell to the bus.\n"
    "\n"
    "The exit status is that of the command, and 128 plus the signal's number when a\n"
    "signal ended it; 2 for a mistake on the command line or in a file; 124 when the\n"
    "command succeeds and the expected calls have not come; 125 when the bus does not\n"
    "start, and 127 when the command does not.";

[[noreturn]] void end(const QString &mistake)
{
    printEvent(mistake, Tools::Style::Bad);
    std::exit(usageStatus);
}

// An option that takes a file and, if it is there, has one.
QString fileOf(const QCommandLineParser &parser, const QCommandLineOption &option)
{
    const QString file = parser.value(option);
    if (parser.isSet(option) && file.isEmpty())
        end(QStringLiteral("\"--%1\" needs the name of a file").arg(option.names().constFirst()));
    return file;
}

QCommandLineOption fileOption(const char *name, const char *text)
{
    return {QLatin1String(name), QLatin1String(text), QStringLiteral("FILE")};
}

} // namespace

Options parseCommandLine(const QStringList &arguments)
{
    const auto scenario = fileOption("scenario", "The applications and their configurations.");
    const auto check = fileOption(
        "check", "Check this and any further scenario files, and do nothing else.");
    const auto log = fileOption("log", "Record what happens, as JSON, one event on a line.");
    const auto expect = fileOption("expect", "The calls that must come.");
    const QCommandLineOption faults(
        QStringLiteral("list-faults"),
        QStringLiteral("List the faults that a scenario file can hold, and do nothing else."));
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(description));
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    // Qt's own would add a second one for options that this program does not have.
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help."));
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions({help, scenario, check, log, expect, faults});
    parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("What to run."),
                                 QStringLiteral("[-- COMMAND ARGS...]"));
    if (!parser.parse(arguments))
        end(parser.errorText());
    if (parser.isSet(version))
        parser.showVersion();
    if (parser.isSet(help))
        parser.showHelp();

    Options options;
    options.command = parser.positionalArguments();
    if (!fileOf(parser, check).isEmpty()) {
        options.checkFiles = parser.values(check);
        // As in "--check *.json"; what is behind "--" is a command.
        if (!arguments.contains(QStringLiteral("--")))
            options.checkFiles += options.command;
    }
    options.listsFaults = parser.isSet(faults);
    options.scenarioFile = fileOf(parser, scenario);
    options.logFile = fileOf(parser, log);
    options.expectationFile = fileOf(parser, expect);
    return options;
}

} // namespace Tarnvel::Sandbox
