// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Tarnvel::Tools {

/*!
 * \brief The string that \a text holds in UTF-8, all of it.
 *
 * QString::fromUtf8() takes U+FEFF at the beginning for a byte-order mark, and leaves it out.
 */
inline QString fromUtf8(const QByteArray &text)
{
    const bool beginsWithMark = text.startsWith("\xef\xbb\xbf");
    return beginsWithMark ? QString::fromUtf8('.' + text).mid(1) : QString::fromUtf8(text);
}

} // namespace Tarnvel::Tools
