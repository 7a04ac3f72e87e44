// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "private_bus.h"

#include "bus_connection.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFile>
#include <QtCore/QUrl>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace Tarnvel::Testing {

namespace {

// No <limit> elements: the daemon's defaults are those of a system bus, and a developer should run
// into them before the users do.
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

QString PrivateBus::start()
{
    if (m_ownDirectory && !m_ownDirectory->isValid())
        return m_ownDirectory->errorString();
    QFile file(m_directory.filePath(QStringLiteral("bus.conf")));
    const QByteArray text = QString::fromLatin1(configuration).arg(address()).toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.flush())
        return QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());

    // The daemon reports the errors of its clients there. A pipe that nobody reads would fill up
    // and block it.
    m_daemon.setStandardErrorFile(QProcess::nullDevice());
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                    QStringLiteral("--print-address=1"),
                    QStringLiteral("--config-file=") + file.fileName()});
    // The daemon prints its address once it listens.
    const QDeadlineTimer deadline(busTimeoutMs);
    while (!m_daemon.canReadLine()) {
        if (!m_daemon.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
            const QString error = m_daemon.errorString();
            stop();
            return QStringLiteral("dbus-daemon did not start: %1").arg(error);
        }
    }
    return {};
}

void PrivateBus::stop()
{
    m_daemon.kill();
    m_daemon.waitForFinished();
    QFile::remove(m_directory.filePath(QStringLiteral("socket")));
}

QString PrivateBus::address() const
{
    // Spaces, commas and others have a special meaning in an address.
    const QString socket = m_directory.filePath(QStringLiteral("socket"));
    return QStringLiteral("unix:path=")
        + QString::fromLatin1(QUrl::toPercentEncoding(socket, "/", "~"));
}

qint64 PrivateBus::processId() const
{
    return m_daemon.processId();
}

void PrivateBus::Daemon::prepareChild()
{
    // Ctrl+C at the terminal is for the applications, not for the bus.
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

} // namespace Tarnvel::Testing
