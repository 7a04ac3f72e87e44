// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"

#include "input_file.h"
#include "scenario/plain_json.h"
#include "scenario/scenario_reader.h"
#include "schema_reader.h"
#include "validation.h"

#include <sysexits.h>

namespace Tarnvel::Schema {

using Tools::Diagnostics;
using Tools::JsonValue;

namespace {

// The configurations that the application can have in a scenario, also those of its faults.
std::vector<const JsonValue *> configurationsOf(const JsonValue &application)
{
    const QString configuration = QStringLiteral("configuration");
    std::vector<const JsonValue *> configurations {application.member(configuration)};
    const JsonValue *const faults = application.member(QStringLiteral("faults"));
    if (!faults)
        return configurations;
    for (const JsonValue &fault : faults->items) {
        if (const JsonValue *const replacement = fault.member(configuration))
            configurations.push_back(replacement);
    }
    return configurations;
}

void checkApplication(const Schema &schema, const JsonValue &application,
                      const Diagnostics &diagnostics, Report *report)
{
    for (const JsonValue *const configuration : configurationsOf(application)) {
        for (const Problem &problem :
             validate(schema.root, Sandbox::plainConfiguration(*configuration)))
            report->append({problem.kind == Problem::Deprecated ? EX_OK : EX_DATAERR,
                            problem.text(), problem.hint, diagnostics.location(problem.offset)});
    }
}

Report checkScenario(const Schema &schema, const QString &fileName)
{
    QByteArray text;
    if (const Tools::Failure failure = Tools::readInputFile(fileName, &text, EX_NOINPUT))
        return {failure};
    Diagnostics diagnostics(fileName, text);
    Sandbox::Scenario scenario;
    const JsonValue document = Sandbox::parseScenario(text, &scenario, &diagnostics);
    if (!diagnostics.isEmpty())
        return diagnostics.failures(EX_DATAERR);
    Report report;
    bool isFound = false;
    for (const JsonValue &application : document.member(QStringLiteral("applications"))->items) {
        if (application.member(QStringLiteral("organization"))->text != schema.organization
            || application.member(QStringLiteral("application"))->text != schema.application)
            continue;
        isFound = true;
        checkApplication(schema, application, diagnostics, &report);
    }
    if (!isFound)
        report.append({EX_DATAERR,
                       QStringLiteral("there is no application %1/%2, which the schema is for")
                           .arg(schema.organization, schema.application),
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
    for (const QString &file : commandLine.files.mid(1))
        report += checkScenario(schema, file);
    return report;
}

} // namespace Tarnvel::Schema
