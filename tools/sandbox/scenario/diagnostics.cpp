// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "diagnostics.h"

#include "exit_status.h"

namespace Tarnvel::Sandbox {

Diagnostics::Diagnostics(const QString &fileName, const QByteArray &text)
    : m_fileName(fileName), m_text(text)
{
}

void Diagnostics::add(int offset, const QString &message)
{
    m_messages.emplace(offset, message);
}

QString Diagnostics::location(int offset) const
{
    const QByteArray before = m_text.left(offset);
    const QByteArray line = before.mid(before.lastIndexOf('\n') + 1);
    return QStringLiteral("%1:%2:%3")
        .arg(m_fileName)
        .arg(before.count('\n') + 1)
        .arg(QString::fromUtf8(line).size() + 1);
}

QVector<Tools::Failure> Diagnostics::failures() const
{
    QVector<Tools::Failure> failures;
    for (const auto &[offset, message] : m_messages)
        failures.append({SandboxFailed, message, {}, location(offset)});
    return failures;
}

} // namespace Tarnvel::Sandbox
