// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "event_formatter.h"

#include "endpoint.h"
#include "variant_json.h"

namespace Tarnvel::Sandbox {

using Tools::Style;

namespace {

// A longer change is cut off in the line, not in the record.
constexpr int longestChange = 200;

bool isChange(const Testing::MethodCall &call)
{
    return call.method() == QLatin1String(DBus::changeConfigurationMethod)
        && g_variant_is_of_type(call.arguments(), G_VARIANT_TYPE("(a{sv})"));
}

Variant changeOf(const Testing::MethodCall &call)
{
    return adopt(g_variant_get_child_value(call.arguments(), 0));
}

QString methodText(const Testing::MethodCall &call)
{
    if (!isChange(call))
        return call.method();
    QString change = toJsonText(changeOf(call).get());
    if (change.size() > longestChange)
        change = change.left(longestChange) + QStringLiteral("...");
    return call.method() + QLatin1Char(' ') + change;
}

// "acme/viewer (pid 4711): ChangeConfiguration {"zoom":125}: "
QString requestText(const Request &request)
{
    const QString who = request.application.isEmpty() ? request.call.path() : request.application;
    const QString pid = request.caller.processId == 0 ? QStringLiteral("gone")
                                                      : QString::number(request.caller.processId);
    return QStringLiteral("%1 (pid %2): %3: ").arg(who, pid, methodText(request.call));
}

QJsonObject requestRecord(const Request &request)
{
    QJsonObject record {
        {QStringLiteral("event"), QStringLiteral("call")},
        {QStringLiteral("path"), request.call.path()},
        {QStringLiteral("method"), request.call.method()},
    };
    if (!request.application.isEmpty())
        record.insert(QStringLiteral("application"), request.application);
    if (request.caller.processId != 0)
        record.insert(QStringLiteral("pid"), request.caller.processId);
    if (request.caller.userId)
        record.insert(QStringLiteral("user"), static_cast<qint64>(*request.caller.userId));
    if (isChange(request.call))
        record.insert(QStringLiteral("change"), toJson(changeOf(request.call).get()));
    return record;
}

Style outcomeStyle(const Outcome &outcome)
{
    if (outcome.kind == Outcome::Refused || outcome.kind == Outcome::Unanswered)
        return Style::Bad;
    return outcome.fault ? Style::Bad : Style::Good;
}

QString faultText(const std::optional<Fault> &fault)
{
    return fault ? QStringLiteral(" (fault %1)").arg(faultName(fault->kind)) : QString();
}

void insertFault(const std::optional<Fault> &fault, QJsonObject *record)
{
    if (fault)
        record->insert(QStringLiteral("fault"), faultName(fault->kind));
}

} // namespace

QString outcomeName(Outcome::Kind kind)
{
    switch (kind) {
    case Outcome::Answered:
        return QStringLiteral("answered");
    case Outcome::Accepted:
        return QStringLiteral("accepted");
    case Outcome::Refused:
        return QStringLiteral("refused");
    case Outcome::Unanswered:
        break;
    }
    return QStringLiteral("unanswered");
}

QString errorText(const QString &name)
{
    const QLatin1String prefix(DBus::errorPrefix);
    return name.startsWith(prefix) ? name.mid(prefix.size()) : name;
}

Event callEvent(const Request &request, const Outcome &outcome)
{
    QString line = requestText(request) + outcomeName(outcome.kind);
    QJsonObject record = requestRecord(request);
    record.insert(QStringLiteral("outcome"), outcomeName(outcome.kind));
    insertFault(outcome.fault, &record);
    if (!outcome.fault && request.isDelayed)
        record.insert(QStringLiteral("fault"), faultName(Fault::Delay));
    if (outcome.kind == Outcome::Refused) {
        line += QStringLiteral(", %1: %2").arg(errorText(outcome.error), outcome.text);
        record.insert(QStringLiteral("error"), errorText(outcome.error));
        record.insert(QStringLiteral("message"), outcome.text);
    } else if (!outcome.text.isEmpty()) {
        line += QStringLiteral(", ") + outcome.text;
    }
    return {line + faultText(outcome.fault), outcomeStyle(outcome), record};
}

Event delayEvent(const Request &request, double seconds)
{
    QJsonObject record = requestRecord(request);
    record.insert(QStringLiteral("event"), QStringLiteral("fault"));
    record.insert(QStringLiteral("fault"), faultName(Fault::Delay));
    record.insert(QStringLiteral("seconds"), seconds);
    return {requestText(request) + QStringLiteral("delayed by %1 s (fault delay)").arg(seconds),
            Style::Aside, record};
}

Event announcementEvent(const QString &application, const QString &path,
                        const std::optional<Fault> &fault)
{
    QString line = QStringLiteral("%1: %2").arg(application,
                                                QLatin1String(DBus::configurationChangedSignal));
    QJsonObject record {
        {QStringLiteral("event"), QStringLiteral("announcement")},
        {QStringLiteral("application"), application},
        {QStringLiteral("path"), path},
    };
    insertFault(fault, &record);
    if (fault && fault->kind == Fault::Flood) {
        line += QStringLiteral(", %1 times").arg(fault->count);
        record.insert(QStringLiteral("count"), fault->count);
    }
    return {line + faultText(fault), Style::News, record};
}

Event serviceEvent(const QString &text, Style style, const std::optional<Fault> &fault)
{
    QJsonObject record {{QStringLiteral("event"), QStringLiteral("service")}};
    insertFault(fault, &record);
    return {text + faultText(fault), style, record};
}

Event scenarioEvent(const QString &fileName, const QString &line, Style style)
{
    return {line,
            style,
            {{QStringLiteral("event"), QStringLiteral("scenario")},
             {QStringLiteral("file"), fileName}}};
}

} // namespace Tarnvel::Sandbox
