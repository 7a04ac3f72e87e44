// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"

#include "header/header_writer.h"
#include "header/names.h"
#include "input_file.h"
#include "schema_reader.h"

#include <QtCore/QFileInfo>

#include <sysexits.h>

namespace Tarnvel::Schema {

Report header(const CommandLine &commandLine, QByteArray *output)
{
    const QString &className = commandLine.className;
    if (className.isEmpty())
        return {usageFailure(QStringLiteral("the option --class is missing"))};
    if (const QString problem = classNameProblem(className); !problem.isNull())
        return {usageFailure(
            QStringLiteral("\"%1\" cannot be the name of a class: %2").arg(className, problem))};
    const QString &fileName = commandLine.files.constFirst();
    const QString nameInComments = fileName == QLatin1String(Tools::standardInputName)
        ? QStringLiteral("its schema")
        : QFileInfo(fileName).fileName();
    QByteArray text;
    if (const Tools::Failure failure = Tools::readInputFile(fileName, &text, EX_NOINPUT))
        return {failure};
    Tools::Diagnostics diagnostics(fileName, text);
    const Schema schema = parseSchema(text, &diagnostics);
    if (diagnostics.isEmpty())
        checkNames(schema.root, className, &diagnostics);
    if (diagnostics.isEmpty())
        *output = writeHeader(schema, className, nameInComments).toUtf8();
    return diagnostics.failures(EX_DATAERR);
}

} // namespace Tarnvel::Schema
