// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "fault_reader.h"

#include "configuration_reader.h"
#include "endpoint.h"
#include "json_reader.h"

#include <QtCore/QStringList>

#include <gio/gio.h>
#include <limits>

namespace Tarnvel::Sandbox {

namespace {

using FaultMember = KnownMember<Fault>;

const QLatin1String methodKey("method");
const QLatin1String callKey("call");
const QLatin1String timeKey("time");

bool readSeconds(const JsonMember &member, double *seconds, Mistake *mistake)
{
    const double number = g_ascii_strtod(member.value.text.toLatin1().constData(), nullptr);
    if (member.value.kind != JsonValue::Number || number < 0 || number > Fault::maximumSeconds)
        return refuse(member.value.offset,
                      QStringLiteral("\"%1\" is no number from 0 to %2")
                          .arg(member.key)
                          .arg(Fault::maximumSeconds),
                      mistake);
    *seconds = number;
    return true;
}

bool readCount(const JsonMember &member, int maximum, int *count, Mistake *mistake)
{
    qint64 number = 0;
    if (!integerFromJson(member.value, 1, maximum, &number))
        return refuse(
            member.value.offset,
            QStringLiteral("\"%1\" is no integer from 1 to %2").arg(member.key).arg(maximum),
            mistake);
    *count = static_cast<int>(number);
    return true;
}

bool readMethod(const JsonMember &member, Fault *fault, Mistake *mistake)
{
    const QStringList methods {QLatin1String(DBus::getConfigurationMethod),
                               QLatin1String(DBus::changeConfigurationMethod)};
    if (member.value.kind != JsonValue::String || !methods.contains(member.value.text))
        return refuse(member.value.offset,
                      QStringLiteral("\"method\" is neither \"%1\" nor \"%2\"")
                          .arg(methods.first(), methods.last()),
                      mistake);
    fault->method = member.value.text;
    return true;
}

bool readCall(const JsonMember &member, Fault *fault, Mistake *mistake)
{
    return readCount(member, std::numeric_limits<int>::max(), &fault->call, mistake);
}

bool readTime(const JsonMember &member, Fault *fault, Mistake *mistake)
{
    return readSeconds(member, &fault->time, mistake);
}

bool readError(const JsonMember &member, Fault *fault, Mistake *mistake)
{
    if (!isOfKind(member, JsonValue::String, mistake))
        return false;
    const QString name = member.value.text;
    const QByteArray latin = name.toLatin1();
    if (DBus::errorNames().contains(name))
        fault->error = QLatin1String(DBus::errorPrefix) + name;
    else if (isDBusText(name) && g_dbus_is_interface_name(latin.constData()))
        fault->error = name;
    else
        return refuse(member.value.offset,
                      QStringLiteral("%1 is no error; there are %2, and full D-Bus names such as "
                                     "\"org.freedesktop.DBus.Error.Failed\"")
                          .arg(quoted(name), DBus::errorNames().join(QLatin1String(", "))),
                      mistake);
    return true;
}

bool readMessage(const JsonMember &member, Fault *fault, Mistake *mistake)
{
    if (!isOfKind(member, JsonValue::String, mistake))
        return false;
    if (!isDBusText(member.value.text))
        return refuse(member.value.offset, QStringLiteral("D-Bus does not carry this string"),
                      mistake);
    fault->message = member.value.text;
    return true;
}

bool readDuration(const JsonMember &member, Fault *fault, Mistake *mistake)
{
    return readSeconds(member, &fault->seconds, mistake);
}

bool readFloodCount(const JsonMember &member, Fault *fault, Mistake *mistake)
{
    return readCount(member, Fault::maximumCount, &fault->count, mistake);
}

bool readConfiguration(const JsonMember &member, Fault *fault, Mistake *mistake)
{
    fault->configuration = configurationFromJson(member.value, mistake);
    return fault->configuration != nullptr;
}

QVector<FaultMember> knownMembers(const FaultDescription &description)
{
    QVector<FaultMember> members {
        // It has been read before, since it says which others there are.
        {"fault", true, [](const JsonMember &, Fault *, Mistake *) { return true; }},
    };
    if (description.comesWithCall)
        members << FaultMember {"method", !description.comesAtTime, readMethod}
                << FaultMember {"call", false, readCall};
    if (description.comesAtTime)
        members << FaultMember {"time", !description.comesWithCall, readTime};
    if (description.kind == Fault::Error)
        members << FaultMember {"error", true, readError}
                << FaultMember {"message", false, readMessage};
    if (description.kind == Fault::Delay || description.kind == Fault::Restart)
        members << FaultMember {"seconds", description.kind == Fault::Delay, readDuration};
    if (description.kind == Fault::Push)
        members << FaultMember {"configuration", true, readConfiguration};
    if (description.kind == Fault::Flood)
        members << FaultMember {"count", true, readFloodCount};
    return members;
}

const FaultDescription *findDescription(const JsonValue &value, Mistake *mistake)
{
    const JsonMember *const name = value.member(QLatin1String("fault"));
    if (!name) {
        refuse(value.offset, QStringLiteral("\"fault\" is missing"), mistake);
        return nullptr;
    }
    if (!isOfKind(*name, JsonValue::String, mistake))
        return nullptr;
    QStringList names;
    for (const FaultDescription &description : faultDescriptions()) {
        if (name->value.text == QLatin1String(description.name))
            return &description;
        names << QLatin1String(description.name);
    }
    refuse(name->value.offset,
           QStringLiteral("%1 is no fault; there are %2")
               .arg(quoted(name->value.text), names.join(QLatin1String(", "))),
           mistake);
    return nullptr;
}

bool checkOccasion(const JsonValue &value, Mistake *mistake)
{
    const JsonMember *const method = value.member(methodKey);
    const JsonMember *const call = value.member(callKey);
    const JsonMember *const time = value.member(timeKey);
    if (method && time)
        return refuse(time->offset, QStringLiteral("\"time\" besides \"method\""), mistake);
    if (call && time)
        return refuse(call->offset, QStringLiteral("\"call\" without \"method\""), mistake);
    return method || time
        || refuse(value.offset, QStringLiteral("\"method\" or \"time\" is missing"), mistake);
}

} // namespace

bool faultFromJson(const JsonValue &value, Fault *fault, Mistake *mistake)
{
    if (!isOfKind(value, JsonValue::Object, QStringLiteral("a fault"), mistake))
        return false;
    const FaultDescription *const description = findDescription(value, mistake);
    if (!description)
        return false;
    *fault = {};
    fault->kind = description->kind;
    if (description->kind == Fault::Error)
        fault->message = QStringLiteral("this is a fault of the scenario");
    const QString name = QStringLiteral("the fault \"%1\"").arg(faultName(description->kind));
    return readMembers(value, name, knownMembers(*description), fault, mistake)
        && checkOccasion(value, mistake);
}

} // namespace Tarnvel::Sandbox
