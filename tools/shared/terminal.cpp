// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "terminal.h"

#include <unistd.h>

namespace Tarnvel::Tools {

namespace {

QByteArray escapeSequence(Style style)
{
    switch (style) {
    case Style::Plain:
        break;
    case Style::Good:
        return "\033[32m";
    case Style::Bad:
        return "\033[31m";
    case Style::News:
        return "\033[36m";
    case Style::Aside:
        return "\033[2m";
    }
    return {};
}

bool showsColors(std::FILE *stream)
{
    const QByteArray terminal = qgetenv("TERM");
    return isatty(fileno(stream)) && !terminal.isEmpty() && terminal != "dumb"
        && qEnvironmentVariableIsEmpty("NO_COLOR");
}

} // namespace

QString shownOnOneLine(const QString &text)
{
    QString shown = text;
    for (QChar &character : shown) {
        const QChar::Category category = character.category();
        if (category == QChar::Other_Control || category == QChar::Other_Format
            || category == QChar::Separator_Line || category == QChar::Separator_Paragraph)
            character = QChar::ReplacementCharacter;
    }
    return shown;
}

void printLine(std::FILE *stream, const QString &line, Style style)
{
    QByteArray text = line.toUtf8();
    if (style != Style::Plain && showsColors(stream))
        text = escapeSequence(style) + text + "\033[0m";
    text += '\n';
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stream);
    std::fflush(stream);
}

} // namespace Tarnvel::Tools
