// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <gio/gio.h>

namespace Tarnvel::Testing {

/*! \brief What is asked of a bus is given up after so many milliseconds. */
constexpr int busTimeoutMs = 10000;

/*!
 * \brief A new connection to the bus at \a address.
 *
 * Null, and \a error is set, if there is none within busTimeoutMs.
 */
GDBusConnection *openConnection(const QString &address, GError **error);

/*!
 * \brief Sends what is still to be sent on \a connection and closes it.
 *
 * False if that has not succeeded within busTimeoutMs.
 */
bool closeConnection(GDBusConnection *connection);

} // namespace Tarnvel::Testing
