// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "application.h"

#include "endpoint.h"

#include <QtCore/QCoreApplication>

namespace Tarnvel::Benchmarks {

void setApplication(const QString &name)
{
    QCoreApplication::setOrganizationName(QStringLiteral("acme"));
    QCoreApplication::setApplicationName(name);
}

QDBusMessage readCall(const QString &name)
{
    return QDBusMessage::createMethodCall(
        QLatin1String(DBus::serviceName), DBus::applicationPath(QStringLiteral("acme"), name),
        QLatin1String(DBus::applicationInterface), QLatin1String(DBus::getConfigurationMethod));
}

} // namespace Tarnvel::Benchmarks
