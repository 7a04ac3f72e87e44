// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "json.h"

#include "configuration_p.h"
#include "path.h"
#include "terminal.h"
#include "usage_failure.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::ConfigurationPrivate;
using Tools::Failure;

namespace {

QJsonObject convertEntries(const QVariant &configuration, QJsonValue (*convert)(const QVariant &))
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(
        Configuration::fromVariant(configuration));
    QJsonObject object;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry)
        object.insert(entry.key(), convert(entry.value()));
    return object;
}

Failure unexpected(const QString &expected, const QString &found)
{
    return usageFailure(QStringLiteral("expected %1, found %2").arg(expected, found));
}

Failure readString(const QString &text, QVariant *value)
{
    if (!text.isValidUtf16() || text.contains(QChar::Null))
        return usageFailure(QStringLiteral("D-Bus cannot carry %1").arg(compactText(text)));
    *value = text;
    return {};
}

// A configuration in \a value gets the members of a JSON object; any other value is replaced.
Failure readValue(ValueType type, const QJsonValue &json, QVariant *value);

Failure readList(ValueType type, const QJsonArray &array, QVariant *value)
{
    QVariantList items;
    for (const QJsonValue &json : array) {
        QVariant item;
        if (const Failure failure = readValue(*itemTypeOf(type), json, &item))
            return failure;
        items.append(item);
    }
    *value = makeList(type, items);
    return {};
}

ValueType typeOfJson(const QJsonValue &json)
{
    switch (json.type()) {
    case QJsonValue::Bool:
        return ValueType::Bool;
    case QJsonValue::Double:
        return ValueType::Int;
    case QJsonValue::Object:
        return ValueType::Configuration;
    case QJsonValue::Array:
        return listTypeOf(typeOfJson(json.toArray().at(0)));
    default:
        return ValueType::String;
    }
}

Failure readValue(ValueType type, const QJsonValue &json, QVariant *value)
{
    if (json.isNull())
        return usageFailure(QStringLiteral("a value cannot be null"));
    if (type == ValueType::Configuration && json.isObject()) {
        Configuration configuration = Configuration::fromVariant(*value);
        const Failure failure = mergeJson(json.toObject(), &configuration);
        *value = QVariant::fromValue(configuration);
        return failure;
    }
    if (itemTypeOf(type) && json.isArray())
        return readList(type, json.toArray(), value);
    if (type == ValueType::String && json.isString())
        return readString(json.toString(), value);

    const bool isBool = type == ValueType::Bool && json.isBool();
    const bool isInt = type == ValueType::Int && json.isDouble() && json.toDouble() == json.toInt();
    if (!isBool && !isInt)
        return unexpected(typeDescription(type), compactText(json));
    *value = isBool ? QVariant(json.toBool()) : QVariant(json.toInt());
    return {};
}

} // namespace

QJsonValue toJson(const QVariant &value)
{
    if (typeOf(value) == ValueType::Configuration)
        return convertEntries(value, toJson);
    if (!itemTypeOf(typeOf(value)))
        return QJsonValue::fromVariant(value);
    return QJsonArray::fromVariantList(value.value<QVariantList>());
}

QJsonValue toJsonOfTypes(const QVariant &value)
{
    if (typeOf(value) == ValueType::Configuration)
        return convertEntries(value, toJsonOfTypes);
    return typeName(typeOf(value));
}

QString compactText(const QJsonValue &value)
{
    // A document is an object or a list: any other value has to be an item.
    const QByteArray list = QJsonDocument(QJsonArray {value}).toJson(QJsonDocument::Compact);
    return Tools::shownOnOneLine(QString::fromUtf8(list.mid(1, list.size() - 2)));
}

QString indentedText(const QJsonValue &value)
{
    if (!value.isObject() && !value.isArray())
        return compactText(value);
    const QJsonDocument document = value.isObject() ? QJsonDocument(value.toObject())
                                                    : QJsonDocument(value.toArray());
    QStringList lines = QString::fromUtf8(document.toJson().trimmed()).split(QLatin1Char('\n'));
    for (QString &line : lines)
        line = Tools::shownOnOneLine(line);
    return lines.join(QLatin1Char('\n'));
}

QJsonDocument parseJson(const QByteArray &text, QJsonParseError *error)
{
    // An error has its offset in the text as it is.
    const QJsonDocument document = QJsonDocument::fromJson(text, error);
    QByteArray escaped = text;
    escaped.replace("\"\xef\xbb\xbf", "\"\\ufeff");
    return document.isNull() ? document : QJsonDocument::fromJson(escaped);
}

Failure parseValue(ValueType type, const QString &text, QVariant *value)
{
    if (type == ValueType::String) {
        *value = text;
        return {};
    }
    QJsonParseError error;
    const QJsonArray list = parseJson('[' + text.toUtf8() + ']', &error).array();
    *value = QVariant();
    if (list.size() == 1)
        return readValue(type, list.first(), value);
    QString found = QLatin1Char('"') + text + QLatin1Char('"');
    if (error.error != QJsonParseError::NoError)
        found += QStringLiteral(": ") + error.errorString();
    return unexpected(typeDescription(type), found);
}

Failure mergeJson(const QJsonObject &object, Configuration *configuration)
{
    for (auto member = object.begin(); member != object.end(); ++member) {
        QVariant key;
        QVariant value = configuration->get(member.key());
        const ValueType type = value.isValid() ? typeOf(value) : typeOfJson(member.value());
        Failure failure = readString(member.key(), &key);
        if (!failure)
            failure = readValue(type, member.value(), &value);
        if (failure) {
            const QString path = keyText(member.key());
            failure.location = failure.location.isEmpty()
                ? path
                : path + QLatin1Char('/') + failure.location;
            return failure;
        }
        configuration->set(member.key(), value);
    }
    return {};
}

} // namespace Tarnvel::Client
