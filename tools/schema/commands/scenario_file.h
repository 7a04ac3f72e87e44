// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "commands.h"
#include "diagnostics.h"
#include "json_document.h"

#include <optional>

namespace Tarnvel::Schema {

/*! \brief The content of a scenario. */
struct ScenarioFile
{
    std::vector<Tools::JsonValue> applications;
    Tools::Diagnostics diagnostics;
};

/*! \brief The scenario \a fileName; if it is none, nothing, and \a report says why. */
std::optional<ScenarioFile> readScenarioFile(const QString &fileName, Report *report);

/*! \brief The name of \a application in messages and options: "acme/viewer". */
QString nameOf(const Tools::JsonValue &application);

/*! \brief The configurations that \a application can have, also those of its faults. */
std::vector<Tools::JsonValue> configurationsOf(const Tools::JsonValue &application);

} // namespace Tarnvel::Schema
