// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Testing {

/*!
 * \brief Collects the whole text of every message logged while it lives, in place of printing it.
 *
 * A message of another level than warning, or another category than "default", is collected with
 * both in front, so that a comparison with the expected texts fails.
 */
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();

    MessageLog(const MessageLog &) = delete;
    MessageLog &operator=(const MessageLog &) = delete;

    /*! \brief The messages since the last call, oldest first. */
    QStringList take();

private:
    QtMessageHandler m_previous;
};

} // namespace Tarnvel::Testing
