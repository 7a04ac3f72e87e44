// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command_line.h"
#include "commands/commands.h"
#include "output.h"
#include "service/bus.h"
#include "standard_streams.h"

#include <QtCore/QCoreApplication>

#include <csignal>
#include <cstdlib>

using namespace Tarnvel::Client;

namespace {

struct Command
{
    const char *name;
    Failure (*begin)(const CommandLine &commandLine);
};

constexpr Command commands[] = {{"get", get}, {"set", set}, {"watch", watch}, {"check", check}};

void printMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    printNote(message);
}

Failure begin(const CommandLine &commandLine)
{
    for (const Command &command : commands) {
        if (commandLine.command != QLatin1String(command.name))
            continue;
        if (commandLine.showsTypes && command.begin != get)
            return usageFailure(QStringLiteral("--type goes with get only"));
        const Failure failure = checkIdentity(commandLine);
        // What is amiss with the identity is among the findings of a check.
        return failure && command.begin != check ? failure : command.begin(commandLine);
    }
    return usageFailure(QStringLiteral("there is no command \"%1\"").arg(commandLine.command));
}

int run(int argc, char *argv[])
{
    Tarnvel::Tools::reserveStandardStreams();
    // Writing to a channel that nobody reads any more is to fail and do no more.
    std::signal(SIGPIPE, SIG_IGN);
    qInstallMessageHandler(printMessage);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("managed-configuration"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CLIENT_VERSION));

    CommandLine commandLine;
    Failure failure = parseCommandLine(argc, argv, &commandLine);
    // From here on the program bears the names of the application for which it asks.
    QCoreApplication::setOrganizationName(commandLine.organization);
    QCoreApplication::setApplicationName(commandLine.application);
    if (!failure)
        failure = begin(commandLine);
    return failure ? report(failure) : QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    const int status = run(argc, argv);
    if (isBusHanging())
        std::_Exit(status);
    return status;
}
