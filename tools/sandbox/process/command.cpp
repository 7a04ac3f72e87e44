// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command.h"

#include <QtCore/QTimer>

#include <csignal>
#include <sys/prctl.h>

namespace Tarnvel::Sandbox {

namespace {

constexpr int endTimeoutMs = 5000;
constexpr int startTimeoutMs = 10000;
constexpr int signalStatusBase = 128;

} // namespace

Command::Command(const QStringList &words, const QProcessEnvironment &environment,
                 const SignalState &signals)
    : m_process(signals)
{
    m_process.setProgram(words.first());
    m_process.setArguments(words.mid(1));
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
}

bool Command::start(const std::function<void(int status)> &finished)
{
    QObject::connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished),
                     &m_process, [finished](int code, QProcess::ExitStatus status) {
                         finished(status == QProcess::NormalExit ? code : signalStatusBase + code);
                     });
    m_process.start();
    return m_process.waitForStarted(startTimeoutMs);
}

void Command::end(int signal, bool isTyped)
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    if (!isTyped)
        ::kill(static_cast<pid_t>(m_process.processId()), signal);
    QTimer::singleShot(endTimeoutMs, &m_process, &QProcess::kill);
}

QString Command::errorString() const
{
    return QStringLiteral("%1: %2").arg(m_process.program(), m_process.errorString());
}

Command::Process::Process(const SignalState &signals) : m_signals(signals) { }

void Command::Process::setupChildProcess()
{
    m_signals.restore();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

} // namespace Tarnvel::Sandbox
