// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <glib.h>
#include <memory>

namespace Tarnvel::Sandbox {

/*! \brief A value as D-Bus carries it; null stands for no value. */
using Variant = std::shared_ptr<GVariant>;

/*! \brief Entries in the order of their keys. */
using Entries = QMap<QString, Variant>;

/*! \brief Takes over \a value, or its floating reference. */
Variant adopt(GVariant *value);

/*! \brief A configuration, an a{sv}, of \a entries. */
Variant makeConfiguration(const Entries &entries);

/*!
 * \brief The entries of \a configuration, which must be an a{sv}.
 *
 * Nested configurations come with their entries in the order of the keys, so that configurations
 * of the same content are equal in whatever order a client has written them.
 */
Entries entriesOf(GVariant *configuration);

/*! \brief \a configuration with the entries of \a change added, or put in place of its own. */
Variant mergeConfigurations(const Variant &configuration, GVariant *change);

/*!
 * \brief The value that \a path names, a key followed by keys of nested configurations.
 *
 * Null if there is none.
 */
Variant valueAt(const Variant &configuration, const QStringList &path);

/*!
 * \brief True if an answer with \a configuration, an a{sv}, is larger than a system bus lets pass.
 *
 * The bus would end the service's connection. An answer may be a few bytes shorter than the bus
 * allows, since its caller's name may be longer another time.
 */
bool isTooLarge(const Variant &configuration);

/*! \brief True if both are null, or values of the same type and content. */
bool areEqual(const Variant &left, const Variant &right);

} // namespace Tarnvel::Sandbox
