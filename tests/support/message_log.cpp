// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "message_log.h"

#include <QtCore/QMutex>
#include <QtCore/QMutexLocker>

#include <utility>

namespace Tarnvel::Testing {

namespace {

QBasicMutex mutex;

QStringList &messages()
{
    static QStringList texts;
    return texts;
}

void collect(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const bool isPlainWarning = type == QtWarningMsg && qstrcmp(context.category, "default") == 0;
    const QMutexLocker locker(&mutex);
    messages().append(isPlainWarning ? text
                                     : QStringLiteral("level %1, category %2: %3")
                                           .arg(type)
                                           .arg(QLatin1String(context.category), text));
}

} // namespace

MessageLog::MessageLog() : m_previous(qInstallMessageHandler(collect))
{
    take();
}

MessageLog::~MessageLog()
{
    qInstallMessageHandler(m_previous);
}

QStringList MessageLog::take()
{
    const QMutexLocker locker(&mutex);
    return std::exchange(messages(), {});
}

} // namespace Tarnvel::Testing
