// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command_line.h"

#include "arguments.h"
#include "exit_status.h"
#include "input_file.h"

namespace Tarnvel::Sandbox {

namespace {

const char description[] =
    "Runs a command on a private D-Bus system bus with a simulated managed-configuration\n"
    "service, which answers from a scenario file. When the file changes, so do the\n"
    "configurations. Without a command the sandbox runs until it is terminated, and prints\n"
    "a line that connects another shell to its bus. The name - of a file to read stands for\n"
    "standard input.\n"
    "\n"
    "The exit status is that of the command, or 128+n if signal n ended it; 124 if the\n"
    "command succeeds but an expectation is not met, 125 if the sandbox itself fails,\n"
    "126 if the command cannot be run, and 127 if it is not found.";

QCommandLineOption fileOption(const char *name, const char *text)
{
    return {QLatin1String(name), QLatin1String(text), QStringLiteral("FILE")};
}

Tools::Failure usageFailure(const QString &message)
{
    return {SandboxFailed, message};
}

} // namespace

Tools::Failure parseCommandLine(const QStringList &arguments, Options *options)
{
    const auto scenario = fileOption("scenario", "The applications and their configurations.");
    const auto check = fileOption("check", "Only check this and any further scenario files.");
    const QCommandLineOption strict(QStringLiteral("strict"),
                                    QStringLiteral("Check also for what can only be a slip."));
    const QCommandLineOption format(QStringLiteral("format"),
                                    QStringLiteral("What the check prints: \"text\" or \"json\"."),
                                    QStringLiteral("FORMAT"), QStringLiteral("text"));
    const auto log = fileOption("log", "Record each event in a file, as one line of JSON.");
    const auto expect = fileOption("expect", "The calls that must come, and settings at the end.");
    const QCommandLineOption faults(QStringLiteral("list-faults"),
                                    QStringLiteral("Only list the faults for scenario files."));
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(description));
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser.addOptions({scenario, check, strict, format, log, expect, faults});
    parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("What to run."),
                                 QStringLiteral("[-- COMMAND ARGS...]"));
    if (const QString problem = Tools::parseArguments(arguments, &parser); !problem.isNull())
        return usageFailure(problem);
    for (const QCommandLineOption &option : {scenario, check, log, expect}) {
        if (parser.values(option).contains(QString()))
            return usageFailure(QStringLiteral("\"--%1\" needs the name of a file")
                                    .arg(option.names().constFirst()));
    }

    options->command = parser.positionalArguments();
    if (options->command.isEmpty() && arguments.constLast() == QLatin1String("--"))
        return usageFailure(QStringLiteral("the command after \"--\" is missing"));
    options->checkFiles = parser.values(check);
    // As in "--check *.json"; what follows "--" is a command.
    if (parser.isSet(check) && !arguments.contains(QStringLiteral("--")))
        options->checkFiles += options->command;
    options->listsFaults = parser.isSet(faults);
    options->scenarioFile = parser.value(scenario);
    options->logFile = parser.value(log);
    options->expectationFile = parser.value(expect);
    const QStringList inputFiles = options->checkFiles + parser.values(scenario)
        + parser.values(expect);
    if (inputFiles.count(QLatin1String(Tools::standardInputName)) > 1)
        return usageFailure(QStringLiteral("only one file can be standard input"));
    options->isStrict = parser.isSet(strict);
    options->printsJson = parser.value(format) == QLatin1String("json");
    if (!parser.isSet(check) && (parser.isSet(strict) || parser.isSet(format)))
        return usageFailure(QStringLiteral("\"--strict\" and \"--format\" need \"--check\""));
    if (!options->printsJson && parser.value(format) != QLatin1String("text"))
        return usageFailure(
            QStringLiteral("\"--format\" is text or json, not \"%1\"").arg(parser.value(format)));
    return {};
}

} // namespace Tarnvel::Sandbox
