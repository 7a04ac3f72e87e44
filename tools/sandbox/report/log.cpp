// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "log.h"

#include "exit_status.h"

#include <QtCore/QJsonDocument>

#include <utility>

namespace Tarnvel::Sandbox {

Log::Log(Handler handler) : m_handler(std::move(handler))
{
    start();
}

Tools::Failure Log::open(const QString &fileName)
{
    m_file.setFileName(fileName);
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return {};
    return fileFailure();
}

void Log::start()
{
    m_clock.start();
}

void Log::report(const Event &event)
{
    QJsonObject record = event.record;
    record.insert(QStringLiteral("time"), static_cast<double>(m_clock.elapsed()) / 1000);
    record.insert(QStringLiteral("text"), event.line);
    if (m_file.isOpen())
        write(QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n');
    if (m_handler)
        m_handler(record);
    // Last, so that a process that has read the line finds the record.
    printEvent(event.line, event.style);
}

void Log::write(const QByteArray &line)
{
    // A process that follows the file sees each event when it happens.
    if (m_file.write(line) == line.size() && m_file.flush())
        return;
    printEvent(fileFailure().text(), Tools::Style::Bad);
    m_file.close();
}

Tools::Failure Log::fileFailure() const
{
    return {SandboxFailed, m_file.errorString(), {}, m_file.fileName()};
}

void printEvent(const QString &line, Tools::Style style)
{
    Tools::printLine(stderr, Tools::shownOnOneLine(line), style);
}

} // namespace Tarnvel::Sandbox
