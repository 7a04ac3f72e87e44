// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "program.h"

#include "waiting.h"

#include <QtCore/QDir>

#include <csignal>

namespace Tarnvel::Testing {

Program::Program(const QString &name)
    : m_name(QDir(QStringLiteral(INSTALLED_PROGRAMS)).filePath(name)),
      m_environment(QProcessEnvironment::systemEnvironment())
{
    setVariable(QStringLiteral("LD_LIBRARY_PATH"), QStringLiteral(INSTALLED_LIBRARIES));
    setVariable(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
}

Program::~Program()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(waitTimeoutMs);
}

void Program::setVariable(const QString &name, const QString &value)
{
    if (value.isNull())
        m_environment.remove(name);
    else
        m_environment.insert(name, value);
}

void Program::start(const QStringList &arguments)
{
    m_process.setProcessEnvironment(m_environment);
    m_process.start(m_name, arguments);
}

void Program::send(int signal)
{
    ::kill(static_cast<pid_t>(m_process.processId()), signal);
}

QString Program::readLine()
{
    return readLine(QProcess::StandardOutput);
}

QString Program::readErrorLine()
{
    return readLine(QProcess::StandardError);
}

Outcome Program::finish()
{
    const bool isOver = QTest::qWaitFor(
        [this] { return m_process.state() == QProcess::NotRunning; }, waitTimeoutMs);
    const bool hasStatus = isOver && m_process.error() == QProcess::UnknownError
        && m_process.exitStatus() == QProcess::NormalExit;
    return {hasStatus ? m_process.exitCode() : -1,
            QString::fromUtf8(m_process.readAllStandardOutput()),
            QString::fromUtf8(m_process.readAllStandardError())};
}

Outcome Program::run(const QStringList &arguments)
{
    start(arguments);
    return finish();
}

QString Program::readLine(QProcess::ProcessChannel channel)
{
    m_process.setReadChannel(channel);
    const bool isThere = QTest::qWaitFor(
        [this] { return m_process.canReadLine() || m_process.state() == QProcess::NotRunning; },
        waitTimeoutMs);
    if (!isThere || !m_process.canReadLine())
        return QStringLiteral("no line: ") + QString::fromUtf8(m_process.readAllStandardOutput())
            + QString::fromUtf8(m_process.readAllStandardError());
    return QString::fromUtf8(m_process.readLine()).chopped(1);
}

QStringList clientArguments(const QStringList &arguments)
{
    return QStringList {QStringLiteral("--organization"), QStringLiteral("acme.labs"),
                        QStringLiteral("--application"), QStringLiteral("viewer")}
    + arguments;
}

} // namespace Tarnvel::Testing
