// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::DBus {

/*! \brief The service's name on the bus. */
constexpr char serviceName[] = "org.brenvik.ManagedConfiguration";
/*! \brief The interface of the service's objects, one for each application. */
constexpr char applicationInterface[] = "org.brenvik.ManagedConfiguration.Application1";
/*! \brief The prefix of the names of the service's errors. */
constexpr char errorPrefix[] = "org.brenvik.ManagedConfiguration.Error.";
/*! \brief The names of the service's errors, without the prefix: those of the codes 1, 2, ... */
QStringList errorNames();
/*! \brief The method that reads a configuration: () to (a{sv}). */
constexpr char getConfigurationMethod[] = "GetConfiguration";
/*! \brief The method that changes a configuration: (a{sv}) to (). */
constexpr char changeConfigurationMethod[] = "ChangeConfiguration";
/*! \brief The signal that is the announcement of a change. */
constexpr char configurationChangedSignal[] = "ConfigurationChanged";

/*! \brief The environment variable that replaces the address of the system bus. */
constexpr char busAddressVariable[] = "DBUS_SYSTEM_BUS_ADDRESS";

/*! \brief The object path of the configuration of \a application. */
QString applicationPath(const QString &organization, const QString &application);

} // namespace Tarnvel::DBus
