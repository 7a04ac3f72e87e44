// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Testing {

/*!
 * \brief Collects the text of every message that is logged, instead of printing it.
 *
 * If a message is not a warning of the category "default", its level and category are added, so
 * that a comparison with the expected texts fails.
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
