// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "session.h"

#include "endpoint.h"
#include "exit_status.h"
#include "process/termination_signals.h"
#include "report/event_formatter.h"

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

int Session::execute(const SignalState &signals)
{
    const TerminationSignals terminationSignals(
        [this](int signal, bool isTyped) { end(signal, isTyped); });
    if (!prepare() || !startService())
        return m_failure;
    return judge(m_options.command.isEmpty() ? stay() : runCommand(signals));
}

bool Session::prepare()
{
    QString mistake;
    const QString &expectationFile = m_options.expectationFile;
    if (!expectationFile.isEmpty() && !m_expectation.read(expectationFile, &mistake))
        return fail(mistake, SandboxFailed);
    if (!openLog())
        return false;
    if (m_options.scenarioFile.isEmpty())
        return true;
    // Before the file is read, so that no change falls in between.
    m_watch.emplace(m_options.scenarioFile, [this] { readAgain(); });
    mistake = m_watch->errorString();
    if (!mistake.isNull() || !readScenario(m_options.scenarioFile, &m_scenario, &mistake))
        return fail(mistake, SandboxFailed);
    return true;
}

bool Session::openLog()
{
    const QString &file = m_options.logFile;
    if (file.isEmpty())
        return true;
    for (const QString &other : {m_options.scenarioFile, m_options.expectationFile}) {
        if (!other.isEmpty() && QFileInfo(other) == QFileInfo(file))
            return fail(QStringLiteral("%1: the log would replace what is there").arg(file),
                        SandboxFailed);
    }
    return m_log.open(file) || fail(m_log.errorString(), SandboxFailed);
}

bool Session::startService()
{
    m_service.emplace(m_scenario, &m_log, [this] { m_bus.stop(); });
    if (!m_bus.start())
        return fail(m_bus.errorString(), SandboxFailed);
    if (!m_service->open(m_bus.address()))
        return fail(m_service->errorString(), SandboxFailed);
    return true;
}

int Session::stay()
{
    Tools::printLine(stdout,
                     QStringLiteral("export %1='%2'")
                         .arg(QLatin1String(DBus::busAddressVariable), m_bus.address()));
    return QCoreApplication::exec();
}

int Session::runCommand(const SignalState &signals)
{
    m_command.emplace();
    const Tools::Failure failure = m_command->start(
        m_options.command, m_bus.address(), signals,
        [](int status) { QCoreApplication::exit(status); });
    if (!failure)
        return QCoreApplication::exec();
    fail(failure.text(), failure.status);
    return m_failure;
}

// A command that has failed says more than a call that has not come.
int Session::judge(int status) const
{
    const QString missing = m_expectation.missing();
    if (missing.isEmpty())
        return status;
    printEvent(missing, Style::Bad);
    return status == EXIT_SUCCESS ? ExpectationsNotMet : status;
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
    QString mistake;
    if (!readScenario(file, &m_scenario, &mistake)) {
        m_log.report(scenarioEvent(file, mistake, Style::Bad));
        return;
    }
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
