// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "fake_service.h"
#include "private_bus.h"

#include <QtCore/QCoreApplication>

#include <functional>

namespace Tarnvel::Testing {

/*! \brief An application that catches and counts the exceptions of empty callbacks. */
class CatchingApplication : public QCoreApplication
{
public:
    using QCoreApplication::QCoreApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        try {
            return QCoreApplication::notify(receiver, event);
        } catch (const std::bad_function_call &) {
            ++caughtExceptions;
            return true;
        }
    }

    int caughtExceptions = 0;
};

/*!
 * \brief What a test of the library on a bus needs: a private bus, a service, an identity.
 *
 * Create it before the library is first used: it makes the private bus the system bus of this
 * process.
 */
class BusFixture
{
public:
    /*! \brief The object path of the identity that this fixture gives to the process. */
    inline static const QString path = QStringLiteral("/acme_2elabs_2eviewer");

    /*! \brief Starts the bus and the service; ends the process if either fails. */
    BusFixture(int &argc, char **argv) : application(argc, argv), service(bus.address())
    {
        QCoreApplication::setOrganizationName(QStringLiteral("acme.labs"));
        QCoreApplication::setApplicationName(QStringLiteral("viewer"));
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().toUtf8());
        if (const QString error = bus.start(); !error.isNull())
            qFatal("%s", qUtf8Printable(error));
        if (!service.start())
            qFatal("the service did not start");
    }

    CatchingApplication application;
    PrivateBus bus;
    FakeService service;
};

/*!
 * \brief Whether the bus is dbus-daemon.
 *
 * Otherwise it is dbus-broker, which has other limits and messages.
 */
inline bool isOnDBusDaemon()
{
    return qEnvironmentVariableIsEmpty("TARNVEL_TEST_DBUS_BROKER");
}

/*! \brief The main function of a test \a Class that takes a BusFixture. */
#define TARNVEL_BUS_TEST_MAIN(Class)                                                               \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        Tarnvel::Testing::BusFixture fixture(argc, argv);                                          \
        Class test(fixture);                                                                       \
        return QTest::qExec(&test, argc, argv);                                                    \
    }

} // namespace Tarnvel::Testing
