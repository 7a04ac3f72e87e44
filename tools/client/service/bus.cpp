// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus.h"

#include "endpoint.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QThread>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusError>
#include <QtDBus/QDBusMessage>

#include <sysexits.h>

namespace Tarnvel::Client {

using Tools::Failure;

namespace {

constexpr char sandboxHint[] = "or run this in managed-configuration-sandbox";

Failure busFailure(const QString &reason)
{
    return {EX_UNAVAILABLE, QStringLiteral("no bus at %1: %2").arg(busAddressText(), reason),
            QStringLiteral("start the bus, correct %1, %2")
                .arg(QLatin1String(DBus::busAddressVariable), QLatin1String(sandboxHint))};
}

QDBusMessage askBus(const QString &method, const QVariantList &arguments, int timeoutMs)
{
    const QString name = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage message = QDBusMessage::createMethodCall(
        name, QStringLiteral("/org/freedesktop/DBus"), name, method);
    message.setArguments(arguments);
    return QDBusConnection::systemBus().call(message, QDBus::Block, timeoutMs);
}

} // namespace

Failure openBus(int timeoutMs)
{
    // Qt D-Bus has no timeout for a bus that accepts connections but does not reply.
    QThread *const opener = QThread::create([] { QDBusConnection::systemBus(); });
    opener->start();
    if (!opener->wait(QDeadlineTimer(timeoutMs)))
        return busFailure(QStringLiteral("no reply within %1 s").arg(timeoutMs / 1000.0));
    delete opener;
    const QDBusConnection bus = QDBusConnection::systemBus();
    return bus.isConnected() ? Failure() : busFailure(bus.lastError().message());
}

Failure findService(int timeoutMs, ServiceState *state)
{
    const QString name = QLatin1String(DBus::serviceName);
    const QDBusMessage owned = askBus(QStringLiteral("NameHasOwner"), {name}, timeoutMs);
    const QDBusMessage names = askBus(QStringLiteral("ListActivatableNames"), {}, timeoutMs);
    for (const QDBusMessage &reply : {owned, names}) {
        if (reply.type() != QDBusMessage::ReplyMessage)
            return busFailure(reply.errorMessage());
    }
    *state = owned.arguments().value(0).toBool()                   ? ServiceState::Running
        : names.arguments().value(0).toStringList().contains(name) ? ServiceState::Activatable
                                                                   : ServiceState::Absent;
    return {};
}

uint serviceProcessId(int timeoutMs)
{
    const QDBusMessage reply = askBus(QStringLiteral("GetConnectionUnixProcessID"),
                                      {QLatin1String(DBus::serviceName)}, timeoutMs);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0).toUInt() : 0;
}

QString busAddressText()
{
    const QString address = qEnvironmentVariable(DBus::busAddressVariable);
    return address.isEmpty()
        ? QStringLiteral("the default address of the system bus")
        : QStringLiteral("%1 (from %2)").arg(address, QLatin1String(DBus::busAddressVariable));
}

Failure absentServiceFailure()
{
    return {EX_UNAVAILABLE,
            QStringLiteral("no service: %1 is not running, and the bus cannot start it")
                .arg(QLatin1String(DBus::serviceName)),
            QStringLiteral("start it, ") + QLatin1String(sandboxHint)};
}

} // namespace Tarnvel::Client
