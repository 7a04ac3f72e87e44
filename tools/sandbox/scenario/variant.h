// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <glib.h>
#include <memory>
#include <vector>

namespace Tarnvel::Sandbox {

/*! \brief A value as D-Bus carries it; null stands for no value. */
using Variant = std::shared_ptr<GVariant>;

/*! \brief Entries in the order of their keys. */
using Entries = QMap<QString, Variant>;

/*! \brief Takes ownership of \a value, or of its floating reference. */
Variant adopt(GVariant *value);

/*! \brief The entry, a {sv}, of \a key and \a value. */
Variant makeEntry(const QString &key, const Variant &value);

/*! \brief A configuration, an a{sv}, of \a entries, each a {sv}, in the order of their keys. */
Variant joinEntries(const std::vector<Variant> &entries);

/*! \brief A configuration, an a{sv}, of the values \a entries. */
Variant makeConfiguration(const Entries &entries);

/*! \brief The entries of \a configuration, which must be an a{sv}, inOrder() each. */
Entries entriesOf(GVariant *configuration);

/*!
 * \brief \a value; if it is a configuration, with its entries in the order of their keys, nested
 * ones included.
 *
 * Configurations of the same content are then equal, in whatever order a client has written them.
 */
Variant inOrder(const Variant &value);

/*! \brief \a configuration with the values of \a changes, whose keys it must have. */
Variant replaceValues(const Variant &configuration, const Entries &changes);

/*! \brief The keys in \a path, separated by "/"; none if one of them is empty. */
QStringList settingKeys(const QString &path);

/*!
 * \brief The value at \a path, a key and those of nested configurations; null if none is there.
 *
 * All configurations in \a value must be inOrder().
 */
Variant valueAt(const Variant &value, const QStringList &path);

/*! \brief The value at \a path, which has a key, in \a entries. */
Variant valueAt(const Entries &entries, const QStringList &path);

/*!
 * \brief True if a reply with \a configuration, an a{sv}, is larger than a system bus allows.
 *
 * The bus would close the service's connection. The limit is a few bytes lower than that of the
 * bus, since the name of the caller may be longer another time.
 */
bool isTooLarge(const Variant &configuration);

/*! \brief True if both are null, or values of the same type and content. */
bool areEqual(const Variant &left, const Variant &right);

} // namespace Tarnvel::Sandbox
