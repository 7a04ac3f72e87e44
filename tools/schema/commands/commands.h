// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "command_line.h"

#include <QtCore/QByteArray>
#include <QtCore/QVector>

namespace Tarnvel::Schema {

/*!
 * \brief What a command has to report; those with the status EXIT_SUCCESS are warnings.
 *
 * A command that fails has written nothing.
 */
using Report = QVector<Tools::Failure>;

// The commands of the tool. Each sets its output.

Report check(const CommandLine &commandLine, QByteArray *output);
Report docs(const CommandLine &commandLine, QByteArray *output);
Report infer(const CommandLine &commandLine, QByteArray *output);
Report scenario(const CommandLine &commandLine, QByteArray *output);
Report header(const CommandLine &commandLine, QByteArray *output);

} // namespace Tarnvel::Schema
