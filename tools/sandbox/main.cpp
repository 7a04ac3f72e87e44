// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command_line.h"
#include "process/private_directory.h"
#include "process/signal_state.h"
#include "process/supervisor.h"
#include "report/log.h"
#include "scenario/scenario_reader.h"
#include "session.h"
#include "standard_streams.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QProcessEnvironment>

#include <csignal>
#include <cstdlib>

using namespace Tarnvel::Sandbox;
using Tarnvel::Tools::printLine;
using Tarnvel::Tools::Style;

namespace {

int check(const QStringList &scenarioFiles)
{
    int status = EXIT_SUCCESS;
    for (const QString &scenarioFile : scenarioFiles) {
        Scenario scenario;
        const auto failures = readScenario(scenarioFile, &scenario);
        for (const Tarnvel::Tools::Failure &failure : failures) {
            printEvent(failure.text(), Style::Bad);
            status = usageStatus;
        }
        if (failures.isEmpty())
            printLine(stdout, scenarioFile + QStringLiteral(": no mistakes"), Style::Good);
    }
    return status;
}

QString whenText(const FaultDescription &description)
{
    if (description.comesWithCall && description.comesAtTime)
        return QStringLiteral("call, time");
    return description.comesWithCall ? QStringLiteral("call") : QStringLiteral("time");
}

int listFaults()
{
    constexpr int nameWidth = -18;
    constexpr int whenWidth = -12;
    for (const FaultDescription &description : faultDescriptions())
        printLine(stdout,
                  QStringLiteral("%1%2%3")
                      .arg(QLatin1String(description.name), nameWidth)
                      .arg(whenText(description), whenWidth)
                      .arg(QLatin1String(description.text)));
    return EXIT_SUCCESS;
}

int runSandbox(int argc, char *argv[], const PrivateDirectory &directory,
               const SignalState &inheritedSignals)
{
    // Whoever no longer reads what is printed has seen enough.
    std::signal(SIGPIPE, SIG_IGN);
    // The event loop must be GLib's; what the user has chosen is for the command.
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    qunsetenv("QT_NO_GLIB");
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("managed-configuration-sandbox"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SANDBOX_VERSION));
    const Options options = parseCommandLine(QCoreApplication::arguments());
    if (options.listsFaults)
        return listFaults();
    if (!options.checkFiles.isEmpty())
        return check(options.checkFiles);
    if (directory.path().empty()) {
        printEvent(QFile::decodeName(directory.errorString().c_str()), Style::Bad);
        return busStatus;
    }
    return Session(options, QFile::decodeName(directory.path().c_str()))
        .execute(environment, inheritedSignals);
}

} // namespace

int main(int argc, char *argv[])
{
    Tarnvel::Tools::reserveStandardStreams();
    // Before the command line is read: that takes an application object, and its event loop is not
    // for two processes.
    const SignalState inheritedSignals;
    return runSupervised([&](const PrivateDirectory &directory) {
        return runSandbox(argc, argv, directory, inheritedSignals);
    });
}
