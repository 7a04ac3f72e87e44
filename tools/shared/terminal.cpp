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

// What could end a line, control a terminal, or change the order of the text around it.
bool breaksLines(QChar character)
{
    static const QString bidirectionalControls = QStringLiteral(
        "\u061c\u200e\u200f\u202a\u202b\u202c\u202d\u202e\u2066\u2067\u2068\u2069");
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line
        || category == QChar::Separator_Paragraph || bidirectionalControls.contains(character);
}

} // namespace

QString shownOnOneLine(const QString &text)
{
    QString shown;
    for (const QChar character : text) {
        if (breaksLines(character))
            shown += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            shown += character;
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
