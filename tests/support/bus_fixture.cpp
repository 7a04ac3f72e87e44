// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_fixture.h"

#include <QtDBus/QDBusConnection>

#include <functional>

namespace Tarnvel::Testing {

int CatchingApplication::caughtExceptions() const
{
    return m_caughtExceptions;
}

bool CatchingApplication::notify(QObject *receiver, QEvent *event)
{
    try {
        return QCoreApplication::notify(receiver, event);
    } catch (const std::bad_function_call &) {
        ++m_caughtExceptions;
        return true;
    }
}

const QString BusFixture::path = QStringLiteral("/acme_2elabs_2eviewer");

BusFixture::BusFixture(int &argc, char **argv) : application(argc, argv), service(bus.address())
{
    QCoreApplication::setOrganizationName(QStringLiteral("acme.labs"));
    QCoreApplication::setApplicationName(QStringLiteral("viewer"));
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().toUtf8());
    if (const QString error = bus.start(); !error.isNull())
        qFatal("%s", qUtf8Printable(error));
    if (!service.start())
        qFatal("the service did not start");
}

QString BusFixture::uniqueName() const
{
    return QDBusConnection::systemBus().baseService();
}

bool isOnDBusDaemon()
{
    return qEnvironmentVariableIsEmpty("TARNVEL_TEST_BUS_STANDS_IN");
}

} // namespace Tarnvel::Testing
