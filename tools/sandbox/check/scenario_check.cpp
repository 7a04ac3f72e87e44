// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "scenario_check.h"

#include "exit_status.h"
#include "fault_slips.h"
#include "input_file.h"
#include "report/log.h"
#include "scenario/scenario_reader.h"
#include "setting_slips.h"
#include "terminal.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cstdlib>

namespace Tarnvel::Sandbox {

using Tools::Style;

namespace {

QVector<Tools::Diagnostic> diagnoseFile(const QString &fileName, bool isStrict)
{
    QByteArray text;
    if (const Tools::Failure failure = Tools::readInputFile(fileName, &text, SandboxFailed))
        return {{fileName, 0, 0, failure.message}};
    return diagnose(fileName, text, isStrict);
}

QByteArray toJson(const Tools::Diagnostic &diagnostic)
{
    QJsonObject object {
        {QStringLiteral("file"), diagnostic.file},
        {QStringLiteral("message"), diagnostic.message},
        {QStringLiteral("strict"), diagnostic.isSlip},
    };
    if (diagnostic.line != 0) {
        object.insert(QStringLiteral("line"), diagnostic.line);
        object.insert(QStringLiteral("column"), diagnostic.column);
    }
    if (!diagnostic.hint.isEmpty())
        object.insert(QStringLiteral("hint"), diagnostic.hint);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

void printText(const Tools::Diagnostic &diagnostic)
{
    printEvent(diagnostic.location() + QStringLiteral(": ") + diagnostic.message, Style::Bad);
    if (!diagnostic.hint.isEmpty())
        printEvent(QStringLiteral("  what to do: ") + diagnostic.hint);
}

} // namespace

QVector<Tools::Diagnostic> diagnose(const QString &fileName, const QByteArray &text, bool isStrict)
{
    Tools::Diagnostics diagnostics(fileName, text);
    Scenario scenario;
    const Tools::JsonValue document = parseScenario(text, &scenario, &diagnostics);
    if (isStrict) {
        addSettingSlips(document, &diagnostics);
        addFaultSlips(document, &diagnostics);
    }
    return diagnostics.all();
}

int checkScenarios(const Options &options)
{
    int status = EXIT_SUCCESS;
    for (const QString &fileName : options.checkFiles) {
        const QVector<Tools::Diagnostic> diagnostics = diagnoseFile(fileName, options.isStrict);
        for (const Tools::Diagnostic &diagnostic : diagnostics) {
            status = SandboxFailed;
            if (options.printsJson)
                Tools::printLine(stdout,
                                 Tools::shownOnOneLine(QString::fromUtf8(toJson(diagnostic))));
            else
                printText(diagnostic);
        }
        if (diagnostics.isEmpty() && !options.printsJson)
            Tools::printLine(stdout, Tools::shownOnOneLine(fileName + QStringLiteral(": valid")),
                             Style::Good);
    }
    return status;
}

} // namespace Tarnvel::Sandbox
