// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command_line.h"
#include "commands/commands.h"
#include "output.h"
#include "standard_streams.h"
#include "usage_failure.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSet>

#include <csignal>
#include <cstdlib>

using namespace Tarnvel::Client;
using Tarnvel::Tools::Failure;

namespace {

struct Command
{
    const char *name;
    Failure (*run)(const CommandLine &commandLine);
};

constexpr Command commands[] = {
    {"get", get}, {"list", list}, {"set", set}, {"watch", watch}, {"check", check},
};

// The library repeats its warnings each time it reads the same configuration.
void printMessageOnce(QtMsgType, const QMessageLogContext &, const QString &message)
{
    static QSet<QString> printed;
    if (!printed.contains(message))
        printNote(message);
    printed.insert(message);
}

Failure run(const CommandLine &commandLine)
{
    for (const Command &command : commands) {
        if (commandLine.command != QLatin1String(command.name))
            continue;
        const Failure failure = validateIdentity(commandLine);
        // The check itself says what is wrong with the identity.
        return failure && command.run != check ? failure : command.run(commandLine);
    }
    return usageFailure(QStringLiteral("there is no command \"%1\"").arg(commandLine.command));
}

} // namespace

int main(int argc, char *argv[])
{
    Tarnvel::Tools::reserveStandardStreams();
    // A broken pipe must fail the write, not kill us.
    std::signal(SIGPIPE, SIG_IGN);
    qInstallMessageHandler(printMessageOnce);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("managed-configuration"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CLIENT_VERSION));

    CommandLine commandLine;
    Failure failure = parseCommandLine(argc, argv, &commandLine);
    if (!failure) {
        // The library asks for the configuration of the application with these names.
        QCoreApplication::setOrganizationName(commandLine.organization);
        QCoreApplication::setApplicationName(commandLine.application);
        failure = run(commandLine);
    }
    report(failure);
    // A normal exit would wait for Qt D-Bus, which may be waiting for a bus that does not reply.
    std::quick_exit(failure.status);
}
