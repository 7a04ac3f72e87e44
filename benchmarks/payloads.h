// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <gio/gio.h>

namespace Tarnvel::Benchmarks {

/*!
 * \brief The names of the configurations that the service of the benchmarks keeps.
 *
 * Real ones: "small", an application of 10 values; "large", a few hundred values in six levels;
 * "fleet", 2,000 devices of 9 values each, 20,000 entries in all. Made ones: "mixed_<count>",
 * so many entries of all kinds in the order of their keys, "unsorted_<count>", the same in no
 * order, and "list_<count>", one list of so many items under the key "list".
 *
 * Each is kept for an application of its own: of the organization "acme", and with the name of the
 * configuration.
 */
QStringList shapeNames();

/*! \brief The configuration called \a name, of type a{sv}. The reference is floating. */
GVariant *makeShape(const QString &name);

/*! \brief The number of entries of the configuration called \a name, those inside included. */
int countEntries(const QString &name);

} // namespace Tarnvel::Benchmarks
