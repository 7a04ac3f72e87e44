// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <cstdio>

namespace Tarnvel::Tools {

/*! \brief The meaning of a text; terminals show each in its own color. */
enum class Style {
    /*! Nothing in particular. */
    Plain,
    /*! Success. */
    Good,
    /*! A failure or a refusal. */
    Bad,
    /*! An event that nobody asked for. */
    News,
    /*! Less important than the text around it. */
    Aside,
};

/*!
 * \brief \a text with its control characters, line separators and bidirectional controls escaped.
 *
 * They are escaped as in JSON, such as "\\u001b": JSON text keeps its meaning.
 */
QString shownOnOneLine(const QString &text);

/*!
 * \brief Writes \a line and a line feed to \a stream, in UTF-8, at once.
 *
 * It is colored if the stream is a terminal with colors, unless the variable NO_COLOR is set and
 * not empty.
 */
void printLine(std::FILE *stream, const QString &line, Style style = Style::Plain);

} // namespace Tarnvel::Tools
