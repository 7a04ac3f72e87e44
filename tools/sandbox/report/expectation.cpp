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

bool checkCall(const JsonValue &call, Mistake *mistake)
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
        return refuse(call.offset, QStringLiteral("not an object"), mistake);
    for (const JsonMember &member : call.members) {
        const auto kind = kinds.find(member.key);
        if (kind == kinds.end())
            return refuse(member.offset,
                          QStringLiteral("%1 is no member of a call").arg(quoted(member.key)),
                          mistake);
        if (member.value.kind != *kind)
            return refuse(member.value.offset,
                          QStringLiteral("%1 is not %2").arg(quoted(member.key), describe(*kind)),
                          mistake);
    }
    return true;
}

bool checkDocument(const JsonValue &document, Mistake *mistake)
{
    const JsonMember *const list = document.member(QLatin1String("calls"));
    if (!list || list->value.kind != JsonValue::List || document.members.size() != 1)
        return refuse(document.offset,
                      QStringLiteral("not an object with a list of \"calls\" and nothing else"),
                      mistake);
    for (const JsonValue &call : list->value.items) {
        if (!checkCall(call, mistake))
            return false;
    }
    return true;
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
    const auto place = [&](int offset) {
        return fileName + QLatin1Char(':') + lineAndColumn(text, offset);
    };
    JsonValue document;
    Mistake found;
    if (!parseJson(text, &document, &found) || !checkDocument(document, &found)) {
        *mistake = place(found.offset) + QLatin1String(": ") + found.text;
        return false;
    }
    const std::vector<JsonValue> &calls = document.members.front().value.items;
    const QJsonArray values =
        QJsonDocument::fromJson(text).object().value(QLatin1String("calls")).toArray();
    for (int index = 0; index < values.size(); ++index) {
        QJsonObject members = values.at(index).toObject();
        const QJsonValue limit = members.take(within);
        m_calls.append({place(calls.at(static_cast<std::size_t>(index)).offset), members,
                        limit.toDouble(std::numeric_limits<double>::infinity())});
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
