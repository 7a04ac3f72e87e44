// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "expectation.h"

#include "exit_status.h"

namespace Tarnvel::Sandbox {

namespace {

bool hasMembers(const QJsonObject &members, const QJsonObject &record)
{
    for (auto member = members.begin(); member != members.end(); ++member) {
        if (record.value(member.key()) != member.value())
            return false;
    }
    return true;
}

} // namespace

Expectation::Expectation(const QVector<ExpectedCall> &calls) : m_calls(calls) { }

void Expectation::record(const QJsonObject &record)
{
    if (m_met == m_calls.size() || record.value(QLatin1String("event")) != QLatin1String("call"))
        return;
    const ExpectedCall &expected = m_calls.at(m_met);
    if (!hasMembers(expected.members, record))
        return;
    const double time = record.value(QLatin1String("time")).toDouble();
    if (time <= expected.within)
        ++m_met;
    else if (m_lateTime == 0)
        m_lateTime = time;
}

Tools::Failure Expectation::missing() const
{
    if (m_met == m_calls.size())
        return {};
    const QString message = m_lateTime == 0
        ? QStringLiteral("the expected call did not come")
        : QStringLiteral("the expected call came after %1 s").arg(m_lateTime);
    return {ExpectationsNotMet, message, {}, m_calls.at(m_met).location};
}

} // namespace Tarnvel::Sandbox
