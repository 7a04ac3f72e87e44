// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QScopedPointer>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include "global.h"

#include <memory>

namespace Tarnvel {
namespace Application {
namespace ManagedConfiguration {

class ConfigurationPrivate;

/*!
 * \headerfile configuration.h <Tarnvel/ManagedConfiguration/Configuration>
 * \brief The Configuration class holds the settings of an application.
 *
 * A configuration maps string keys to values. ConfigurationManager reads a configuration from the
 * service, and sends one to request a change. A value has one of these types:
 *
 * - \c int, \c bool, \c QString;
 * - \c QStringList, \c QList<int>, \c QList<bool>, \c QList<QString>;
 * - Configuration, for a nested configuration.
 *
 * set() never stores values of other types, such as \c double, \c QVariantList and \c QVariantMap.
 *
 * \code
 * #include <Tarnvel/ManagedConfiguration/Configuration>
 *
 * using Tarnvel::Application::ManagedConfiguration::Configuration;
 *
 * Configuration withProxy(Configuration configuration, const QString &host, int port)
 * {
 *     Configuration proxy = Configuration::fromVariant(configuration.get("proxy"));
 *     proxy.set("host", host);
 *     proxy.set("port", port);
 *     configuration.set("proxy", QVariant::fromValue(proxy));
 *     return configuration;
 * }
 * \endcode
 *
 * The class is implicitly shared: copies are cheap, and the entries are only copied when one of the
 * objects is modified. It needs neither a service nor a bus.
 *
 * The move constructor leaves its argument \e emptied. An emptied object can only be destroyed or
 * assigned to. Copying or comparing it terminates the process with an assertion failure; calling
 * any other function on it is undefined behavior.
 *
 * The class is reentrant: different threads can use different objects, including copies of one
 * another. An object must not be modified while another thread uses it.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT Configuration
{
public:
    /*! \brief Constructs an empty configuration. */
    Configuration();

    /*!
     * \brief Constructs a configuration from \a d and takes ownership of it.
     *
     * For internal use: the installed headers do not define the type. Neither the pointer nor the
     * values are checked.
     */
    explicit Configuration(ConfigurationPrivate *d);

    /*! \brief Constructs a copy of \a other. */
    Configuration(const Configuration &other);

    /*! \brief Move-constructs a configuration from \a other, which is left emptied. */
    Configuration(Configuration &&other) noexcept;

    /*! \brief Assigns a copy of \a other to this configuration. */
    Configuration &operator=(const Configuration &other);

    /*!
     * \brief Swaps this configuration with \a other.
     *
     * Unlike the move constructor, this leaves \a other usable.
     */
    Configuration &operator=(Configuration &&other) noexcept;

    /*! \brief Destroys the configuration. */
    virtual ~Configuration();

    /*! \brief Returns true if there is an entry with this \a key. Keys are case-sensitive. */
    bool containsKey(const QString &key) const;

    /*! \brief Returns true if there are no entries. */
    bool isEmpty() const;

    /*!
     * \brief Returns the value of \a key, with the type with which it was stored.
     *
     * Returns an invalid QVariant if there is no such entry.
     */
    QVariant get(const QString &key) const;

    /*!
     * \brief Sets the value of \a key to \a value, without conversion, replacing any old value.
     *
     * Every \a key is allowed, including the empty one. Returns true if the value was stored.
     * Returns false, without any change, if \a value is not of a type listed in the class
     * description.
     */
    bool set(const QString &key, const QVariant &value);

    /*!
     * \brief Returns the value at the path \a xpath, such as "window/sizes[2]"; see Xpath.
     *
     * A key step selects a value of a configuration, an index step selects an item of a list. If
     * the path is invalid or there is no value at the path, logs a warning with the reason and
     * returns an invalid QVariant.
     */
    QVariant getByXpath(const QString &xpath) const;

    /*!
     * \brief Returns the configuration stored in \a variant.
     *
     * Returns an empty configuration if \a variant has another type, including \c QVariantMap,
     * unless the application has registered a converter for that type with QMetaType.
     */
    static Configuration fromVariant(const QVariant &variant);

    /*!
     * \brief Returns true if this configuration and \a other have the same keys and equal values.
     *
     * Values are compared as QVariant does. With Qt 6, lists and nested configurations are equal if
     * their contents are. With Qt 5, lists other than \c QStringList are equal if they are copies
     * of one another, and may compare as different if they were created separately, even with equal
     * contents. Nested configurations are then equal only if their \e QVariants are copies of one
     * another: if one is read with fromVariant() and written back unchanged, the configuration
     * compares as different. To compare contents, compare the nested configurations themselves, and
     * lists as QList.
     */
    bool operator==(const Configuration &other) const;

private:
    friend class ConfigurationPrivate;

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QScopedPointer<ConfigurationPrivate> d;
#else
    std::unique_ptr<ConfigurationPrivate> d;
#endif
};

} // namespace ManagedConfiguration
} // namespace Application
} // namespace Tarnvel

Q_DECLARE_METATYPE(Tarnvel::Application::ManagedConfiguration::Configuration)
