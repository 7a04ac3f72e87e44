// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <glib.h>

namespace Tarnvel::Sandbox {

/*!
 * \brief Why no D-Bus message can hold \a value inside \a depth containers; null if one can.
 *
 * The size of the message is not checked.
 */
QString dbusViolation(GVariant *value, int depth);

/*! \brief Why no message can hold \a containers inside one another; null if one can. */
QString depthViolation(int containers);

} // namespace Tarnvel::Sandbox
