// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <glib.h>

namespace Tarnvel::Sandbox {

/*! \brief True if \a text is a D-Bus signature: any number of complete types. */
bool isSignature(const QString &text);

/*! \brief True if \a text is one complete D-Bus type. */
bool isCompleteType(const QString &text);

/*!
 * \brief How many containers a value of \a type holds inside one another, itself included.
 *
 * What lies inside the variants in it does not count. Arrays count as if there were an item in
 * them.
 */
int containerDepth(const GVariantType *type);

} // namespace Tarnvel::Sandbox
