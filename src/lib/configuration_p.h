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
 * For code that needs all entries at once, or values that Configuration::set() refuses.
 * containsKey(), isEmpty(), get() and set() are those of Configuration.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT ConfigurationPrivate
{
public:
    /*! \brief Stores \a map without checking the types. */
    explicit ConfigurationPrivate(QMap<QString, QVariant> map);

    /*! \brief Constructs a copy that shares the entries of \a other until one is modified. */
    ConfigurationPrivate(const ConfigurationPrivate &other);

    bool containsKey(const QString &key) const;
    bool isEmpty() const;
    QVariant get(const QString &key) const;
    bool set(const QString &key, const QVariant &value);

    /*!
     * \brief Returns the entries of \a configuration, which are shared, not copied.
     *
     * Terminates the process with an assertion failure if \a configuration has been moved from.
     */
    static QMap<QString, QVariant> data(const Configuration &configuration);

private:
    QMap<QString, QVariant> m_entries;
};

} // namespace Tarnvel::Application::ManagedConfiguration
