// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "expectation.h"

#include "exit_status.h"
#include "variant_json.h"

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cmath>

namespace Tarnvel::Sandbox {

namespace {

constexpr int mostNearestCalls = 3;

const QLatin1String withinMember("within");

double timeOf(const QJsonObject &record)
{
    return record.value(QLatin1String("time")).toDouble();
}

QStringList differencesBetween(const ExpectedCall &expected, const QJsonObject &record)
{
    QStringList differences;
    const QJsonObject &members = expected.members;
    for (auto member = members.begin(); member != members.end(); ++member) {
        if (record.value(member.key()) != member.value())
            differences.append(member.key());
    }
    if (timeOf(record) > expected.within)
        differences.append(withinMember);
    return differences;
}

QString timesText(int count)
{
    return count == 1 ? QStringLiteral("once") : QStringLiteral("%1 times").arg(count);
}

QString expectedText(const ExpectedCall &expected)
{
    QJsonObject members = expected.members;
    if (std::isfinite(expected.within))
        members.insert(withinMember, expected.within);
    return QString::fromUtf8(QJsonDocument(members).toJson(QJsonDocument::Compact));
}

Tools::Failure failureAt(const QString &location, const QString &message)
{
    return {ExpectationsNotMet, message, {}, location};
}

} // namespace

bool Expectation::CallProgress::isMet() const
{
    return count == expected.times.value_or(1);
}

void Expectation::CallProgress::add(const RecordedCall &call)
{
    const auto hasMore = [&call](const RecordedCall &other) {
        return other.differences.size() > call.differences.size();
    };
    nearest.insert(std::find_if(nearest.begin(), nearest.end(), hasMore), call);
    if (nearest.size() > mostNearestCalls)
        nearest.removeLast();
}

QString Expectation::CallProgress::message() const
{
    if (!expected.times)
        return QStringLiteral("the expected call did not come: ");
    if (*expected.times == 0)
        return QStringLiteral("the call that must not come came %1: ").arg(timesText(count));
    return QStringLiteral("the expected call came %1, not %2: ")
        .arg(timesText(count), timesText(*expected.times));
}

QString Expectation::CallProgress::noteOn(const RecordedCall &call) const
{
    const QString text = QStringLiteral("after %1 s: %2").arg(call.time).arg(call.text);
    if (call.differences.isEmpty())
        return (expected.times ? QStringLiteral("came ") : QStringLiteral("came before its turn, "))
            + text;
    return QStringLiteral("near, %1 (other: %2)")
        .arg(text, call.differences.join(QLatin1String(", ")));
}

QVector<Tools::Failure> Expectation::CallProgress::failures() const
{
    const bool isTooOften = count > expected.times.value_or(1);
    QVector<Tools::Failure> failures {
        failureAt(expected.location, message() + expectedText(expected))};
    for (const RecordedCall &call : nearest) {
        if (!isTooOften || call.differences.isEmpty())
            failures.append(failureAt(expected.location, noteOn(call)));
    }
    if (nearest.isEmpty())
        failures.append(failureAt(expected.location, QStringLiteral("no call came at all")));
    return failures;
}

Expectation::Expectation(const QVector<ExpectedCall> &calls,
                         const QVector<ExpectedSetting> &settings)
    : m_settings(settings)
{
    for (const ExpectedCall &call : calls)
        m_calls.append({call});
}

void Expectation::record(const QJsonObject &record)
{
    if (record.value(QLatin1String("event")) != QLatin1String("call"))
        return;
    bool isTurnTaken = false;
    for (CallProgress &call : m_calls) {
        const bool isInOrder = !call.expected.times;
        if (isInOrder && call.isMet())
            continue;
        const QStringList differences = differencesBetween(call.expected, record);
        // One call is not two in the order.
        const bool isTurn = !isInOrder || !isTurnTaken;
        isTurnTaken = isTurnTaken || isInOrder;
        if (isTurn && differences.isEmpty())
            ++call.count;
        call.add({timeOf(record), record.value(QLatin1String("text")).toString(), differences});
    }
}

QVector<Tools::Failure> Expectation::unmet(
    const std::function<Variant(const QString &path)> &configurationAt) const
{
    QVector<Tools::Failure> unmet;
    bool isOrderBroken = false;
    for (const CallProgress &call : m_calls) {
        const bool isInOrder = !call.expected.times;
        if (call.isMet() || (isInOrder && isOrderBroken))
            continue;
        isOrderBroken = isOrderBroken || isInOrder;
        unmet += call.failures();
    }
    for (const ExpectedSetting &setting : m_settings) {
        const Variant kept = valueAt(configurationAt(setting.path), {setting.key});
        // As JSON: an empty list in an expectation does not say what it is a list of.
        if (kept && toJson(kept.get()) == toJson(setting.value.get()))
            continue;
        unmet.append(failureAt(setting.location,
                               QStringLiteral("in the end, \"%1\" of %2 is %3, not %4")
                                   .arg(setting.key, setting.application,
                                        kept ? toJsonText(kept.get()) : QStringLiteral("missing"),
                                        toJsonText(setting.value.get()))));
    }
    return unmet;
}

} // namespace Tarnvel::Sandbox
