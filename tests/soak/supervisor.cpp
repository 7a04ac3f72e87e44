// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "supervisor.h"

#include "agreement.h"

#include <QtCore/QStringList>

#include <csignal>
#include <sys/prctl.h>

namespace Tarnvel::Soak {

namespace {

constexpr int endTimeoutMs = 10000;

} // namespace

Supervisor::Supervisor(const QString &address, unsigned int seed) : m_address(address), m_seed(seed)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QObject::connect(&m_process, &QProcess::readyReadStandardOutput, &m_process,
                     [this] { readOutput(); });
    QObject::connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished),
                     &m_process, [this](int code, QProcess::ExitStatus status) {
                         finishLife(status == QProcess::NormalExit ? code : -code);
                     });
}

Supervisor::~Supervisor()
{
    m_process.disconnect();
    m_process.kill();
    m_process.waitForFinished();
}

void Supervisor::start(const std::function<void()> &ready)
{
    m_ready = ready;
    startLife();
}

bool Supervisor::isUp() const
{
    return m_isUp;
}

void Supervisor::expectDeath()
{
    m_isUp = false;
    m_expectedStatus = diedStatus;
}

void Supervisor::end()
{
    m_isUp = false;
    m_expectedStatus = 0;
    m_process.terminate();
}

int Supervisor::deaths() const
{
    return m_deaths;
}

int Supervisor::goodEnds() const
{
    return m_goodEnds;
}

const QMap<QString, qint64> &Supervisor::tally() const
{
    return m_tally;
}

void Supervisor::stop()
{
    m_isStopping = true;
    end();
    if (!m_process.waitForFinished(endTimeoutMs))
        qFatal("the service did not end");
}

void Supervisor::startLife()
{
    ++m_lives;
    m_process.start(QStringLiteral(SOAK_SERVICE),
                    {m_address, QString::number(m_seed + static_cast<unsigned int>(m_lives))});
    if (!m_process.waitForStarted())
        qFatal("%s: %s", SOAK_SERVICE, qUtf8Printable(m_process.errorString()));
}

void Supervisor::readOutput()
{
    while (m_process.canReadLine()) {
        const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
        if (line == QLatin1String(readyLine)) {
            m_isUp = true;
            m_ready();
        } else {
            addToTally(line.section(QLatin1Char(' '), 1));
        }
    }
}

void Supervisor::addToTally(const QString &entries)
{
    const QStringList list = entries.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &entry : list)
        m_tally[entry.section(QLatin1Char('='), 0, 0)] += entry.section(QLatin1Char('='), 1)
                                                              .toLongLong();
}

void Supervisor::finishLife(int status)
{
    readOutput();
    if (status != m_expectedStatus)
        qFatal("the service ended with status %d in place of %d", status, m_expectedStatus);
    m_expectedStatus = -1;
    ++(status == diedStatus ? m_deaths : m_goodEnds);
    if (!m_isStopping)
        startLife();
}

void Supervisor::Process::setupChildProcess()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

} // namespace Tarnvel::Soak
