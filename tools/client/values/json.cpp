// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "json.h"

#include "configuration_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>

#include <limits>

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::ConfigurationPrivate;

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

QString text(const QJsonValue &value, QJsonDocument::JsonFormat format)
{
    if (value.isObject())
        return QString::fromUtf8(QJsonDocument(value.toObject()).toJson(format)).trimmed();
    if (value.isArray())
        return QString::fromUtf8(QJsonDocument(value.toArray()).toJson(format)).trimmed();
    // A document is an object or an array; all else is an array's only item.
    const QJsonDocument document(QJsonArray {value});
    const QByteArray list = document.toJson(QJsonDocument::Compact);
    return QString::fromUtf8(list.mid(1, list.size() - 2));
}

bool isCarried(const QString &text)
{
    return text.isValidUtf16() && !text.contains(QChar::Null);
}

QVariant refuse(QString *mistake, const QString &text)
{
    *mistake = text;
    return {};
}

QVariant configurationFrom(const QJsonObject &object, QString *mistake);

QVariant integerFrom(double number, QString *mistake)
{
    using Limits = std::numeric_limits<int>;
    const bool isInRange = number >= Limits::min() && number <= Limits::max();
    if (!isInRange || static_cast<int>(number) != number)
        return refuse(mistake, QStringLiteral("%1 is no 32-bit integer").arg(number));
    return static_cast<int>(number);
}

QVariant scalarFrom(const QJsonValue &value, QString *mistake)
{
    if (value.isBool())
        return value.toBool();
    if (value.isDouble())
        return integerFrom(value.toDouble(), mistake);
    if (!value.isString())
        return refuse(
            mistake, QStringLiteral("%1 is no integer, boolean or string").arg(compactText(value)));
    if (!isCarried(value.toString()))
        return refuse(mistake, QStringLiteral("D-Bus does not carry %1").arg(compactText(value)));
    return value.toString();
}

QVariant listFrom(ValueType type, const QJsonArray &array, QString *mistake)
{
    QVariantList items;
    for (const QJsonValue &value : array) {
        const QVariant item = scalarFrom(value, mistake);
        if (!item.isValid())
            return {};
        if (typeOf(item) != itemTypeOf(type))
            return refuse(mistake,
                          QStringLiteral("%1 does not belong into a list of type %2")
                              .arg(compactText(value), typeName(type)));
        items.append(item);
    }
    return makeList(type, items);
}

ValueType listTypeOf(const QJsonArray &array)
{
    if (array.first().isDouble())
        return ValueType::Ints;
    return array.first().isBool() ? ValueType::Bools : ValueType::Strings;
}

QVariant valueFrom(const QJsonValue &value, QString *mistake)
{
    if (value.isObject())
        return configurationFrom(value.toObject(), mistake);
    if (!value.isArray())
        return scalarFrom(value, mistake);
    const QJsonArray array = value.toArray();
    return listFrom(array.isEmpty() ? ValueType::Strings : listTypeOf(array), array, mistake);
}

QVariant configurationFrom(const QJsonObject &object, QString *mistake)
{
    Configuration configuration;
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (!isCarried(member.key()))
            return refuse(
                mistake,
                QStringLiteral("D-Bus does not carry the key %1").arg(compactText(member.key())));
        const QVariant value = valueFrom(member.value(), mistake);
        if (!value.isValid())
            return {};
        configuration.set(member.key(), value);
    }
    return QVariant::fromValue(configuration);
}

QVariant parseInteger(const QString &text, QString *mistake)
{
    static const QRegularExpression form(QStringLiteral("^-?[0-9]+$"));
    bool isInRange = false;
    const int number = text.toInt(&isInRange, 10);
    if (!form.match(text).hasMatch() || !isInRange)
        return refuse(mistake, QStringLiteral("\"%1\" is no 32-bit integer").arg(text));
    return number;
}

QVariant parseBoolean(const QString &text, QString *mistake)
{
    if (text != QLatin1String("true") && text != QLatin1String("false"))
        return refuse(mistake, QStringLiteral("\"%1\" is neither true nor false").arg(text));
    return text == QLatin1String("true");
}

QVariant parseDocument(ValueType type, const QString &text, QString *mistake)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError)
        return refuse(mistake,
                      QStringLiteral("\"%1\" is no JSON: %2").arg(text, error.errorString()));
    const bool isConfiguration = type == ValueType::Configuration;
    if (document.isObject() != isConfiguration)
        return refuse(
            mistake,
            QStringLiteral("\"%1\" is no JSON %2")
                .arg(text, isConfiguration ? QStringLiteral("object") : QStringLiteral("list")));
    return isConfiguration ? configurationFrom(document.object(), mistake)
                           : listFrom(type, document.array(), mistake);
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
    return text(value, QJsonDocument::Compact);
}

QString indentedText(const QJsonValue &value)
{
    return text(value, QJsonDocument::Indented);
}

QVariant valueFromText(ValueType type, const QString &text, QString *mistake)
{
    switch (type) {
    case ValueType::Int:
        return parseInteger(text, mistake);
    case ValueType::Bool:
        return parseBoolean(text, mistake);
    case ValueType::String:
        return text;
    default:
        return parseDocument(type, text, mistake);
    }
}

} // namespace Tarnvel::Client
