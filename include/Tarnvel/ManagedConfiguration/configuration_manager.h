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
 * \headerfile configuration_manager.h <Tarnvel/ManagedConfiguration/ConfigurationManager>
 * \brief The ConfigurationManager class gives an application access to its managed configuration.
 *
 * A service, which is another process on the D-Bus system bus, keeps a configuration for each
 * application. It identifies the application by QCoreApplication::organizationName() and
 * QCoreApplication::applicationName(): set both before the manager is created.
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
 * All requests are asynchronous. A request returns immediately, and its callback is called exactly
 * once, later, from the event loop of the application's thread. Several requests can be pending at
 * the same time. Their callbacks are called in the order in which the bus completes the requests;
 * no order is guaranteed between them, nor relative to configurationChanged(). Failed requests are
 * not repeated.
 *
 * A callback can make further requests, and can delete a manager that the application has created
 * itself. An empty callback throws \c std::bad_function_call out of the event loop.
 *
 * Without a service or a bus, the callbacks still receive an error, Error::Internal with the
 * message of the bus. If a service starts later, the next request reaches it.
 *
 * The manager must be used in the thread of the application object. Its callbacks are called, and
 * its signal is emitted, in this thread. The configurations and errors they receive are values, and
 * copies of them can be used in other threads.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT ConfigurationManager : public QObject
{
    Q_OBJECT

public:
    /*!
     * \brief Returns the manager of the process, and creates it on the first call.
     *
     * The manager must not be deleted. Call this function in the application's thread, after the
     * application object has been created.
     */
    static ConfigurationManager *instance();

    /*!
     * \brief Constructs a manager that is independent of instance(), with its own subscription.
     *
     * Connects to the system bus if the process is not connected yet, but does not contact the
     * service. If the organization name or the application name is empty, logs a warning twice;
     * requests are sent to the object path that results from the names.
     */
    ConfigurationManager();

    /*! \brief Destroys the manager. The callbacks of pending requests are never called. */
    ~ConfigurationManager() override;

    /*!
     * \brief Reads the configuration of the application.
     *
     * On success, \a callback receives the configuration and Error::NoError. On failure, it
     * receives an empty configuration and an error. This is either an error of the service, or
     * Error::Internal if no configuration was received: the bus failed, the service did not reply
     * within 25 seconds (the default timeout of Qt D-Bus), the reply is not a configuration, or the
     * identity of the application does not result in a valid object path.
     *
     * Values of types that Configuration does not support are omitted.
     */
    void getConfiguration(const std::function<void(const Configuration &configuration,
                                                   const Error &error)> &callback);

    /*!
     * \brief Asks the service to change the configuration to \a configuration.
     *
     * The configuration is sent unmodified, even if it is empty. The service decides whether to
     * replace the current configuration or to merge the two. \a callback receives Error::NoError on
     * success, and an error like that of getConfiguration() on failure.
     *
     * Not every D-Bus daemon can carry a configuration with more than 21 levels, empty ones
     * included, or with a list on level 21. Such a configuration is not sent, and the error is
     * Error::Internal.
     *
     * A successful request does not emit configurationChanged() by itself. The signal is emitted if
     * the service announces the change.
     */
    void changeConfiguration(const Configuration &configuration,
                             const std::function<void(const Error &error)> &callback);

Q_SIGNALS:
    /*!
     * \brief Emitted when the service announces a change; \a configuration is the current one.
     *
     * Emitted once for each announcement, even if nothing differs. If the configuration cannot be
     * read after the announcement, \a configuration is empty.
     *
     * With Qt 5, QSignalSpy and connections made with SIGNAL() look up the type of the parameter by
     * its short name. To use them, first call \c qRegisterMetaType<Configuration>("Configuration").
     */
    void configurationChanged(const Configuration &configuration);

private:
    QScopedPointer<ConfigurationManagerPrivate> d;
};

} // namespace ManagedConfiguration
} // namespace Application
} // namespace Tarnvel
