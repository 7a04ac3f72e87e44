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
 * call in the log must have, too; "within" is the seconds from the start within which it must come.
 * Anything else is a failure with its place in the file; \a expectation is then unchanged.
 */
Tools::Failure parseExpectation(const QString &fileName, const QByteArray &text,
                                Expectation *expectation);

/*! \brief Does as parseExpectation() with the content of the file. */
Tools::Failure readExpectation(const QString &fileName, Expectation *expectation);

} // namespace Tarnvel::Sandbox
