// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

namespace Tarnvel::Sandbox {

/*! \brief Prints one line about an event on the standard error channel. */
void printEvent(const QString &line);

} // namespace Tarnvel::Sandbox
