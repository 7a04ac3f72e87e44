// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "terminal.h"

#include <unistd.h>

namespace Tarnvel::Tools {

namespace {

QByteArray escapeSequence(Tone tone)
{
    switch (tone) {
    case Tone::Plain:
        break;
    case Tone::Good:
        return "\033[32m";
    case Tone::Bad:
        return "\033[31m";
    case Tone::News:
        return "\033[36m";
    case Tone::Aside:
        return "\033[2m";
    }
    return {};
}

bool showsColours(std::FILE *channel)
{
    const QByteArray terminal = qgetenv("TERM");
    return isatty(fileno(channel)) && !terminal.isEmpty() && terminal != "dumb"
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

void printLine(std::FILE *channel, const QString &line, Tone tone)
{
    QByteArray text = line.toUtf8();
    if (tone != Tone::Plain && showsColours(channel))
        text = escapeSequence(tone) + text + "\033[0m";
    text += '\n';
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), channel);
    std::fflush(channel);
}

} // namespace Tarnvel::Tools
