// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVariant>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/global.h>

namespace Tarnvel::Application::ManagedConfiguration {

/*!
 * \brief The entries of a Configuration, in ascending order of their keys.
 *
 * The way in for code that must see all entries at once, or hold values that Configuration::set()
 * refuses. containsKey(), isEmpty(), get() and set() are those of Configuration.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT ConfigurationPrivate
{
public:
    /*! \brief Keeps \a map as it is; no type is checked. */
    explicit ConfigurationPrivate(QMap<QString, QVariant> map);

    /*! \brief Makes a copy that shares the entries of \a other until one side is written. */
    ConfigurationPrivate(const ConfigurationPrivate &other);

    bool containsKey(const QString &key) const;
    bool isEmpty() const;
    QVariant get(const QString &key) const;
    bool set(const QString &key, const QVariant &value);

    /*!
     * \brief The entries of \a configuration, shared rather than copied.
     *
     * Ends the process with an assertion failure if \a configuration has been moved from.
     */
    static QMap<QString, QVariant> data(const Configuration &configuration);

private:
    QMap<QString, QVariant> m_entries;
};

} // namespace Tarnvel::Application::ManagedConfiguration
