// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "session.h"

#include "endpoint.h"
#include "process/termination_signals.h"
#include "report/event_formatter.h"
#include "scenario/scenario_reader.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>

#include <cstdlib>

namespace Tarnvel::Sandbox {

using Tools::Style;

Session::Session(const Options &options, const QString &directory)
    : m_options(options),
      m_log([this](const QJsonObject &record) { m_expectation.record(record); }),
      m_bus(directory)
{
}

int Session::execute(const QProcessEnvironment &environment, const SignalState &signals)
{
    const TerminationSignals terminationSignals(
        [this](int signal, bool isTyped) { end(signal, isTyped); });
    if (!prepare() || !startService())
        return m_failure;
    return judge(m_options.command.isEmpty() ? stay() : runCommand(environment, signals));
}

bool Session::prepare()
{
    QString mistake;
    const QString &expectationFile = m_options.expectationFile;
    if (!expectationFile.isEmpty() && !m_expectation.read(expectationFile, &mistake))
        return fail(mistake, usageStatus);
    if (!openLog())
        return false;
    if (m_options.scenarioFile.isEmpty())
        return true;
    // Before the file is read, so that no change falls in between.
    m_watch.emplace(m_options.scenarioFile, [this] { readAgain(); });
    mistake = m_watch->errorString();
    if (!mistake.isNull())
        return fail(mistake, usageStatus);
    const auto failures = readScenario(m_options.scenarioFile, &m_scenario);
    for (const Tools::Failure &failure : failures)
        fail(failure.text(), usageStatus);
    return failures.isEmpty();
}

bool Session::openLog()
{
    const QString &file = m_options.logFile;
    if (file.isEmpty())
        return true;
    for (const QString &other : {m_options.scenarioFile, m_options.expectationFile}) {
        if (!other.isEmpty() && QFileInfo(other) == QFileInfo(file))
            return fail(QStringLiteral("%1: the log would replace what is there").arg(file),
                        usageStatus);
    }
    return m_log.open(file) || fail(m_log.errorString(), usageStatus);
}

bool Session::startService()
{
    m_service.emplace(m_scenario, &m_log, [this] { m_bus.stop(); });
    if (!m_bus.start())
        return fail(m_bus.errorString(), busStatus);
    if (!m_service->open(m_bus.address()))
        return fail(m_service->errorString(), busStatus);
    return true;
}

int Session::stay()
{
    Tools::printLine(stdout,
                     QStringLiteral("export %1='%2'")
                         .arg(QLatin1String(DBus::busAddressVariable), m_bus.address()));
    return QCoreApplication::exec();
}

int Session::runCommand(QProcessEnvironment environment, const SignalState &signals)
{
    environment.insert(QLatin1String(DBus::busAddressVariable), m_bus.address());
    m_command.emplace(m_options.command, environment, signals);
    if (m_command->start([](int status) { QCoreApplication::exit(status); }))
        return QCoreApplication::exec();
    fail(m_command->errorString(), commandStatus);
    return m_failure;
}

// A command that has failed says more than a call that has not come.
int Session::judge(int status) const
{
    const QString missing = m_expectation.missing();
    if (missing.isEmpty())
        return status;
    printEvent(missing, Style::Bad);
    return status == EXIT_SUCCESS ? expectationStatus : status;
}

void Session::end(int signal, bool isTyped)
{
    if (m_command)
        m_command->end(signal, isTyped);
    else
        QCoreApplication::exit(EXIT_SUCCESS);
}

void Session::readAgain()
{
    const QString &file = m_options.scenarioFile;
    const auto failures = readScenario(file, &m_scenario);
    for (const Tools::Failure &failure : failures)
        m_log.report(scenarioEvent(file, failure.text(), Style::Bad));
    if (!failures.isEmpty())
        return;
    m_log.report(scenarioEvent(file, QStringLiteral("%1: read again").arg(file), Style::Aside));
    m_service->apply(m_scenario);
}

bool Session::fail(const QString &mistake, int status)
{
    printEvent(mistake, Style::Bad);
    m_failure = status;
    return false;
}

} // namespace Tarnvel::Sandbox
