// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command_line.h"

#include "arguments.h"
#include "endpoint.h"
#include "text.h"
#include "usage_failure.h"

#include <QtCore/QRegularExpression>

namespace Tarnvel::Client {

using Tools::Failure;

namespace {

const char description[] =
    "Reads, changes and follows the managed configuration of an application.\n"
    "\n"
    "Commands:\n"
    "  get [PATH]                print the configuration, or the value at PATH, as JSON\n"
    "  list [PATH]               print path, type and value of each setting on a line\n"
    "  set PATH[:TYPE]=VALUE...  change values, all in one request\n"
    "  set --from FILE           set the values in a JSON object such as get prints\n"
    "  watch [PATH]              print all values, then each change on a line\n"
    "  check                     check the bus, the service and the identity\n"
    "  check --schema FILE       check the settings with a schema, too\n"
    "\n"
    "PATH is one or more keys separated by \"/\". An item of a list is its key and\n"
    "\"[POSITION]\", such as window/sizes[0]. TYPE is int, bool, string, ints, bools,\n"
    "strings or configuration.\n"
    "\n"
    "The exit status is 0 for success, 1 to 8 for the error code of the service, 64 for a\n"
    "wrong command line or a change that needs --force, 65 for wrong values in a file or\n"
    "settings that do not agree with a schema, 66 for a path without a value or a file that\n"
    "cannot be read, 69 for no bus, no service or no reply, and 74 if the results cannot be\n"
    "written.";

// An option of one command.
struct CommandOption
{
    const char *command;
    const char *name;
    const char *description;
    // Null if the option has a value.
    bool CommandLine::*flag;
};

constexpr CommandOption commandOptions[] = {
    {"get", "type", "print types in place of values.", &CommandLine::showsTypes},
    {"get", "raw", "print strings and lists as plain text.", &CommandLine::isRaw},
    {"watch", "json", "print each difference as a JSON object.", &CommandLine::isJson},
    {"set", "dry-run", "print the differences that the change makes.", &CommandLine::isDryRun},
    {"set", "force", "make the change even if settings are lost.", &CommandLine::isForced},
    {"set", "from", "set the values in a JSON file; - is standard input.", nullptr},
    {"check", "schema", "check the settings; the schema has the identity.", nullptr},
};

void addCommandOptions(QCommandLineParser *parser)
{
    for (const CommandOption &option : commandOptions)
        parser->addOption(
            {QLatin1String(option.name),
             QStringLiteral("With %1: %2")
                 .arg(QLatin1String(option.command), QLatin1String(option.description)),
             option.flag ? QString() : QStringLiteral("FILE")});
}

Failure readCommandOptions(const QCommandLineParser &parser, CommandLine *commandLine)
{
    for (const CommandOption &option : commandOptions) {
        if (!parser.isSet(QLatin1String(option.name)))
            continue;
        if (commandLine->command != QLatin1String(option.command))
            return usageFailure(
                QStringLiteral("--%1 is an option of %2 only")
                    .arg(QLatin1String(option.name), QLatin1String(option.command)));
        if (option.flag)
            commandLine->*option.flag = true;
        else if ((commandLine->file = parser.value(QLatin1String(option.name))).isEmpty())
            return usageFailure(
                QStringLiteral("--%1 needs the name of a file").arg(QLatin1String(option.name)));
    }
    return {};
}

Failure decode(int count, const char *const *arguments, QStringList *decoded)
{
    for (int index = 0; index < count; ++index) {
        const QString argument = Tools::fromUtf8(arguments[index]);
        if (argument.toUtf8() != arguments[index])
            return usageFailure(QStringLiteral("\"%1\" is not UTF-8").arg(argument));
        decoded->append(argument);
    }
    return {};
}

Failure parseTimeout(const QString &text, int *timeoutMs)
{
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    // The library gives up a request after 25 seconds, and does not say that this was the reason.
    if (!isNumber || seconds < 0.1 || seconds > 20)
        return usageFailure(
            QStringLiteral("expected a timeout from 0.1 to 20 seconds, found \"%1\"").arg(text));
    *timeoutMs = qRound(seconds * 1000);
    return {};
}

} // namespace

Failure parseCommandLine(int count, const char *const *arguments, CommandLine *commandLine)
{
    QStringList decoded;
    if (const Failure failure = decode(count, arguments, &decoded))
        return failure;

    const QCommandLineOption organization(QStringLiteral("organization"),
                                          QStringLiteral("The organization of the application."),
                                          QStringLiteral("O"));
    const QCommandLineOption application(QStringLiteral("application"),
                                         QStringLiteral("The name of the application."),
                                         QStringLiteral("A"));
    const QCommandLineOption timeout(
        QStringLiteral("timeout"), QStringLiteral("How long to wait for a reply, from 0.1 to 20."),
        QStringLiteral("SECONDS"), QStringLiteral("20"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(description));
    parser.addOptions({organization, application, timeout});
    addCommandOptions(&parser);
    parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("What to do."),
                                 QStringLiteral("COMMAND [ARGUMENT...]"));
    if (const QString problem = Tools::parseArguments(decoded, &parser); !problem.isNull())
        return usageFailure(problem);

    for (const QCommandLineOption &option : {organization, application}) {
        // A schema says what application it is for.
        if (parser.value(option).isEmpty() && !parser.isSet(QStringLiteral("schema")))
            return usageFailure(QStringLiteral("--%1 is missing").arg(option.names().constFirst()));
    }
    const QStringList positional = parser.positionalArguments();
    if (positional.isEmpty())
        return usageFailure(QStringLiteral("the command is missing"));
    commandLine->organization = parser.value(organization);
    commandLine->application = parser.value(application);
    commandLine->command = positional.first();
    commandLine->arguments = positional.mid(1);
    if (const Failure failure = readCommandOptions(parser, commandLine))
        return failure;
    return parseTimeout(parser.value(timeout), &commandLine->timeoutMs);
}

Failure validateIdentity(const CommandLine &commandLine)
{
    static const QRegularExpression forbidden(QStringLiteral("[^A-Za-z0-9_/]|//|/$"));
    const QString path = DBus::applicationPath(commandLine.organization, commandLine.application);
    const QString found = forbidden.match(path).captured();
    if (found.isEmpty())
        return {};
    const QString message = found.startsWith(QLatin1Char('/'))
        ? QStringLiteral("an element of an object path cannot be empty")
        : QStringLiteral("\"%1\" is not allowed in an object path").arg(found);
    return {EX_USAGE, message,
            QStringLiteral("use the names by which the service knows the application; they consist "
                           "of letters, digits, \"_\" and \".\""),
            path};
}

} // namespace Tarnvel::Client
