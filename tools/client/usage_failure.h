// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QString>

#include <sysexits.h>

namespace Tarnvel::Client {

using Tools::Failure;

/*! \brief A mistake on the command line. */
inline Failure usageFailure(const QString &text)
{
    return {EX_USAGE, text, QStringLiteral("see managed-configuration --help")};
}

} // namespace Tarnvel::Client
