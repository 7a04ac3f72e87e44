// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command.h"
#include "descendants.h"
#include "end_signals.h"
#include "file_watch.h"
#include "log.h"
#include "private_bus.h"
#include "stand_in_service.h"
#include "world.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QTextStream>

#include <cstdlib>
#include <optional>

using namespace Tarnvel::Sandbox;

namespace {

constexpr int usageStatus = 2;
constexpr int busStatus = 125;
constexpr int commandStatus = 127;

const char description[] =
    "Runs a command on a private D-Bus system bus with a stand-in for the\n"
    "managed-configuration service, which answers as a world file says. When the file\n"
    "changes, so do the configurations. Without a command it stays until it is told to\n"
    "end, and prints the line that directs another shell to the bus.\n"
    "\n"
    "The exit status is that of the command, and 128 plus the signal's number when a\n"
    "signal ended it; 2 for a mistake on the command line or in the world file; 125 when\n"
    "the bus does not start, and 127 when the command does not.";

struct Options
{
    QString worldFile;
    QStringList command;
};

// Ends the process when there is nothing to run.
Options parseCommandLine(const QStringList &arguments)
{
    const QCommandLineOption world(QStringLiteral("world"),
                                   QStringLiteral("The applications and their configurations."),
                                   QStringLiteral("FILE"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(description));
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOption(world);
    parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("What to run."),
                                 QStringLiteral("[-- COMMAND ARGS...]"));
    if (!parser.parse(arguments)) {
        printEvent(parser.errorText());
        std::exit(usageStatus);
    }
    if (parser.isSet(version))
        parser.showVersion();
    if (parser.isSet(help))
        parser.showHelp();
    const QString worldFile = parser.value(world);
    if (parser.isSet(world) && worldFile.isEmpty()) {
        printEvent(QStringLiteral("\"--world\" needs the name of a file"));
        std::exit(usageStatus);
    }
    return {worldFile, parser.positionalArguments()};
}

int fail(const QString &mistake, int status)
{
    printEvent(mistake);
    return status;
}

void readAgain(const QString &worldFile, StandInService *service)
{
    World world;
    QString mistake;
    if (!readWorld(worldFile, &world, &mistake)) {
        printEvent(mistake + QStringLiteral("; nothing is changed"));
        return;
    }
    printEvent(QStringLiteral("%1: read again").arg(worldFile));
    service->takeOver(world);
}

int stay(const QString &address)
{
    QTextStream(stdout) << "export DBUS_SYSTEM_BUS_ADDRESS='" << address << "'" << Qt::endl;
    return QCoreApplication::exec();
}

int runCommand(Command *command)
{
    if (!command->start([](int status) { QCoreApplication::exit(status); }))
        return fail(command->errorString(), commandStatus);
    return QCoreApplication::exec();
}

int run(const Options &options, QProcessEnvironment environment)
{
    std::optional<Command> command;
    const EndSignals signals([&command](int signal) {
        if (command)
            command->end(signal);
        else
            QCoreApplication::exit(EXIT_SUCCESS);
    });

    std::optional<StandInService> service;
    std::optional<FileWatch> watch;
    World world;
    if (!options.worldFile.isEmpty()) {
        // Before the file is read, so that no change falls in between.
        watch.emplace(options.worldFile, [&] { readAgain(options.worldFile, &*service); });
        QString mistake = watch->errorString();
        if (!mistake.isNull() || !readWorld(options.worldFile, &world, &mistake))
            return fail(mistake, usageStatus);
    }

    const Descendants descendants;
    PrivateBus bus;
    service.emplace(world);
    if (!bus.start())
        return fail(bus.errorString(), busStatus);
    if (!service->open(bus.address()))
        return fail(service->errorString(), busStatus);
    if (options.command.isEmpty())
        return stay(bus.address());
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), bus.address());
    command.emplace(options.command, environment);
    return runCommand(&*command);
}

} // namespace

int main(int argc, char *argv[])
{
    // The event loop must be GLib's; what the user has chosen is for the command.
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    qunsetenv("QT_NO_GLIB");
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("managed-configuration-sandbox"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SANDBOX_VERSION));
    return run(parseCommandLine(QCoreApplication::arguments()), environment);
}
