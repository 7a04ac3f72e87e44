// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QObject>
#include <QtCore/QScopedPointer>

#include "configuration.h"
#include "error.h"
#include "global.h"

#include <functional>

namespace Tarnvel {
namespace Application {
namespace ManagedConfiguration {

class ConfigurationManagerPrivate;

/*!
 * \brief The application's handle on the managed-configuration service.
 *
 * The service, another process on the D-Bus system bus, keeps a configuration for each
 * application. It knows the application by QCoreApplication::organizationName() and
 * QCoreApplication::applicationName(): set both before the manager is made.
 *
 * \code
 * #include <Tarnvel/ManagedConfiguration/ConfigurationManager>
 * #include <QCoreApplication>
 * #include <QDebug>
 *
 * using namespace Tarnvel::Application::ManagedConfiguration;
 *
 * int main(int argc, char *argv[])
 * {
 *     QCoreApplication application(argc, argv);
 *     application.setOrganizationName("acme");
 *     application.setApplicationName("viewer");
 *
 *     ConfigurationManager::instance()->getConfiguration(
 *             [](const Configuration &configuration, const Error &error) {
 *                 if (error)
 *                     qWarning() << error.message();
 *                 else
 *                     qInfo() << configuration.get("theme").toString();
 *                 QCoreApplication::quit();
 *             });
 *     return application.exec();
 * }
 * \endcode
 *
 * No request blocks: each returns at once, and its callback is called exactly once, later, from
 * the event loop of the application's thread. Several requests may be under way; their answers
 * come as the bus completes them, in no promised order among themselves or against
 * configurationChanged(). A request that fails is not tried again.
 * A callback may make further requests, and may delete a manager that the application has made
 * itself; an empty callback throws \c std::bad_function_call out of the event loop.
 *
 * Without a service, or without a bus, every request is still answered, with Error::Internal and
 * the bus's message. A service that starts later is found by the next request.
 *
 * The manager belongs to the thread of the application object, and its callbacks and its signal
 * come there. What they hand out are values: a copy may be used in another thread.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT ConfigurationManager : public QObject
{
    Q_OBJECT

public:
    /*!
     * \brief The one manager of the process, made at the first call. Nobody may delete it.
     *
     * Call it in the application's thread, after the application object exists.
     */
    static ConfigurationManager *instance();

    /*!
     * \brief Makes a second manager, independent of instance(), with its own subscription.
     *
     * Opens the system bus if the process has not yet done so; the service is not contacted. If
     * the organization or the application name is empty, a warning is logged and the requests go
     * to whatever path the names give.
     */
    ConfigurationManager();

    /*! \brief Destroys the manager. Callbacks of requests still under way are never called. */
    ~ConfigurationManager() override;

    /*!
     * \brief Reads the configuration of the application.
     *
     * \a callback receives the configuration and a success, or an empty configuration and an
     * error: one of the service's own, or Error::Internal if no configuration came back, be it
     * because of the bus, the time the service took (25 seconds, the bus layer's default), the
     * form of its answer, or an identity that makes no valid object path.
     *
     * Values of types that a Configuration does not store are left out.
     */
    void getConfiguration(const std::function<void(const Configuration &configuration,
                                                   const Error &error)> &callback);

    /*!
     * \brief Asks the service to change the configuration to \a configuration.
     *
     * It is sent as it is, an empty one included. Whether the service takes it as a whole or merges
     * it into what it keeps is the service's decision. \a callback receives a success or an
     * error, like that of getConfiguration(). A configuration with entries on more than 21 levels
     * is more than D-Bus can carry: it is not sent, and the error is Error::Internal. A change that
     * was accepted does not emit configurationChanged() by itself: that follows if the service
     * announces the change.
     */
    void changeConfiguration(const Configuration &configuration,
                             const std::function<void(const Error &error)> &callback);

Q_SIGNALS:
    /*!
     * \brief The service has announced a change; \a configuration is what it keeps now.
     *
     * Emitted once for each announcement, whether or not anything differs. If the configuration
     * could not be read after the announcement, \a configuration is empty.
     *
     * What names the parameter's type as a text, QSignalSpy and connections through SIGNAL(), finds
     * it under its short name: call \c qRegisterMetaType<Configuration>("Configuration") before.
     */
    void configurationChanged(const Configuration &configuration);

private:
    QScopedPointer<ConfigurationManagerPrivate> d;
};

} // namespace ManagedConfiguration
} // namespace Application
} // namespace Tarnvel
