// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "scenario_file.h"

#include "input_file.h"
#include "scenario/plain_json.h"
#include "scenario/scenario_reader.h"

#include <sysexits.h>

namespace Tarnvel::Schema {

using Tools::JsonValue;

std::optional<ScenarioFile> readScenarioFile(const QString &fileName, Report *report)
{
    QByteArray text;
    if (const Tools::Failure failure = Tools::readInputFile(fileName, &text, EX_NOINPUT)) {
        report->append(failure);
        return {};
    }
    Tools::Diagnostics diagnostics(fileName, text);
    Sandbox::Scenario scenario;
    const JsonValue document = Sandbox::parseScenario(text, &scenario, &diagnostics);
    *report += diagnostics.failures(EX_DATAERR);
    if (!diagnostics.isEmpty())
        return {};
    return ScenarioFile {document.member(QStringLiteral("applications"))->items, diagnostics};
}

QString nameOf(const JsonValue &application)
{
    return application.member(QStringLiteral("organization"))->text + QLatin1Char('/')
        + application.member(QStringLiteral("application"))->text;
}

std::vector<JsonValue> configurationsOf(const JsonValue &application)
{
    const QString member = QStringLiteral("configuration");
    std::vector<JsonValue> configurations {
        Sandbox::plainConfiguration(*application.member(member))};
    const JsonValue *const faults = application.member(QStringLiteral("faults"));
    if (!faults)
        return configurations;
    for (const JsonValue &fault : faults->items) {
        if (const JsonValue *const configuration = fault.member(member))
            configurations.push_back(Sandbox::plainConfiguration(*configuration));
    }
    return configurations;
}

} // namespace Tarnvel::Schema
