// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QScopedPointer>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include "global.h"

namespace Tarnvel {
namespace Application {
namespace ManagedConfiguration {

class ConfigurationPrivate;

/*!
 * \brief A managed configuration: named values of a closed set of types.
 *
 * A configuration maps string keys to values. ConfigurationManager delivers one, and takes one to
 * ask for a change. A value is one of
 *
 * - \c int, \c bool, \c QString;
 * - \c QStringList, \c QList<int>, \c QList<bool>, \c QList<QString>;
 * - a nested Configuration, held in a \c QVariant.
 *
 * Nothing else is ever stored, a \c double, a \c QVariantList and a \c QVariantMap included.
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
 * A plain value with cheap copies: the entries are shared until one side is written. It works
 * without a service or a bus.
 *
 * An object that was moved from by construction is \e emptied: it may be destroyed or assigned to.
 * Copying or comparing it ends the process with an assertion failure, and nothing else may be
 * called on it.
 *
 * Distinct objects may be used in different threads, copies of one another included. One object
 * must not be written in one thread while another thread uses it.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT Configuration
{
public:
    /*! \brief Makes an empty configuration. */
    Configuration();

    /*!
     * \brief Makes a configuration of \a d and takes ownership of it.
     *
     * For the library's own tools: the type is not defined in the installed headers. Neither the
     * pointer nor the values inside are checked.
     */
    explicit Configuration(ConfigurationPrivate *d);

    /*! \brief Makes a copy of \a other. */
    Configuration(const Configuration &other);

    /*! \brief Takes over the content of \a other, which is left emptied. */
    Configuration(Configuration &&other) noexcept;

    /*! \brief Replaces the content by a copy of that of \a other. */
    Configuration &operator=(const Configuration &other);

    /*!
     * \brief Exchanges the content with that of \a other.
     *
     * Unlike move construction this leaves \a other usable: it holds what this object held.
     */
    Configuration &operator=(Configuration &&other) noexcept;

    /*! \brief Destroys the configuration. */
    virtual ~Configuration();

    /*! \brief True if there is an entry under exactly this \a key; letter case matters. */
    bool containsKey(const QString &key) const;

    /*! \brief True if there are no entries. */
    bool isEmpty() const;

    /*!
     * \brief The value under \a key, of the type with which it was stored.
     *
     * An invalid QVariant if there is no such entry.
     */
    QVariant get(const QString &key) const;

    /*!
     * \brief Stores \a value under \a key, unconverted, in place of any value already there.
     *
     * Any \a key is taken, the empty one included. Returns false, and changes nothing, if the type
     * of \a value is none of those listed for the class.
     */
    bool set(const QString &key, const QVariant &value);

    /*!
     * \brief The value that the path \a xpath names, such as "window/sizes[2]"; see Xpath.
     *
     * Key steps go through nested configurations, an index step takes an item of a list. If the
     * path is not valid or does not fit the data, the result is an invalid QVariant, and a warning
     * in the message log says why.
     */
    QVariant getByXpath(const QString &xpath) const;

    /*!
     * \brief The configuration held in \a variant.
     *
     * An empty configuration if \a variant holds anything else, a \c QVariantMap included, unless
     * the application has registered a converter for it with QMetaType.
     */
    static Configuration fromVariant(const QVariant &variant);

    /*!
     * \brief True if this configuration and \a other have the same keys with equal values.
     *
     * Values compare by QVariant's rules. By those, nested configurations and the lists other than
     * \c QStringList are equal when they are copies of one another; built separately they need not
     * be, even with equal content.
     */
    bool operator==(const Configuration &other) const;

private:
    friend class ConfigurationPrivate;

    QScopedPointer<ConfigurationPrivate> d;
};

} // namespace ManagedConfiguration
} // namespace Application
} // namespace Tarnvel

Q_DECLARE_METATYPE(Tarnvel::Application::ManagedConfiguration::Configuration)
