// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "entry_cache.h"
#include "failure.h"
#include "json_document.h"
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

/*!
 * \brief The same, but adds what is wrong to \a diagnostics, which are those of \a text.
 *
 * Returns the JSON document, even if it is no scenario; null if the text is not JSON.
 */
Tools::JsonValue parseScenario(const QByteArray &text, Scenario *scenario,
                               Tools::Diagnostics *diagnostics, EntryCache *cache = nullptr);

/*! \brief Like parseScenario(), with the content of the file. The \a cache is for its next one. */
QVector<Tools::Failure> readScenario(const QString &fileName, Scenario *scenario,
                                     EntryCache *cache = nullptr);

/*! \brief What \a setting, a member of "allowed", allows. */
AllowedValues readAllowedValues(const Tools::JsonMember &setting, Tools::Diagnostics *diagnostics);

} // namespace Tarnvel::Sandbox
