// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "expectation.h"

#include <QtCore/QByteArray>

namespace Tarnvel::Sandbox {

/*!
 * \brief Sets \a expectation to the calls in \a text, the content of the JSON file \a fileName.
 *
 * The file is an object with a list of "calls". Each is an object whose members the record of a
 * call in the log must also have; "within" is the seconds from the start within which it must
 * come. Returns all diagnostics; if there are any, \a expectation is unchanged.
 */
QVector<Tools::Failure> parseExpectation(const QString &fileName, const QByteArray &text,
                                         Expectation *expectation);

/*! \brief Like parseExpectation(), with the content of the file. */
QVector<Tools::Failure> readExpectation(const QString &fileName, Expectation *expectation);

} // namespace Tarnvel::Sandbox
