// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "json_value.h"

#include <QtCore/QJsonArray>
#include <QtCore/QLocale>

#include <limits>

namespace Tarnvel::Sandbox {

namespace {

// A message holds at most 64 containers inside one another; each level takes an array, an entry
// and a variant. One that holds more costs its sender the connection.
constexpr int maximumDepth = 21;

QString describe(QJsonValue::Type type)
{
    switch (type) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return QStringLiteral("a boolean");
    case QJsonValue::Double:
        return QStringLiteral("an integer");
    case QJsonValue::String:
        return QStringLiteral("a string");
    case QJsonValue::Array:
        return QStringLiteral("a list");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    case QJsonValue::Undefined:
        break;
    }
    return QStringLiteral("nothing");
}

class Converter
{
public:
    explicit Converter(QString *mistake) : m_mistake(mistake) { }

    Variant convertObject(const QJsonObject &object, const QString &place, int depth) const
    {
        if (depth > maximumDepth)
            return refuse(
                place,
                QStringLiteral("D-Bus does not carry more than %1 levels").arg(maximumDepth));
        Entries entries;
        for (auto member = object.begin(); member != object.end(); ++member) {
            const QString key = member.key();
            const QString valuePlace = memberPlace(place, key);
            if (!isText(key))
                return refuse(valuePlace, QStringLiteral("D-Bus does not carry this key"));
            const Variant value = convertValue(member.value(), valuePlace, depth);
            if (!value)
                return {};
            entries.insert(key, value);
        }
        return makeConfiguration(entries);
    }

private:
    static bool isText(const QString &text)
    {
        return text.isValidUtf16() && !text.contains(QChar::Null);
    }

    Variant refuse(const QString &place, const QString &text) const
    {
        *m_mistake = mistakeAt(place, text);
        return {};
    }

    Variant convertValue(const QJsonValue &value, const QString &place, int depth) const
    {
        if (value.isObject())
            return convertObject(value.toObject(), place, depth + 1);
        if (value.isArray())
            return convertList(value.toArray(), place);
        return convertScalar(value, place);
    }

    Variant convertList(const QJsonArray &list, const QString &place) const
    {
        if (list.isEmpty())
            return adopt(g_variant_new_strv(nullptr, 0));

        GVariantBuilder builder;
        g_variant_builder_init(&builder, G_VARIANT_TYPE_ARRAY);
        // The builder is emptied however this ends.
        const std::shared_ptr<GVariantBuilder> guard(&builder, g_variant_builder_clear);
        for (int index = 0; index < list.size(); ++index) {
            const QJsonValue item = list.at(index);
            if (item.type() != list.first().type())
                return refuse(itemPlace(place, index),
                              QStringLiteral("%1 in a list that begins with %2")
                                  .arg(describe(item.type()), describe(list.first().type())));
            const Variant value = convertScalar(item, itemPlace(place, index));
            if (!value)
                return {};
            g_variant_builder_add_value(&builder, value.get());
        }
        return adopt(g_variant_builder_end(&builder));
    }

    Variant convertScalar(const QJsonValue &value, const QString &place) const
    {
        if (value.isBool())
            return adopt(g_variant_new_boolean(value.toBool()));
        if (value.isDouble())
            return convertNumber(value.toDouble(), place);
        if (value.isString())
            return convertText(value.toString(), place);
        if (value.isNull())
            return refuse(place, QStringLiteral("null is no value of a setting"));
        return refuse(place, QStringLiteral("%1 in a list").arg(describe(value.type())));
    }

    Variant convertNumber(double number, const QString &place) const
    {
        using Limits = std::numeric_limits<gint32>;
        const bool isInRange = number >= Limits::min() && number <= Limits::max();
        if (!isInRange || static_cast<gint32>(number) != number)
            return refuse(place,
                          QStringLiteral("%1 is no 32-bit integer")
                              .arg(number, 0, 'g', QLocale::FloatingPointShortest));
        return adopt(g_variant_new_int32(static_cast<gint32>(number)));
    }

    Variant convertText(const QString &text, const QString &place) const
    {
        if (!isText(text))
            return refuse(place, QStringLiteral("D-Bus does not carry this string"));
        return adopt(g_variant_new_string(text.toUtf8().constData()));
    }

    QString *m_mistake;
};

} // namespace

QString memberPlace(const QString &place, const QString &key)
{
    return place.isEmpty() ? key : place + QLatin1Char('/') + key;
}

QString itemPlace(const QString &place, int index)
{
    return QStringLiteral("%1[%2]").arg(place, QString::number(index));
}

QString mistakeAt(const QString &place, const QString &text)
{
    return place.isEmpty() ? text : place + QLatin1String(": ") + text;
}

Variant configurationFromJson(const QJsonObject &object, const QString &place, QString *mistake)
{
    return Converter(mistake).convertObject(object, place, 1);
}

} // namespace Tarnvel::Sandbox
