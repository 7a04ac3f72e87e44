// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "diagnostics.h"

#include <algorithm>

namespace Tarnvel::Tools {

QString Diagnostic::location() const
{
    return line == 0 ? file : QStringLiteral("%1:%2:%3").arg(file).arg(line).arg(column);
}

Diagnostics::Diagnostics(const QString &fileName, const QByteArray &text)
    : m_fileName(fileName), m_text(text), m_lineStarts {0}
{
    for (int feed = text.indexOf('\n'); feed >= 0; feed = text.indexOf('\n', feed + 1))
        m_lineStarts.push_back(feed + 1);
}

QString Diagnostics::fileName() const
{
    return m_fileName;
}

void Diagnostics::add(int offset, const QString &message, const QString &hint)
{
    m_diagnostics.emplace(offset, at(offset, message, hint));
}

void Diagnostics::addSlip(int offset, const QString &message, const QString &hint)
{
    m_diagnostics.emplace(offset, at(offset, message, hint))->second.isSlip = true;
}

QByteArray Diagnostics::text(int offset, int end) const
{
    return QByteArray::fromRawData(m_text.constData() + offset, end - offset);
}

bool Diagnostics::isEmpty() const
{
    return m_diagnostics.empty();
}

QString Diagnostics::location(int offset) const
{
    return at(offset, {}, {}).location();
}

QVector<Diagnostic> Diagnostics::all() const
{
    QVector<Diagnostic> all;
    for (const auto &[offset, diagnostic] : m_diagnostics)
        all.append(diagnostic);
    return all;
}

QVector<Failure> Diagnostics::failures(int status) const
{
    QVector<Failure> failures;
    for (const auto &[offset, diagnostic] : m_diagnostics)
        failures.append({status, diagnostic.message, diagnostic.hint, diagnostic.location()});
    return failures;
}

Diagnostic Diagnostics::at(int offset, const QString &message, const QString &hint) const
{
    const auto nextLine = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), offset);
    const int start = *(nextLine - 1);
    const QString before = QString::fromUtf8(m_text.mid(start, offset - start));
    return {m_fileName, static_cast<int>(nextLine - m_lineStarts.begin()),
            static_cast<int>(before.size()) + 1, message, hint};
}

} // namespace Tarnvel::Tools
