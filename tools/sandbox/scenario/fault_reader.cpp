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

const FaultDescription *readFaultDescription(const Tools::JsonValue *value,
                                             Tools::Diagnostics *diagnostics)
{
    if (!value)
        return nullptr;
    QStringList names;
    for (const FaultDescription &description : faultDescriptions()) {
        if (value->kind == Tools::JsonValue::String
            && value->text == QLatin1String(description.name))
            return &description;
        names << QLatin1String(description.name);
    }
    Tools::addUnexpected(*value,
                         QStringLiteral("one of the faults ") + names.join(QLatin1String(", ")),
                         diagnostics);
    return nullptr;
}

QString readMethod(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics)
{
    const QStringList methods {QLatin1String(DBus::getConfigurationMethod),
                               QLatin1String(DBus::changeConfigurationMethod)};
    if (value && (value->kind != Tools::JsonValue::String || !methods.contains(value->text)))
        Tools::addUnexpected(
            *value, QStringLiteral("\"%1\" or \"%2\"").arg(methods.first(), methods.last()),
            diagnostics);
    return value ? value->text : QString();
}

QString readErrorName(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics)
{
    const QString name = value ? value->text : QString();
    if (DBus::errorNames().contains(name))
        return QLatin1String(DBus::errorPrefix) + name;
    if (value && !g_dbus_is_interface_name(name.toUtf8().constData()))
        Tools::addUnexpected(
            *value,
            QStringLiteral("%1, or a full name such as \"org.freedesktop.DBus.Error.Failed\"")
                .arg(DBus::errorNames().join(QLatin1String(", "))),
            diagnostics);
    return name;
}

namespace {

// Which calls the fault affects, or when it happens.
void readTrigger(const Tools::JsonValue &value, const FaultDescription &description,
                 Tools::ObjectReader *object, Fault *fault, Tools::Diagnostics *diagnostics)
{
    const QLatin1String methodMember("method");
    const QLatin1String timeMember("time");
    const bool isEither = description.affectsCalls && description.happensAtTime;
    const Tools::JsonValue *method = nullptr;
    const Tools::JsonValue *call = nullptr;
    const Tools::JsonValue *time = nullptr;
    if (description.affectsCalls) {
        method = isEither ? object->find(methodMember) : object->require(methodMember);
        call = object->find(QLatin1String("call"));
    }
    if (description.happensAtTime)
        time = isEither ? object->find(timeMember) : object->require(timeMember);
    if (isEither && !method && !time)
        diagnostics->add(value.offset, QStringLiteral("\"method\" or \"time\" is missing"));
    if (method && time)
        diagnostics->add(time->offset,
                         QStringLiteral("\"time\" and \"method\" are mutually exclusive"));
    if (time && call)
        diagnostics->add(call->offset,
                         QStringLiteral("\"call\" and \"time\" are mutually exclusive"));
    fault->method = readMethod(method, diagnostics);
    fault->call = static_cast<int>(
        Tools::readInteger(call, 1, std::numeric_limits<int>::max(), diagnostics));
    fault->time = Tools::readNumber(time, Fault::maximumSeconds, diagnostics);
}

} // namespace

Fault readFault(const Tools::JsonValue &value, Tools::Diagnostics *diagnostics)
{
    Tools::ObjectReader object(value, diagnostics);
    const FaultDescription *const description = readFaultDescription(
        object.require(QLatin1String("fault")), diagnostics);
    if (!description)
        return {};
    Fault fault {};
    fault.kind = description->kind;
    readTrigger(value, *description, &object, &fault, diagnostics);
    const QLatin1String secondsMember("seconds");
    if (fault.kind == Fault::Error) {
        fault.error = readErrorName(object.require(QLatin1String("error")), diagnostics);
        const Tools::JsonValue *const message = object.find(QLatin1String("message"));
        fault.message = message ? Tools::readString(message, diagnostics)
                                : QStringLiteral("error injected by the sandbox");
    } else if (fault.kind == Fault::Delay || fault.kind == Fault::Restart) {
        const Tools::JsonValue *const seconds = fault.kind == Fault::Delay
            ? object.require(secondsMember)
            : object.find(secondsMember);
        fault.seconds = Tools::readNumber(seconds, Fault::maximumSeconds, diagnostics);
    } else if (fault.kind == Fault::Replace) {
        fault.configuration = readConfiguration(object.require(QLatin1String("configuration")),
                                                diagnostics);
    } else if (fault.kind == Fault::Flood) {
        fault.count = static_cast<int>(Tools::readInteger(object.require(QLatin1String("count")), 1,
                                                          Fault::maximumCount, diagnostics));
    }
    object.addUnknownMembers(
        QStringLiteral("the fault \"%1\"").arg(QLatin1String(description->name)));
    return fault;
}

} // namespace Tarnvel::Sandbox
