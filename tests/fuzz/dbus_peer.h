// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QVariant>

#include <gio/gio.h>

namespace Tarnvel::Testing {

/*!
 * \brief Returns \a value as QtDBus receives it in the reply to a call.
 *
 * It goes through a socket to a D-Bus peer in this process, without a bus. Any failure ends the
 * process.
 */
QVariant receive(GVariant *value);

} // namespace Tarnvel::Testing
