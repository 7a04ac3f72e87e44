// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

namespace Tarnvel::Sandbox {

/*!
 * \brief Announces a change of the configuration at \a path without being the service.
 *
 * Uses a connection of its own to the bus at \a address; does nothing without one.
 */
void emitSpoofedSignal(const QString &address, const QString &path);

} // namespace Tarnvel::Sandbox
