// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "private_bus.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFile>
#include <QtCore/QUrl>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace Tarnvel::Testing {

namespace {

constexpr int startTimeoutMs = 10000;

// No <limit> elements: the daemon's own defaults are those of a system bus, and an application
// should meet them on its developer's desk first.
const char configuration[] = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*"/>
    <allow send_type="signal"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
    <allow own="*"/>
    <allow user="*"/>
  </policy>
</busconfig>
)";

} // namespace

PrivateBus::PrivateBus() : m_ownDirectory(std::in_place), m_directory(m_ownDirectory->path()) { }

PrivateBus::PrivateBus(const QString &directory) : m_directory(directory) { }

PrivateBus::~PrivateBus()
{
    stop();
}

bool PrivateBus::start()
{
    const QString configurationFile = m_directory.filePath(QStringLiteral("bus.conf"));
    if (m_ownDirectory && !m_ownDirectory->isValid()) {
        m_errorString = m_ownDirectory->errorString();
        return false;
    }
    if (!writeConfiguration(configurationFile))
        return false;

    // There the daemon reports what its clients do wrong. Nobody reads that, and a pipe that nobody
    // reads would fill, and the daemon would wait for ever to write into it.
    m_daemon.setStandardErrorFile(QProcess::nullDevice());
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                    QStringLiteral("--print-address=1"),
                    QStringLiteral("--config-file=") + configurationFile});
    return waitForAddress();
}

void PrivateBus::stop()
{
    m_daemon.kill();
    m_daemon.waitForFinished();
    QFile::remove(m_directory.filePath(QStringLiteral("socket")));
}

QString PrivateBus::address() const
{
    // The address keeps blanks, commas and the like for its own use.
    const QString socket = m_directory.filePath(QStringLiteral("socket"));
    return QStringLiteral("unix:path=")
        + QString::fromLatin1(QUrl::toPercentEncoding(socket, "/", "~"));
}

qint64 PrivateBus::processId() const
{
    return m_daemon.processId();
}

QString PrivateBus::errorString() const
{
    return m_errorString;
}

bool PrivateBus::writeConfiguration(const QString &fileName)
{
    QFile file(fileName);
    const QByteArray text = QString::fromLatin1(configuration).arg(address()).toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        m_errorString = QStringLiteral("%1: %2").arg(fileName, file.errorString());
        return false;
    }
    return true;
}

bool PrivateBus::waitForAddress()
{
    // The daemon prints its address once it listens.
    const QDeadlineTimer deadline(startTimeoutMs);
    while (!m_daemon.canReadLine()) {
        if (!m_daemon.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
            m_errorString = QStringLiteral("dbus-daemon did not start: %1")
                                .arg(m_daemon.errorString());
            stop();
            return false;
        }
    }
    return true;
}

void PrivateBus::Daemon::setupChildProcess()
{
    // What is typed at the terminal is for the applications on the bus.
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

} // namespace Tarnvel::Testing
