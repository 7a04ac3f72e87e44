// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "generated_configuration.h"

#include <QtCore/QStringList>

namespace Tarnvel::Testing {

/*! \brief What parsing \a path gives: its steps as "key <key>" and "index <index>", and the
 * warnings. */
QStringList expectedParse(const QString &path);

/*! \brief What looking \a path up gives: the value in the form of describe(), and the warnings. */
QStringList expectedLookup(const ValueTree &configuration, const QString &path);

} // namespace Tarnvel::Testing
