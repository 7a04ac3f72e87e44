// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "terminal.h"
#include "usage_failure.h"

#include <QtCore/QString>

namespace Tarnvel::Client {

/*!
 * \brief Writes \a line, a result, to the standard output at once.
 *
 * Ends the process if that fails: silently and with success if nobody reads on, as behind "head",
 * and with a message otherwise.
 */
void print(const QString &line, Tools::Style style = Tools::Style::Plain);

/*! \brief Writes \a text, about the program's own doings, to the standard error. */
void printNote(const QString &text, Tools::Style style = Tools::Style::Aside);

/*! \brief Writes what \a failure says to the standard error and returns its status. */
int report(const Failure &failure);

/*! \brief Reports \a failure, if it is one, and ends the event loop with its status. */
void finish(const Failure &failure);

} // namespace Tarnvel::Client
