// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "usage_failure.h"

#include <QtCore/QString>

namespace Tarnvel::Client {

/*!
 * \brief Why the service cannot know an application by these names.
 *
 * No failure if they give a valid object path.
 */
Failure identityFailure(const QString &organization, const QString &application);

} // namespace Tarnvel::Client
