// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "session.h"

#include "endpoint.h"
#include "exit_status.h"
#include "input_file.h"
#include "process/termination_signals.h"
#include "report/event_formatter.h"
#include "report/expectation_reader.h"
#include "scenario/scenario_reader.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>

#include <cerrno>
#include <cstdlib>
#include <utility>

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
    QVector<Tools::Failure> failures = readFiles();
    if (failures.isEmpty()) {
        if (const Tools::Failure failure = start(signals))
            failures.append(failure);
    }
    for (const Tools::Failure &failure : qAsConst(failures))
        printEvent(failure.text(), Style::Bad);
    if (!failures.isEmpty())
        return failures.first().status;
    return statusAfter(QCoreApplication::exec());
}

QVector<Tools::Failure> Session::readFiles()
{
    QVector<Tools::Failure> failures;
    Scenario scenario;
    if (!m_options.scenarioFile.isEmpty()) {
        if (const Tools::Failure failure = startWatch())
            return {failure};
        failures = readScenario(m_options.scenarioFile, &scenario, &m_cache);
    }
    if (failures.isEmpty() && !m_options.expectationFile.isEmpty())
        failures = readExpectation(m_options.expectationFile, scenario, &m_expectation);
    m_service.emplace(std::move(scenario), &m_log, [this] { m_bus.stop(); });
    return failures;
}

// Before the file is read, so that no change is missed.
Tools::Failure Session::startWatch()
{
    if (m_options.scenarioFile == QLatin1String(Tools::standardInputName))
        return {};
    m_watch.emplace(m_options.scenarioFile, [this] { reload(); });
    return m_watch->start();
}

Tools::Failure Session::start(const SignalState &signals)
{
    Tools::Failure failure = openLog();
    if (!failure)
        failure = startService();
    if (failure)
        return failure;
    return m_options.command.isEmpty() ? printAddress() : startCommand(signals);
}

Tools::Failure Session::openLog()
{
    const QString &file = m_options.logFile;
    if (file.isEmpty())
        return {};
    for (const QString &input : {m_options.scenarioFile, m_options.expectationFile}) {
        if (!input.isEmpty() && QFileInfo(input) == QFileInfo(file))
            return {SandboxFailed, QStringLiteral("the log would overwrite this file"), {}, file};
    }
    return m_log.open(file);
}

Tools::Failure Session::startService()
{
    const QString error = m_bus.start();
    if (!error.isNull())
        return {SandboxFailed, error};
    return m_service->open(m_bus.address());
}

Tools::Failure Session::printAddress() const
{
    errno = 0;
    Tools::printLine(stdout,
                     QStringLiteral("export %1='%2'")
                         .arg(QLatin1String(DBus::busAddressVariable), m_bus.address()));
    if (!std::ferror(stdout))
        return {};
    return {SandboxFailed,
            QStringLiteral("cannot write to standard output: %1").arg(qt_error_string(errno))};
}

Tools::Failure Session::startCommand(const SignalState &signals)
{
    m_command.emplace();
    return m_command->start(m_options.command, m_bus.address(), signals,
                            [](int status) { QCoreApplication::exit(status); });
}

// The failure of a command says more than what was expected.
int Session::statusAfter(int status) const
{
    const QVector<Tools::Failure> unmet = m_expectation.unmet(
        [this](const QString &path) { return m_service->configurationAt(path); });
    for (const Tools::Failure &failure : unmet)
        printEvent(failure.text(), Style::Bad);
    return status == EXIT_SUCCESS && !unmet.isEmpty() ? ExpectationsNotMet : status;
}

void Session::end(int signal, bool isTyped)
{
    if (m_command)
        m_command->end(signal, isTyped);
    else
        QCoreApplication::exit(EXIT_SUCCESS);
}

void Session::reload()
{
    const QString &file = m_options.scenarioFile;
    Scenario scenario;
    const QVector<Tools::Failure> failures = readScenario(file, &scenario, &m_cache);
    for (const Tools::Failure &failure : failures)
        m_log.report(scenarioEvent(file, failure.text(), Style::Bad));
    if (!failures.isEmpty()) {
        const auto kept = QStringLiteral("%1: not reloaded, the last valid scenario stays");
        return m_log.report(scenarioEvent(file, kept.arg(file), Style::Bad));
    }
    m_log.report(scenarioEvent(file, QStringLiteral("%1: reloaded").arg(file), Style::Aside));
    m_service->apply(std::move(scenario));
}

} // namespace Tarnvel::Sandbox
