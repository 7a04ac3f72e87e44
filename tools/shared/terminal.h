// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <cstdio>

namespace Tarnvel::Tools {

/*! \brief What a text is about; terminals show each in a colour of its own. */
enum class Style {
    /*! Nothing in particular. */
    Plain,
    /*! What went well. */
    Good,
    /*! What failed or was refused. */
    Bad,
    /*! What happened without being asked for. */
    News,
    /*! What matters less than its surroundings. */
    Aside,
};

/*!
 * \brief \a text without what could end the line or make a terminal do something.
 *
 * Each such character is shown as the replacement character.
 */
QString shownOnOneLine(const QString &text);

/*!
 * \brief Writes \a line and a line feed to \a channel, in UTF-8, at once.
 *
 * It is coloured if the channel is a terminal that knows colours, unless the variable NO_COLOR is
 * set and not empty.
 */
void printLine(std::FILE *channel, const QString &line, Style style = Style::Plain);

} // namespace Tarnvel::Tools
