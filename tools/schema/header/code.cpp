// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "code.h"

namespace Tarnvel::Schema {

namespace {

constexpr int maximumCommentLength = 90;

QStringList wrapped(const QString &paragraph)
{
    QStringList lines {QString()};
    const QStringList words = paragraph.simplified().split(QLatin1Char(' '));
    for (const QString &word : words) {
        if (lines.constLast().isEmpty())
            lines.last() = word;
        else if (lines.constLast().size() + word.size() < maximumCommentLength)
            lines.last() += QLatin1Char(' ') + word;
        else
            lines.append(word);
    }
    return lines;
}

} // namespace

void Code::lines(const QString &text)
{
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (line.isEmpty())
            blank();
        else
            addLine(line);
    }
}

void Code::addLine(const QString &text)
{
    m_text += QString(4 * m_level, QLatin1Char(' ')) + text + QLatin1Char('\n');
}

void Code::blank()
{
    const bool isNeeded = !m_text.endsWith(QLatin1String("{\n"))
        && !m_text.endsWith(QLatin1String(":\n")) && !m_text.endsWith(QLatin1String("\n\n"));
    if (isNeeded)
        m_text += QLatin1Char('\n');
}

void Code::comment(const QStringList &paragraphs)
{
    blank();
    const QString &first = paragraphs.constFirst();
    if (paragraphs.size() == 1 && first.size() < maximumCommentLength)
        return line("/*! %1 */", first);
    QString start = QStringLiteral("/*!");
    for (const QString &paragraph : paragraphs) {
        if (paragraph.trimmed().isEmpty())
            continue;
        addLine(start);
        start = QStringLiteral(" *");
        const QStringList lines = wrapped(paragraph);
        for (const QString &text : lines)
            line(" * %1", text);
    }
    line(" */");
}

void Code::openBlock()
{
    line("{");
    ++m_level;
}

void Code::close(const char *brace)
{
    --m_level;
    line(brace);
}

void Code::label(const char *access)
{
    blank();
    --m_level;
    line(access);
    ++m_level;
}

} // namespace Tarnvel::Schema
