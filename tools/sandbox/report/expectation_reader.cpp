// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "expectation_reader.h"

#include "exit_status.h"
#include "scenario/json_document.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QMap>

namespace Tarnvel::Sandbox {

namespace {

const QString within = QStringLiteral("within");

QJsonValue toQtJson(const JsonValue &value)
{
    switch (value.kind) {
    case JsonValue::Null:
        return {};
    case JsonValue::Boolean:
        return value.isTrue;
    case JsonValue::Number:
        return value.text.toDouble();
    case JsonValue::String:
        return value.text;
    case JsonValue::List: {
        QJsonArray array;
        for (const JsonValue &item : value.items)
            array.append(toQtJson(item));
        return array;
    }
    case JsonValue::Object:
        break;
    }
    QJsonObject object;
    for (const JsonMember &member : value.members)
        object.insert(member.key, toQtJson(member.value));
    return object;
}

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
        return refuse(call.offset,
                      QStringLiteral("expected an object, found %1").arg(describe(call.kind)),
                      mistake);
    for (const JsonMember &member : call.members) {
        const auto kind = kinds.find(member.key);
        if (kind == kinds.end())
            return refuse(member.offset,
                          QStringLiteral("unknown member of a call: %1").arg(quoted(member.key)),
                          mistake);
        if (member.value.kind != *kind)
            return refuse(
                member.value.offset,
                QStringLiteral("%1: expected %2, found %3")
                    .arg(quoted(member.key), describe(*kind), describe(member.value.kind)),
                mistake);
    }
    return true;
}

bool checkDocument(const JsonValue &document, Mistake *mistake)
{
    const JsonMember *const list = document.member(QLatin1String("calls"));
    if (!list || list->value.kind != JsonValue::List || document.members.size() != 1)
        return refuse(document.offset,
                      QStringLiteral("expected an object with a list of \"calls\" alone"), mistake);
    const std::vector<JsonValue> &calls = list->value.items;
    return std::all_of(calls.begin(), calls.end(),
                       [mistake](const JsonValue &call) { return checkCall(call, mistake); });
}

} // namespace

Tools::Failure parseExpectation(const QString &fileName, const QByteArray &text,
                                Expectation *expectation)
{
    const auto locationOf = [&](int offset) {
        return fileName + QLatin1Char(':') + lineAndColumn(text, offset);
    };
    JsonValue document;
    Mistake mistake;
    if (!parseJson(text, &document, &mistake) || !checkDocument(document, &mistake))
        return {SandboxFailed, mistake.text, {}, locationOf(mistake.offset)};
    QVector<ExpectedCall> calls;
    for (const JsonValue &value : document.members.front().value.items) {
        ExpectedCall call;
        call.location = locationOf(value.offset);
        call.members = toQtJson(value).toObject();
        call.within = call.members.take(within).toDouble(call.within);
        calls.append(call);
    }
    *expectation = Expectation(calls);
    return {};
}

Tools::Failure readExpectation(const QString &fileName, Expectation *expectation)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {SandboxFailed, file.errorString(), {}, fileName};
    return parseExpectation(fileName, file.readAll(), expectation);
}

} // namespace Tarnvel::Sandbox
