// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"

#include "scenario_file.h"
#include "schema_reader.h"
#include "validation.h"

#include <sysexits.h>

namespace Tarnvel::Schema {

using Tools::JsonValue;

namespace {

Report checkScenario(const Schema &schema, const QString &fileName)
{
    Report report;
    const std::optional<ScenarioFile> scenario = readScenarioFile(fileName, &report);
    if (!scenario)
        return report;
    const QString name = schema.organization + QLatin1Char('/') + schema.application;
    bool isFound = false;
    for (const JsonValue &application : scenario->applications) {
        if (nameOf(application) != name)
            continue;
        isFound = true;
        for (const JsonValue &configuration : configurationsOf(application)) {
            for (const Problem &problem : validate(schema.root, configuration))
                report.append({problem.kind == Problem::Deprecated ? EX_OK : EX_DATAERR,
                               problem.text(), problem.hint,
                               scenario->diagnostics.location(problem.offset)});
        }
    }
    if (!isFound)
        report.append(
            {EX_DATAERR,
             QStringLiteral("there is no application %1, which the schema is for").arg(name),
             {},
             fileName});
    return report;
}

} // namespace

Report check(const CommandLine &commandLine, QByteArray *)
{
    Schema schema;
    Report report = readSchema(commandLine.files.constFirst(), &schema);
    if (!report.isEmpty())
        return report;
    const QStringList scenarios = commandLine.files.mid(1);
    for (const QString &file : scenarios)
        report += checkScenario(schema, file);
    return report;
}

} // namespace Tarnvel::Schema
