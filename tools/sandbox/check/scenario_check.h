// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "command_line.h"
#include "diagnostics.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace Tarnvel::Sandbox {

/*! \brief All that is wrong with \a text, the scenario \a fileName; slips too if \a isStrict. */
QVector<Tools::Diagnostic> diagnose(const QString &fileName, const QByteArray &text, bool isStrict);

/*! \brief Checks the files as \a options say, prints the diagnostics, and returns the status. */
int checkScenarios(const Options &options);

} // namespace Tarnvel::Sandbox
