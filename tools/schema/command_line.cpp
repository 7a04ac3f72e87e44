// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command_line.h"

#include "arguments.h"
#include "input_file.h"

#include <sysexits.h>

namespace Tarnvel::Schema {

namespace {

const char description[] =
    "Works with schemas of managed settings.\n"
    "\n"
    "Commands:\n"
    "  check SCHEMA SCENARIO...   Check the configurations in scenarios.\n"
    "  docs SCHEMA                Write a document in Markdown, for pandoc.\n"
    "  infer SCENARIO             Write a schema of the configuration in a scenario.\n"
    "  scenario SCHEMA            Write a scenario with the defaults, which names the schema.\n"
    "  header SCHEMA --class NAME Write a C++ header with a class for the settings.\n"
    "\n"
    "The file name - stands for standard input, or for standard output.\n"
    "\n"
    "The exit status is 0 if all is well, 64 for a wrong command line, 65 if something in a\n"
    "file is invalid, 66 if a file cannot be read, and 73 if the output cannot be written.\n"
    "The highest one counts.";

} // namespace

Tools::Failure usageFailure(const QString &message)
{
    return {EX_USAGE, message, QStringLiteral("see managed-configuration-schema --help")};
}

Tools::Failure parseCommandLine(const QStringList &arguments, CommandLine *commandLine)
{
    const QCommandLineOption className(QStringLiteral("class"),
                                       QStringLiteral("The name of the generated class."),
                                       QStringLiteral("NAME"));
    const QCommandLineOption application(
        QStringLiteral("application"),
        QStringLiteral("The application in the scenario, such as acme/viewer."),
        QStringLiteral("NAME"));
    const QCommandLineOption output({QStringLiteral("o"), QStringLiteral("output")},
                                    QStringLiteral("Write to this file, not to standard output."),
                                    QStringLiteral("FILE"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(description));
    parser.addOptions({className, application, output});
    parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("What to do."));
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The files to read."),
                                 QStringLiteral("FILE..."));
    if (const QString problem = Tools::parseArguments(arguments, &parser); !problem.isNull())
        return usageFailure(problem);
    commandLine->files = parser.positionalArguments();
    if (commandLine->files.isEmpty())
        return usageFailure(QStringLiteral("the command is missing"));
    commandLine->command = commandLine->files.takeFirst();
    if (commandLine->files.count(QLatin1String(Tools::standardInputName)) > 1)
        return usageFailure(QStringLiteral("only one file can be standard input"));
    commandLine->className = parser.value(className);
    commandLine->application = parser.value(application);
    commandLine->outputFile = parser.value(output);
    for (const QCommandLineOption &option : {className, application, output}) {
        if (!parser.isSet(option))
            continue;
        commandLine->options.append(option.names().constLast());
        if (parser.value(option).isEmpty())
            return usageFailure(
                QStringLiteral("\"--%1\" needs a value").arg(option.names().constLast()));
    }
    if (commandLine->outputFile == QLatin1String(Tools::standardInputName))
        commandLine->outputFile.clear();
    return {};
}

} // namespace Tarnvel::Schema
