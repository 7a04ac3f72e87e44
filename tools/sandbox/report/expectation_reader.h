// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "expectation.h"
#include "scenario/scenario.h"

#include <QtCore/QByteArray>

namespace Tarnvel::Sandbox {

/*!
 * \brief Sets \a expectation to what \a text, the content of the JSON file \a fileName, expects.
 *
 * The file is an object with a list of "calls". Each is an object whose members the record of a
 * call in the log must also have; "within", "times" and "never" say when and how often it must
 * come. "finally" has settings that the service must keep at the end.
 *
 * Returns all diagnostics; if there are any, \a expectation is unchanged. A call that \a scenario
 * makes impossible is one of them.
 */
QVector<Tools::Failure> parseExpectation(const QString &fileName, const QByteArray &text,
                                         const Scenario &scenario, Expectation *expectation);

/*! \brief Like parseExpectation(), with the content of the file. */
QVector<Tools::Failure> readExpectation(const QString &fileName, const Scenario &scenario,
                                        Expectation *expectation);

} // namespace Tarnvel::Sandbox
