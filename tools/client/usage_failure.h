// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <sysexits.h>

namespace Tarnvel::Client {

/*! \brief The failure of a command line that is wrong as \a message says. */
inline Tools::Failure usageFailure(const QString &message)
{
    return {EX_USAGE, message, QStringLiteral("see managed-configuration --help")};
}

} // namespace Tarnvel::Client
