// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

namespace Tarnvel::Sandbox {

/*!
 * \brief Announces a change of the configuration at \a path as one who is not the service.
 *
 * It does so on a connection of its own to the bus at \a address. False if that fails.
 */
bool emitSpoofedSignal(const QString &address, const QString &path);

} // namespace Tarnvel::Sandbox
