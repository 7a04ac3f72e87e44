// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QVariantMap>

class QDBusArgument;

namespace Tarnvel::Benchmarks {

/*!
 * \brief Reads a dictionary a{sv} as a Qt programmer would without the library.
 *
 * Nested dictionaries become maps, arrays of integers and of booleans become typed lists. The input
 * is not checked.
 */
QVariantMap readByHand(const QDBusArgument &argument);

} // namespace Tarnvel::Benchmarks
