// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"

#include "facts.h"
#include "schema_reader.h"
#include "terminal.h"

#include <QtCore/QRegularExpression>

namespace Tarnvel::Schema {

namespace {

// All texts are written through one of the next three functions: none can end its line, or mean
// something in Markdown.

QString code(const QString &text)
{
    const QString shown = Tools::shownOnOneLine(text);
    QString fence = QStringLiteral("`");
    while (shown.contains(fence))
        fence += QLatin1Char('`');
    const bool needsSpaces = shown.startsWith(QLatin1Char('`')) || shown.endsWith(QLatin1Char('`'))
        || shown.startsWith(QLatin1Char(' '));
    const QString space = needsSpaces ? QStringLiteral(" ") : QString();
    return fence + space + shown + space + fence;
}

QString plain(const QString &text)
{
    // The last three are for pandoc, which would make citations, formulas and dashes of them.
    static const QRegularExpression special(QStringLiteral("([\\\\`*_\\[\\]<>&|~^#@$]|-(?=-))"));
    QString escaped = Tools::shownOnOneLine(text.simplified());
    return escaped.replace(special, QStringLiteral("\\\\1"));
}

// The beginning of a line could also make it an item of a list, or a part of something else.
QString paragraph(const QString &text)
{
    static const QRegularExpression special(QStringLiteral("^([-+=:%]|[0-9]+(?=[.)]))"));
    QString escaped = plain(text);
    const QString found = special.match(escaped).captured();
    if (!found.isEmpty())
        escaped.insert(found.size() - (found.at(0).isDigit() ? 0 : 1), QLatin1Char('\\'));
    return escaped;
}

QString paragraphs(const QString &text)
{
    static const QRegularExpression blankLine(QStringLiteral("\\n\\s*\\n"));
    QString result;
    const QStringList parts = text.split(blankLine, Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        if (!part.simplified().isEmpty())
            result += paragraph(part) + QStringLiteral("\n\n");
    }
    return result;
}

// A line of the list of facts; nothing if there is no such fact.
QString fact(const char *name, const QString &value)
{
    return value.isEmpty() ? QString()
                           : QStringLiteral("- %1: %2\n").arg(QLatin1String(name), value);
}

QString facts(const Setting &setting)
{
    QString list;
    const QVector<Fact> all = factsOf(setting);
    for (const Fact &one : all) {
        QStringList values;
        for (const QString &value : one.values)
            values.append(one.isCode ? code(value) : value);
        list += fact(one.name, values.join(QStringLiteral(", ")));
    }
    return list;
}

QString section(const Setting &setting)
{
    QString text = QStringLiteral("## %1\n\n").arg(code(setting.path));
    if (!setting.title.simplified().isEmpty())
        text += QStringLiteral("**%1**\n\n").arg(plain(setting.title));
    text += paragraphs(setting.description);
    QString list = facts(setting);
    if (setting.needsRestart)
        list += QStringLiteral("- A new value takes effect when the application is restarted.\n");
    list += fact("Deprecated", plain(setting.deprecated));
    return list.isEmpty() ? text : text + list + QLatin1Char('\n');
}

QString sections(const Setting &object)
{
    QString text;
    for (const Setting &setting : object.members) {
        if (setting.type != Type::Object || !setting.title.isEmpty()
            || !setting.description.isEmpty() || !setting.deprecated.isEmpty())
            text += section(setting);
        text += sections(setting);
    }
    return text;
}

} // namespace

Report docs(const CommandLine &commandLine, QByteArray *output)
{
    Schema schema;
    const Report report = readSchema(commandLine.files.constFirst(), &schema);
    if (!report.isEmpty())
        return report;
    const QString name = schema.organization + QLatin1Char('/') + schema.application;
    QString text = QStringLiteral("# %1\n\n")
                       .arg(plain(schema.root.title.simplified().isEmpty()
                                      ? QStringLiteral("Settings of ") + name
                                      : schema.root.title));
    text += paragraphs(schema.root.description);
    text += fact("Organization", code(schema.organization))
        + fact("Application", code(schema.application));
    text += QStringLiteral(
        "\nA setting has its default if it is absent, or if its value is not allowed. In a path, "
        "`/` separates the\nkeys of nested settings.\n\n");
    text += sections(schema.root);
    text.chop(1);
    *output = text.toUtf8();
    return {};
}

} // namespace Tarnvel::Schema
