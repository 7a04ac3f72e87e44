// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "expectation_reader.h"

#include "input_file.h"
#include "scenario/json_reader.h"

#include <QtCore/QJsonArray>

namespace Tarnvel::Sandbox {

namespace {

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
        object.insert(member.name, toQtJson(member.value));
    return object;
}

ExpectedCall readCall(const JsonValue &value, Diagnostics *diagnostics)
{
    ExpectedCall call;
    call.location = diagnostics->location(value.offset);
    ObjectReader reader(value, diagnostics);
    for (const char *const name :
         {"application", "error", "fault", "message", "method", "outcome", "path"}) {
        const QLatin1String memberName(name);
        if (const JsonValue *const member = reader.find(memberName))
            call.members.insert(memberName, readString(member, diagnostics));
    }
    const QLatin1String userMember("user");
    if (const JsonValue *const user = reader.find(userMember))
        call.members.insert(userMember,
                            readInteger(user, 0, std::numeric_limits<quint32>::max(), diagnostics));
    const QLatin1String changeMember("change");
    if (const JsonValue *const change = reader.find(changeMember)) {
        call.members.insert(changeMember, toQtJson(*change));
        if (change->kind != JsonValue::Object)
            addUnexpected(*change, describe(JsonValue::Object), diagnostics);
    }
    if (const JsonValue *const within = reader.find(QLatin1String("within")))
        call.within = readNumber(within, std::numeric_limits<int>::max(), diagnostics);
    reader.addUnknownMembers(QStringLiteral("a call"));
    return call;
}

QVector<ExpectedCall> readDocument(const JsonValue &document, Diagnostics *diagnostics)
{
    QVector<ExpectedCall> calls;
    ObjectReader reader(document, diagnostics);
    for (const JsonValue &call : readList(reader.require(QLatin1String("calls")), diagnostics))
        calls.append(readCall(call, diagnostics));
    reader.addUnknownMembers(QStringLiteral("an expectation"));
    return calls;
}

} // namespace

QVector<Tools::Failure> parseExpectation(const QString &fileName, const QByteArray &text,
                                         Expectation *expectation)
{
    Diagnostics diagnostics(fileName, text);
    const JsonValue document = parseJson(text, &diagnostics);
    if (!diagnostics.failures().isEmpty())
        return diagnostics.failures();
    const QVector<ExpectedCall> calls = readDocument(document, &diagnostics);
    const QVector<Tools::Failure> failures = diagnostics.failures();
    if (failures.isEmpty())
        *expectation = Expectation(calls);
    return failures;
}

QVector<Tools::Failure> readExpectation(const QString &fileName, Expectation *expectation)
{
    QByteArray text;
    if (const Tools::Failure failure = readInputFile(fileName, &text))
        return {failure};
    return parseExpectation(fileName, text, expectation);
}

} // namespace Tarnvel::Sandbox
