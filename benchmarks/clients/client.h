// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <functional>
#include <memory>

namespace Tarnvel::Benchmarks {

/*!
 * \brief Reads a configuration and returns the number of its entries, nested ones included.
 *
 * Ends the process if the configuration cannot be read.
 */
using Read = std::function<int()>;

/*! \brief A client that reads the payload called \a payload through the library. */
Read makeTarnvelClient(const QString &payload);

/*! \brief One on Qt D-Bus that reads by hand, see readByHand(). */
Read makeQtDBusClient(const QString &payload);

/*! \brief One on GDBus, which reads into hash tables of strings and GVariants. */
Read makeGDBusClient(const QString &payload);

/*! \brief One on sdbus-c++, which reads into maps of strings and variants. */
Read makeSdbusClient(const QString &payload);

} // namespace Tarnvel::Benchmarks
