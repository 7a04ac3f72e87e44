// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <functional>
#include <memory>

namespace Tarnvel::Benchmarks {

/*!
 * \brief Reads a configuration into values of its own, and returns the number of entries.
 *
 * Of nested configurations, the entries count too. Ends the process if the configuration cannot be
 * read.
 */
using Read = std::function<int()>;

/*! \brief A client of the configuration called \a shape that uses the library. */
Read makeTarnvelClient(const QString &shape);

/*! \brief One that does by hand, with QtDBus, what the library does. */
Read makeQtDBusClient(const QString &shape);

/*! \brief One on GDBus, which reads into hash tables of texts and GVariants. */
Read makeGDBusClient(const QString &shape);

/*! \brief One on sdbus-c++, which reads into maps of texts and variants. */
Read makeSdbusClient(const QString &shape);

} // namespace Tarnvel::Benchmarks
