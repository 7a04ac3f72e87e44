// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVariant>
#include <Tarnvel/ManagedConfiguration/configuration.h>

namespace Tarnvel::Testing {

/*!
 * \brief A value with all its types as a text, so that tests compare content and type at once.
 *
 * For example `{"sizes": QList<int> [1, 2], "theme": QString "dark"}`. A null string is `QString
 * null`. A value of a type that no configuration stores is described by its type's name alone.
 */
QString describe(const QVariant &value);

/*! \brief The same for a configuration. */
QString describe(const Application::ManagedConfiguration::Configuration &configuration);

/*! \brief A configuration that adopts \a entries; no type is checked. */
Application::ManagedConfiguration::Configuration makeConfiguration(
    const QMap<QString, QVariant> &entries);

/*! \brief A list as a configuration stores it: `makeList<int>({1, 2})`. */
template<typename T>
QVariant makeList(const QList<T> &items)
{
    return QVariant::fromValue(items);
}

} // namespace Tarnvel::Testing
