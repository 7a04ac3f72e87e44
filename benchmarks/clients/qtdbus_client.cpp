// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "application.h"
#include "client.h"
#include "references/by_hand.h"

#include <QtCore/QEventLoop>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>

namespace Tarnvel::Benchmarks {

namespace {

int countEntries(const QVariantMap &map)
{
    int count = map.size();
    for (const QVariant &value : map) {
        if (value.userType() == QMetaType::QVariantMap)
            count += countEntries(value.toMap());
    }
    return count;
}

} // namespace

Read makeQtDBusClient(const QString &payload)
{
    return [call = readCall(payload)] {
        QEventLoop loop;
        QDBusPendingCallWatcher watcher(QDBusConnection::systemBus().asyncCall(call));
        QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
        loop.exec();
        const QDBusMessage reply = watcher.reply();
        if (reply.type() != QDBusMessage::ReplyMessage)
            qFatal("%s", qUtf8Printable(reply.errorMessage()));
        return countEntries(readByHand(reply.arguments().at(0).value<QDBusArgument>()));
    };
}

} // namespace Tarnvel::Benchmarks
