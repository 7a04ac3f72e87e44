// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtDBus/QDBusAbstractInterface>
#include <QtDBus/QDBusArgument>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/error.h>
#include <Tarnvel/ManagedConfiguration/global.h>

#include <functional>

namespace Tarnvel::Application::ManagedConfiguration {

class ConfigurationManager;

/*!
 * \brief Writes \a configuration as one dictionary of signature a{sv}.
 *
 * Nested configurations are written in the same way, at any depth.
 */
TARNVEL_MANAGED_CONFIGURATION_EXPORT QDBusArgument &operator<<(QDBusArgument &argument,
                                                               const Configuration &configuration);

/*!
 * \brief Adds the entries of a dictionary of signature a{sv} to \a configuration.
 *
 * Nested dictionaries become nested configurations, arrays become typed lists. Values of types that
 * Configuration does not support are omitted, with a warning for some arrays.
 */
TARNVEL_MANAGED_CONFIGURATION_EXPORT const QDBusArgument &operator>>(const QDBusArgument &argument,
                                                                     Configuration &configuration);

/*!
 * \brief The D-Bus interface of a ConfigurationManager: its requests and its subscription.
 *
 * The watchers of all calls are its children, so that none of them outlives it.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT ConfigurationManagerPrivate
    : public QDBusAbstractInterface
{
    Q_OBJECT

public:
    /*! \brief Connects to the interface for \a manager, which will emit the changes. */
    explicit ConfigurationManagerPrivate(ConfigurationManager *manager);

    /*! \brief See ConfigurationManager::getConfiguration(). */
    void getConfiguration(const std::function<void(const Configuration &configuration,
                                                   const Error &error)> &callback);

    /*! \brief See ConfigurationManager::changeConfiguration(). */
    void changeConfiguration(const Configuration &configuration,
                             const std::function<void(const Error &error)> &callback);

public Q_SLOTS:
    /*!
     * \brief Reads the configuration again and emits configurationChanged() of the manager.
     *
     * The watcher of this call is kept until this object is destroyed.
     */
    void onConfigurationChanged();

private:
    ConfigurationManager *m_manager;
};

} // namespace Tarnvel::Application::ManagedConfiguration
