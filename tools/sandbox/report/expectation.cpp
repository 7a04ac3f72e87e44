// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "expectation.h"

#include "scenario/json_document.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QMap>

#include <limits>

namespace Tarnvel::Sandbox {

namespace {

const QString within = QStringLiteral("within");

void checkCall(const JsonValue &call, Diagnostics *diagnostics)
{
    static const QMap<QString, JsonValue::Kind> kinds {
        {QStringLiteral("application"), JsonValue::String},
        {QStringLiteral("change"), JsonValue::Object},
        {QStringLiteral("error"), JsonValue::String},
        {QStringLiteral("fault"), JsonValue::String},
        {QStringLiteral("message"), JsonValue::String},
        {QStringLiteral("method"), JsonValue::String},
        {QStringLiteral("outcome"), JsonValue::String},
        {QStringLiteral("path"), JsonValue::String},
        {QStringLiteral("user"), JsonValue::Number},
        {within, JsonValue::Number},
    };
    if (call.kind != JsonValue::Object)
        diagnostics->add(call.offset, QStringLiteral("not an object"));
    for (const JsonMember &member : call.members) {
        const auto kind = kinds.find(member.key);
        if (kind == kinds.end())
            diagnostics->add(member.offset,
                             QStringLiteral("%1 is no member of a call").arg(quoted(member.key)));
        else if (member.value.kind != *kind)
            diagnostics->add(
                member.value.offset,
                QStringLiteral("%1 is not %2").arg(quoted(member.key), describe(*kind)));
    }
}

const std::vector<JsonValue> &checkDocument(const JsonValue &document, Diagnostics *diagnostics)
{
    static const std::vector<JsonValue> none;
    const JsonValue *const calls = document.member(QLatin1String("calls"));
    if (!calls || calls->kind != JsonValue::List || document.members.size() != 1) {
        diagnostics->add(document.offset,
                         QStringLiteral("not an object with a list of \"calls\" and nothing else"));
        return none;
    }
    for (const JsonValue &call : calls->items)
        checkCall(call, diagnostics);
    return calls->items;
}

bool fits(const QJsonObject &members, const QJsonObject &record)
{
    for (auto member = members.begin(); member != members.end(); ++member) {
        if (record.value(member.key()) != member.value())
            return false;
    }
    return true;
}

} // namespace

bool Expectation::parse(const QString &fileName, const QByteArray &text, QString *mistake)
{
    Diagnostics diagnostics(fileName, text);
    const JsonValue document = parseJson(text, &diagnostics);
    static const std::vector<JsonValue> none;
    const std::vector<JsonValue> &calls = diagnostics.failures().isEmpty()
        ? checkDocument(document, &diagnostics)
        : none;
    const auto failures = diagnostics.failures();
    if (!failures.isEmpty()) {
        *mistake = failures.first().text();
        return false;
    }
    const QJsonArray values =
        QJsonDocument::fromJson(text).object().value(QLatin1String("calls")).toArray();
    for (int index = 0; index < values.size(); ++index) {
        QJsonObject members = values.at(index).toObject();
        const QJsonValue limit = members.take(within);
        m_calls.append({diagnostics.location(calls.at(static_cast<std::size_t>(index)).offset),
                        members, limit.toDouble(std::numeric_limits<double>::infinity())});
    }
    return true;
}

bool Expectation::read(const QString &fileName, QString *mistake)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *mistake = fileName + QLatin1String(": ") + file.errorString();
        return false;
    }
    return parse(fileName, file.readAll(), mistake);
}

void Expectation::record(const QJsonObject &record)
{
    if (m_seen == m_calls.size() || record.value(QLatin1String("event")) != QLatin1String("call"))
        return;
    const Call &expected = m_calls.at(m_seen);
    if (!fits(expected.members, record))
        return;
    const double time = record.value(QLatin1String("time")).toDouble();
    if (time <= expected.within)
        ++m_seen;
    else if (m_late == 0)
        m_late = time;
}

QString Expectation::missing() const
{
    if (m_seen == m_calls.size())
        return {};
    const QString &place = m_calls.at(m_seen).place;
    return m_late == 0
        ? QStringLiteral("%1: the expected call did not come").arg(place)
        : QStringLiteral("%1: the expected call came after %2 s").arg(place).arg(m_late);
}

} // namespace Tarnvel::Sandbox
