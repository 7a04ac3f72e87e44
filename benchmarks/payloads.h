// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <gio/gio.h>

namespace Tarnvel::Benchmarks {

/*!
 * \brief The names of the payloads, the configurations that the service of the benchmarks keeps.
 *
 * Realistic: "small", an application of 10 values; "large", 440 entries in six levels; "fleet",
 * 2,000 devices of 9 values each, 20,000 entries in all. Synthetic: "mixed_<count>", that many
 * entries of all types in the order of their keys; "unsorted_<count>", the same in random order;
 * "list_<count>", one list of that many items under the key "list".
 *
 * Each belongs to an application of its own: its organization is "acme", its name that of the
 * payload.
 */
QStringList payloadNames();

/*! \brief The payload called \a name, of type a{sv}. The reference is floating. */
GVariant *makePayload(const QString &name);

/*! \brief The number of entries of the payload called \a name, nested ones included. */
int countEntries(const QString &name);

} // namespace Tarnvel::Benchmarks
