// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QCommandLineParser>
#include <QtCore/QStringList>

namespace Tarnvel::Tools {

/*!
 * \brief Parses \a arguments, the first of which is the name of the program.
 *
 * Ends the process when they ask for help or for the version. Returns what is wrong with them; null
 * if nothing is.
 */
QString parseArguments(const QStringList &arguments, QCommandLineParser *parser);

} // namespace Tarnvel::Tools
