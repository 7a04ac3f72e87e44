// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus.h"

#include "endpoint.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusError>
#include <QtDBus/QDBusMessage>

#include <chrono>
#include <future>
#include <thread>

namespace Tarnvel::Client {

namespace {

// Ready when the bus layer has connected or failed to.
std::future<void> &opening()
{
    static std::future<void> future;
    return future;
}

bool isOpeningOver(int timeoutMs)
{
    return opening().wait_for(std::chrono::milliseconds(timeoutMs)) == std::future_status::ready;
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
    // The bus layer waits for the bus without end.
    std::packaged_task<void()> open([] { QDBusConnection::systemBus(); });
    opening() = open.get_future();
    std::thread(std::move(open)).detach();
    if (!isOpeningOver(timeoutMs))
        return busFailure(
            QStringLiteral("it does not answer within %1 seconds").arg(timeoutMs / 1000.0));
    const QDBusConnection bus = QDBusConnection::systemBus();
    return bus.isConnected() ? Failure() : busFailure(bus.lastError().message());
}

bool isBusHanging()
{
    return opening().valid() && !isOpeningOver(0);
}

ServiceState serviceState(int timeoutMs)
{
    const QString name = QLatin1String(DBus::serviceName);
    const QDBusMessage owned = askBus(QStringLiteral("NameHasOwner"), {name}, timeoutMs);
    if (owned.type() != QDBusMessage::ReplyMessage)
        return ServiceState::NoBus;
    if (owned.arguments().value(0).toBool())
        return ServiceState::Running;
    const QDBusMessage names = askBus(QStringLiteral("ListActivatableNames"), {}, timeoutMs);
    return names.arguments().value(0).toStringList().contains(name) ? ServiceState::Activatable
                                                                    : ServiceState::Absent;
}

uint serviceProcess(int timeoutMs)
{
    const QDBusMessage answer = askBus(QStringLiteral("GetConnectionUnixProcessID"),
                                       {QLatin1String(DBus::serviceName)}, timeoutMs);
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0).toUInt() : 0;
}

QString busAddressText()
{
    const QString address = qEnvironmentVariable(DBus::busAddressVariable);
    return address.isEmpty()
        ? QStringLiteral("the system's own address")
        : QStringLiteral("%1 (from %2)").arg(address, QLatin1String(DBus::busAddressVariable));
}

Failure busFailure(const QString &reason)
{
    return {
        EX_UNAVAILABLE, QStringLiteral("no bus at %1: %2").arg(busAddressText(), reason),
        QStringLiteral("start the bus, correct %1, or run this in managed-configuration-sandbox")
            .arg(QLatin1String(DBus::busAddressVariable))};
}

} // namespace Tarnvel::Client
