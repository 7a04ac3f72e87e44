// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "check/scenario_check.h"
#include "command_line.h"
#include "exit_status.h"
#include "process/command.h"
#include "process/private_directory.h"
#include "process/supervisor.h"
#include "report/log.h"
#include "scenario/fault.h"
#include "session.h"
#include "standard_streams.h"

#include <QtCore/QCoreApplication>

#include <clocale>
#include <cstdlib>

using namespace Tarnvel::Sandbox;
using Tarnvel::Tools::Failure;
using Tarnvel::Tools::printLine;
using Tarnvel::Tools::Style;

namespace {

constexpr char noGlibVariable[] = "QT_NO_GLIB";

QString whenText(const FaultDescription &description)
{
    if (description.affectsCalls && description.happensAtTime)
        return QStringLiteral("call, time");
    return description.affectsCalls ? QStringLiteral("call") : QStringLiteral("time");
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

int fail(const Failure &failure)
{
    printEvent(failure.text(), Style::Bad);
    return failure.status;
}

int runSandbox(int argc, char *argv[], const SignalState &signals)
{
    // The event loop must be GLib's; the setting of the user is for the command.
    const QByteArray userSetting = qgetenv(noGlibVariable);
    qunsetenv(noGlibVariable);
    QCoreApplication application(argc, argv);
    if (!userSetting.isNull())
        qputenv(noGlibVariable, userSetting);
    QCoreApplication::setApplicationName(QStringLiteral("managed-configuration-sandbox"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SANDBOX_VERSION));

    Options options;
    if (const Failure failure = parseCommandLine(QCoreApplication::arguments(), &options))
        return fail(failure);
    if (options.listsFaults)
        return listFaults();
    if (!options.checkFiles.isEmpty())
        return checkScenarios(options);
    PrivateDirectory directory;
    if (const Failure failure = directory.create())
        return fail(failure);
    return Session(options, directory.path()).execute(signals);
}

} // namespace

int main(int argc, char *argv[])
{
    Tarnvel::Tools::reserveStandardStreams();
    // As the application object does, which the supervisor does not have: file names depend on it.
    std::setlocale(LC_ALL, "");
    const SignalState signals;
    const int status = runSupervised([&] { return runSandbox(argc, argv, signals); });
    // A worker that was killed could not remove its directory.
    PrivateDirectory::removeAbandoned();
    return status;
}
