// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include "global.h"

namespace Tarnvel {
namespace Application {
namespace ManagedConfiguration {

/*!
 * \headerfile xpath.h <Tarnvel/ManagedConfiguration/Xpath>
 * \brief The XpathAccess class is one step of an Xpath: the key of a value or the index of an item.
 *
 * \code
 * #include <Tarnvel/ManagedConfiguration/Xpath>
 *
 * using Tarnvel::Application::ManagedConfiguration::XpathAccess;
 *
 * QString describe(const XpathAccess &access)
 * {
 *     if (access.type() == XpathAccess::Key)
 *         return access.toKey();
 *     return QString::number(access.toIndex());
 * }
 * \endcode
 *
 * The class needs neither a service nor a bus. It is reentrant: different threads can use different
 * objects.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT XpathAccess
{
public:
    /*! \brief The type of a step. The numeric values are fixed. */
    enum Type : int {
        /*! Selects an item of a list by its index. */
        Index = 0,
        /*! Selects a value of a configuration by its key. */
        Key = 1,
    };

    /*! \brief Constructs an Index step with the 0-based \a index. Every int is allowed. */
    explicit XpathAccess(int index);

    /*! \brief Constructs a Key step with \a key. Every string is allowed. */
    explicit XpathAccess(const QString &key);

    /*! \brief Returns the type of this step. */
    Type type() const;

    /*! \brief Returns the index of an Index step; 0 for a Key step. */
    int toIndex() const;

    /*! \brief Returns the key of a Key step; a null string for an Index step. */
    const QString &toKey() const;

private:
    Type m_type;
    int m_index;
    QString m_key;
};

/*!
 * \headerfile xpath.h <Tarnvel/ManagedConfiguration/Xpath>
 * \brief The Xpath class is a path to a value in a nested configuration, such as "window/sizes[2]".
 *
 * The parts of a path are separated by "/"; empty parts are ignored. A part is a key, optionally
 * followed by one 0-based index in brackets. A key can contain all characters except "/", "[" and
 * "]"; spaces are part of it. A path cannot select an item of a list inside a list. A number with a
 * closing bracket only, such as "12]", is both: the key "12]" and the index 12.
 *
 * \code
 * #include <Tarnvel/ManagedConfiguration/Xpath>
 *
 * using Tarnvel::Application::ManagedConfiguration::Xpath;
 *
 * bool isUsable(const QString &text)
 * {
 *     return Xpath(text).isValid();
 * }
 * \endcode
 *
 * The constructor parses the path. The class needs neither a service nor a bus. It is reentrant:
 * different threads can use different objects.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT Xpath
{
public:
    /*!
     * \brief Parses \a xpath.
     *
     * If \a xpath is not a valid path, logs one warning with the reason, and the Xpath is invalid.
     * No warning is logged if \a xpath consists of separators only.
     */
    explicit Xpath(const QString &xpath);

    /*! \brief Returns true if the path is valid; a valid path has at least one step. */
    bool isValid() const;

    /*! \brief Returns the text passed to the constructor, unmodified, even if it is not valid. */
    const QString &toString() const;

    /*!
     * \brief Returns the steps in the order of the path; empty if the path is not valid.
     *
     * The first step is always a Key step, and an Index step always follows a Key step.
     */
    const QList<XpathAccess> &accesses() const;

private:
    QString m_text;
    QList<XpathAccess> m_accesses;
};

} // namespace ManagedConfiguration
} // namespace Application
} // namespace Tarnvel
