// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"
#include "terminal.h"
#include "values/difference.h"
#include "values/unseen_settings.h"

#include <QtCore/QString>

namespace Tarnvel::Client {

/*!
 * \brief Writes \a line, a result, to standard output at once, with control characters escaped.
 *
 * Ends the process if that fails: without a message and with success if the reader has closed the
 * pipe, as "head" does, otherwise with a message.
 */
void print(const QString &line, Tools::Style style = Tools::Style::Plain);

/*! \brief The same for \a text, one or more lines, as it is. */
void printText(const QString &text, Tools::Style style = Tools::Style::Plain);

/*! \brief Writes \a difference as a line for people, a result. */
void printDifference(const Difference &difference);

/*! \brief Writes \a text, a message of the program, to standard error. */
void printNote(const QString &text, Tools::Style style = Tools::Style::Aside);

/*! \brief Writes which \a settings there are to standard error, if there are any. */
void printUnseenSettings(const UnseenSettings &settings);

/*! \brief Writes what \a failure says to standard error, if it says something. */
void report(const Tools::Failure &failure);

} // namespace Tarnvel::Client
