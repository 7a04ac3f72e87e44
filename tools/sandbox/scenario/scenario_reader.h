// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"
#include "scenario.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace Tarnvel::Sandbox {

/*!
 * \brief Sets \a scenario to the one that \a text, the content of \a fileName, describes.
 *
 * If it describes none, \a scenario is unchanged, and the result is all that is wrong with it, in
 * the order of the text, each with its location.
 */
QVector<Tools::Failure> parseScenario(const QString &fileName, const QByteArray &text,
                                      Scenario *scenario);

/*! \brief Like parseScenario(), with the content of the file. */
QVector<Tools::Failure> readScenario(const QString &fileName, Scenario *scenario);

} // namespace Tarnvel::Sandbox
