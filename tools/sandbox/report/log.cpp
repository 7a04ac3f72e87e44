// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "log.h"

#include <QtCore/QJsonDocument>

#include <utility>

namespace Tarnvel::Sandbox {

Log::Log(Handler handler) : m_handler(std::move(handler))
{
    start();
}

bool Log::open(const QString &fileName)
{
    m_file.setFileName(fileName);
    return m_file.open(QIODevice::WriteOnly | QIODevice::Truncate);
}

void Log::start()
{
    m_clock.start();
}

double Log::elapsed() const
{
    return static_cast<double>(m_clock.elapsed()) / 1000;
}

void Log::report(const Event &event)
{
    QJsonObject record = event.record;
    record.insert(QStringLiteral("time"), elapsed());
    record.insert(QStringLiteral("text"), event.line);
    if (m_file.isOpen())
        write(QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n');
    if (m_handler)
        m_handler(record);
    // Last, so that whoever sees the line finds the record.
    printEvent(event.line, event.style);
}

void Log::write(const QByteArray &line)
{
    // Whoever follows the file sees each event when it happens.
    if (m_file.write(line) == line.size() && m_file.flush())
        return;
    printEvent(errorString(), Tools::Style::Bad);
    m_file.close();
}

QString Log::errorString() const
{
    return QStringLiteral("%1: %2").arg(m_file.fileName(), m_file.errorString());
}

void printEvent(const QString &line, Tools::Style style)
{
    Tools::printLine(stderr, Tools::shownOnOneLine(line), style);
}

} // namespace Tarnvel::Sandbox
