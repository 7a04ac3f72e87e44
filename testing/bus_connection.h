// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <gio/gio.h>

namespace Tarnvel::Testing {

// Connections to a bus through GDBus, which shares no code with the library under test.

/*! \brief How long to wait for a bus, in milliseconds. Only a bus that hangs takes this long. */
constexpr int busTimeoutMs = 60000;

/*!
 * \brief A new connection to the bus at \a address.
 *
 * Null, and \a error is set, if there is none within \a timeoutMs.
 */
GDBusConnection *openConnection(const QString &address, GError **error,
                                int timeoutMs = busTimeoutMs);

/*! \brief Flushes \a connection, for at most busTimeoutMs, and closes it. */
void closeConnection(GDBusConnection *connection);

/*!
 * \brief Calls \a method of the bus itself, and returns its reply, a tuple of \a replyType.
 *
 * Null, and \a error is set, if the bus refuses or does not reply within busTimeoutMs.
 */
GVariant *callBus(GDBusConnection *connection, const char *method, GVariant *arguments,
                  const char *replyType, GError **error);

} // namespace Tarnvel::Testing
