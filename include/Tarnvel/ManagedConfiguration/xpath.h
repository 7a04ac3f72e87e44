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
 * \brief One step of an Xpath: a key of a configuration or a position in a list.
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
 * A plain value, which needs neither a service nor a bus. Distinct objects may be used in different
 * threads.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT XpathAccess
{
public:
    /*! \brief The kind of step. The numbers are fixed. */
    enum Type : int {
        /*! Selects an item of a list by its position. */
        Index = 0,
        /*! Selects a value of a configuration by its key. */
        Key = 1,
    };

    /*! \brief Makes an Index step to the position \a index, counted from 0. Any int is taken. */
    explicit XpathAccess(int index);

    /*! \brief Makes a Key step to \a key. Any string is taken. */
    explicit XpathAccess(const QString &key);

    /*! \brief The kind of this step. */
    Type type() const;

    /*! \brief The position of an Index step; 0 for a Key step. */
    int toIndex() const;

    /*! \brief The key of a Key step; a null string for an Index step. */
    const QString &toKey() const;

private:
    Type m_type;
    int m_index;
    QString m_key;
};

/*!
 * \brief A path that names one value inside a nested configuration, such as "window/sizes[2]".
 *
 * The parts of a path are separated by "/"; empty parts are dropped. A part is a key, or a key
 * followed by one position in brackets, counted from 0. Everything but "/", "[" and "]" belongs to
 * the key as it stands, blanks included. A list inside a list cannot be addressed.
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
 * A plain value, parsed once by its constructor, which needs neither a service nor a bus. Distinct
 * objects may be used in different threads.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT Xpath
{
public:
    /*!
     * \brief Parses \a xpath.
     *
     * A text that is no path gives an Xpath that is not valid and one warning in the message log
     * that names the fault. A text made of separators alone gives no warning.
     */
    explicit Xpath(const QString &xpath);

    /*! \brief True when the text was a path of at least one step. */
    bool isValid() const;

    /*! \brief The text given at construction, unchanged, also when it is not valid. */
    const QString &toString() const;

    /*!
     * \brief The steps in the order of the path; empty when the path is not valid.
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
