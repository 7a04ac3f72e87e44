// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"

#include "input_file.h"
#include "json_values.h"
#include "scenario/configuration_reader.h"
#include "schema_reader.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Tarnvel::Schema {

using Tools::JsonValue;

namespace {

// Without deprecated settings, which nobody should set: the service gives them their defaults, too.
// It also does for a key that would make its object GVariant text.
JsonValue defaultsOf(const Setting &object)
{
    JsonValue defaults = makeObject({});
    for (const Setting &setting : object.members) {
        if (!setting.deprecated.isEmpty() || setting.key == QLatin1String(Sandbox::gvariantTextKey))
            continue;
        defaults.members.push_back(
            {setting.key, 0,
             setting.type == Type::Object ? defaultsOf(setting) : setting.defaultValue});
    }
    return defaults;
}

} // namespace

Report scenario(const CommandLine &commandLine, QByteArray *output)
{
    const QString file = commandLine.files.constFirst();
    if (file == QLatin1String(Tools::standardInputName))
        return {
            usageFailure(QStringLiteral("the scenario names the schema, which must be a file"))};
    Schema schema;
    const Report report = readSchema(file, &schema);
    if (!report.isEmpty())
        return report;
    // Standard output is expected to become a file in the current directory.
    const QDir directory = commandLine.outputFile.isEmpty()
        ? QDir::current()
        : QFileInfo(commandLine.outputFile).absoluteDir();
    const QString name = directory.relativeFilePath(QFileInfo(file).absoluteFilePath());
    JsonValue application = makeObject({});
    addMember("organization", makeString(schema.organization), &application);
    addMember("application", makeString(schema.application), &application);
    addMember("schema", makeString(name), &application);
    addMember("configuration", defaultsOf(schema.root), &application);
    JsonValue document = makeObject({});
    addMember("applications", makeList({application}), &document);
    *output = toJsonFile(document);
    return {};
}

} // namespace Tarnvel::Schema
