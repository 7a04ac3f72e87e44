// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_reader.h"

#include "bus_limits.h"
#include "dbus_validation.h"

#include <QtCore/QVector>

#include <limits>

namespace Tarnvel::Sandbox {

namespace {

const QLatin1String typeKey("$type");
const QLatin1String valueKey("value");

QString nameOf(const GVariantType *type)
{
    return QString::fromLatin1(g_variant_type_peek_string(type),
                               static_cast<int>(g_variant_type_get_string_length(type)));
}

// The value itself where it is short.
QString shown(const JsonValue &value)
{
    if (value.kind == JsonValue::Number)
        return value.text;
    return value.kind == JsonValue::String ? quoted(value.text) : describe(value.kind);
}

// Converts with the number of containers around the value in mind.
class Converter
{
public:
    explicit Converter(Mistake *mistake) : m_mistake(mistake) { }

    Variant convertConfiguration(const JsonValue &object, int depth) const;
    Variant convertList(const JsonValue &list, int depth) const;

private:
    using Items = QVector<GVariant *>;

    Variant refuse(int offset, const QString &text) const;
    Variant refuseFor(const GVariantType *type, const JsonValue &value) const;
    bool fits(const GVariantType *type, int depth, int offset) const;

    Variant convertValue(const JsonValue &value, int depth) const;
    Variant convertScalar(const JsonValue &value) const;
    Variant convertTyped(const JsonValue &object, int depth) const;

    Variant makeValue(const GVariantType *type, const JsonValue &value, int depth) const;
    Variant makeBasic(const GVariantType *type, const JsonValue &value) const;
    Variant makeInteger(const GVariantType *type, const JsonValue &value) const;
    Variant makeUnsigned64(const JsonValue &value) const;
    Variant makeText(const GVariantType *type, const JsonValue &value) const;
    Variant makeStructure(const GVariantType *type, const JsonValue &value, int depth) const;
    Variant makeArray(const GVariantType *type, const JsonValue &value, int depth) const;
    Variant makeDictionary(const GVariantType *type, const JsonValue &value, int depth) const;
    Variant makeEntry(const GVariantType *type, const JsonValue &key, const JsonValue &value,
                      int depth) const;

    Mistake *m_mistake;
};

Variant arrayOf(const GVariantType *itemType, const QVector<Variant> &items)
{
    QVector<GVariant *> pointers;
    pointers.reserve(items.size());
    for (const Variant &item : items)
        pointers.append(item.get());
    return adopt(
        g_variant_new_array(itemType, pointers.data(), static_cast<gsize>(pointers.size())));
}

Variant Converter::refuse(int offset, const QString &text) const
{
    *m_mistake = {offset, text};
    return {};
}

Variant Converter::refuseFor(const GVariantType *type, const JsonValue &value) const
{
    return refuse(
        value.offset,
        QStringLiteral("%1 is no value of the type \"%2\"").arg(shown(value), nameOf(type)));
}

bool Converter::fits(const GVariantType *type, int depth, int offset) const
{
    if (depth + containerDepth(type) <= DBus::maximumContainerDepth)
        return true;
    refuse(offset,
           QStringLiteral("too deep: D-Bus carries %1 containers inside one another, "
                          "and each configuration takes %2")
               .arg(DBus::maximumContainerDepth)
               .arg(DBus::containersPerLevel));
    return false;
}

Variant Converter::convertConfiguration(const JsonValue &object, int depth) const
{
    if (!fits(G_VARIANT_TYPE_VARDICT, depth, object.offset))
        return {};
    Entries entries;
    for (const JsonMember &member : object.members) {
        if (!isDBusText(member.key))
            return refuse(member.offset, QStringLiteral("D-Bus does not carry this key"));
        const Variant value = convertValue(member.value, depth + DBus::containersPerLevel);
        if (!value)
            return {};
        entries.insert(member.key, value);
    }
    return makeConfiguration(entries);
}

Variant Converter::convertValue(const JsonValue &value, int depth) const
{
    if (value.kind == JsonValue::List)
        return convertList(value, depth);
    if (value.kind != JsonValue::Object)
        return convertScalar(value);
    return value.member(typeKey) ? convertTyped(value, depth) : convertConfiguration(value, depth);
}

Variant Converter::convertList(const JsonValue &list, int depth) const
{
    if (!fits(G_VARIANT_TYPE_STRING_ARRAY, depth, list.offset))
        return {};
    if (list.items.empty())
        return adopt(g_variant_new_strv(nullptr, 0));
    const JsonValue::Kind kind = list.items.front().kind;
    QVector<Variant> items;
    for (const JsonValue &item : list.items) {
        if (item.kind != kind)
            return refuse(item.offset,
                          QStringLiteral("%1 in a list that begins with %2")
                              .arg(describe(item.kind), describe(kind)));
        const Variant value = convertScalar(item);
        if (!value)
            return {};
        items.append(value);
    }
    return arrayOf(g_variant_get_type(items.first().get()), items);
}

Variant Converter::convertScalar(const JsonValue &value) const
{
    switch (value.kind) {
    case JsonValue::Boolean:
        return makeBasic(G_VARIANT_TYPE_BOOLEAN, value);
    case JsonValue::String:
        return makeText(G_VARIANT_TYPE_STRING, value);
    case JsonValue::Number:
        break;
    case JsonValue::Null:
        return refuse(value.offset, QStringLiteral("null is no value of a setting"));
    default:
        return refuse(value.offset, QStringLiteral("%1 in a list").arg(describe(value.kind)));
    }
    qint64 number = 0;
    using Limits = std::numeric_limits<gint32>;
    if (!integerFromJson(value, Limits::min(), Limits::max(), &number))
        return refuse(value.offset, QStringLiteral("%1 is no 32-bit integer").arg(value.text));
    return adopt(g_variant_new_int32(static_cast<gint32>(number)));
}

Variant Converter::convertTyped(const JsonValue &object, int depth) const
{
    for (const JsonMember &member : object.members) {
        if (member.key != typeKey && member.key != valueKey)
            return refuse(member.offset,
                          QStringLiteral("%1 is no member of a value with \"$type\"")
                              .arg(quoted(member.key)));
    }
    const JsonMember *const value = object.member(valueKey);
    if (!value)
        return refuse(object.offset, QStringLiteral("\"value\" is missing"));
    const JsonValue &type = object.member(typeKey)->value;
    if (type.kind != JsonValue::String || !isCompleteType(type.text))
        return refuse(type.offset,
                      QStringLiteral("%1 is not one complete D-Bus type").arg(shown(type)));
    if (type.text.contains(QLatin1Char('h')))
        return refuse(type.offset, QStringLiteral("an open file (\"h\") cannot stand in a file"));
    const QByteArray text = type.text.toLatin1();
    const auto *typeOfValue = reinterpret_cast<const GVariantType *>(text.constData());
    if (!fits(typeOfValue, depth, object.offset))
        return {};
    return makeValue(typeOfValue, value->value, depth);
}

Variant Converter::makeValue(const GVariantType *type, const JsonValue &value, int depth) const
{
    if (g_variant_type_is_variant(type)) {
        const Variant content = convertValue(value, depth + 1);
        return content ? adopt(g_variant_new_variant(content.get())) : content;
    }
    if (g_variant_type_is_basic(type))
        return makeBasic(type, value);
    if (g_variant_type_is_tuple(type))
        return makeStructure(type, value, depth + 1);
    return g_variant_type_is_dict_entry(g_variant_type_element(type))
        ? makeDictionary(type, value, depth + 1)
        : makeArray(type, value, depth + 1);
}

Variant Converter::makeBasic(const GVariantType *type, const JsonValue &value) const
{
    switch (*g_variant_type_peek_string(type)) {
    case 'b':
        return value.kind == JsonValue::Boolean ? adopt(g_variant_new_boolean(value.isTrue))
                                                : refuseFor(type, value);
    case 'd':
        return value.kind == JsonValue::Number ? adopt(
                   g_variant_new_double(g_ascii_strtod(value.text.toLatin1().constData(), nullptr)))
                                               : refuseFor(type, value);
    case 's':
    case 'o':
    case 'g':
        return makeText(type, value);
    case 't':
        return makeUnsigned64(value);
    default:
        return makeInteger(type, value);
    }
}

template<typename Integer>
bool isInteger(const JsonValue &value, qint64 *number)
{
    using Limits = std::numeric_limits<Integer>;
    return integerFromJson(value, Limits::min(), Limits::max(), number);
}

Variant Converter::makeInteger(const GVariantType *type, const JsonValue &value) const
{
    qint64 number = 0;
    const char code = *g_variant_type_peek_string(type);
    if (code == 'y' && isInteger<guint8>(value, &number))
        return adopt(g_variant_new_byte(static_cast<guint8>(number)));
    if (code == 'n' && isInteger<gint16>(value, &number))
        return adopt(g_variant_new_int16(static_cast<gint16>(number)));
    if (code == 'q' && isInteger<guint16>(value, &number))
        return adopt(g_variant_new_uint16(static_cast<guint16>(number)));
    if (code == 'i' && isInteger<gint32>(value, &number))
        return adopt(g_variant_new_int32(static_cast<gint32>(number)));
    if (code == 'u' && isInteger<guint32>(value, &number))
        return adopt(g_variant_new_uint32(static_cast<guint32>(number)));
    if (code == 'x' && isInteger<gint64>(value, &number))
        return adopt(g_variant_new_int64(number));
    return refuseFor(type, value);
}

Variant Converter::makeUnsigned64(const JsonValue &value) const
{
    qint64 number = 0;
    if (integerFromJson(value, 0, std::numeric_limits<qint64>::max(), &number))
        return adopt(g_variant_new_uint64(static_cast<guint64>(number)));
    guint64 greatNumber = 0;
    if (value.kind != JsonValue::Number
        || !g_ascii_string_to_unsigned(value.text.toLatin1().constData(), 10, 0, G_MAXUINT64,
                                       &greatNumber, nullptr))
        return refuseFor(G_VARIANT_TYPE_UINT64, value);
    return adopt(g_variant_new_uint64(greatNumber));
}

Variant Converter::makeText(const GVariantType *type, const JsonValue &value) const
{
    if (value.kind != JsonValue::String)
        return refuseFor(type, value);
    if (!isDBusText(value.text))
        return refuse(value.offset, QStringLiteral("D-Bus does not carry this string"));
    const QByteArray text = value.text.toUtf8();
    const char code = *g_variant_type_peek_string(type);
    if (code == 's')
        return adopt(g_variant_new_string(text.constData()));
    if (code == 'o' && g_variant_is_object_path(text.constData()))
        return adopt(g_variant_new_object_path(text.constData()));
    if (code == 'g' && isSignature(value.text))
        return adopt(g_variant_new_signature(text.constData()));
    return refuseFor(type, value);
}

Variant Converter::makeStructure(const GVariantType *type, const JsonValue &value, int depth) const
{
    if (value.kind != JsonValue::List || value.items.size() != g_variant_type_n_items(type))
        return refuse(value.offset,
                      QStringLiteral("the type \"%1\" takes a list of %2 values")
                          .arg(nameOf(type))
                          .arg(g_variant_type_n_items(type)));
    QVector<Variant> members;
    Items pointers;
    const GVariantType *memberType = g_variant_type_first(type);
    for (const JsonValue &item : value.items) {
        members.append(makeValue(memberType, item, depth));
        if (!members.last())
            return {};
        pointers.append(members.last().get());
        memberType = g_variant_type_next(memberType);
    }
    return adopt(g_variant_new_tuple(pointers.data(), static_cast<gsize>(pointers.size())));
}

Variant Converter::makeArray(const GVariantType *type, const JsonValue &value, int depth) const
{
    if (value.kind != JsonValue::List)
        return refuseFor(type, value);
    const GVariantType *const itemType = g_variant_type_element(type);
    QVector<Variant> items;
    for (const JsonValue &item : value.items) {
        items.append(makeValue(itemType, item, depth));
        if (!items.last())
            return {};
    }
    return arrayOf(itemType, items);
}

Variant Converter::makeDictionary(const GVariantType *type, const JsonValue &value, int depth) const
{
    const GVariantType *const entryType = g_variant_type_element(type);
    const bool hasTextKeys = QByteArray("sog").contains(
        *g_variant_type_peek_string(g_variant_type_key(entryType)));
    if (value.kind != (hasTextKeys ? JsonValue::Object : JsonValue::List))
        return refuseFor(type, value);
    QVector<Variant> entries;
    for (const JsonMember &member : value.members) {
        JsonValue key;
        key.kind = JsonValue::String;
        key.offset = member.offset;
        key.text = member.key;
        entries.append(makeEntry(entryType, key, member.value, depth + 1));
        if (!entries.last())
            return {};
    }
    for (const JsonValue &item : value.items) {
        if (item.kind != JsonValue::List || item.items.size() != 2)
            return refuse(
                item.offset,
                QStringLiteral("the type \"%1\" takes a list of [key, value]").arg(nameOf(type)));
        entries.append(makeEntry(entryType, item.items.front(), item.items.back(), depth + 1));
        if (!entries.last())
            return {};
    }
    return arrayOf(entryType, entries);
}

Variant Converter::makeEntry(const GVariantType *type, const JsonValue &key, const JsonValue &value,
                             int depth) const
{
    const Variant keyOfEntry = makeBasic(g_variant_type_key(type), key);
    if (!keyOfEntry)
        return {};
    const Variant valueOfEntry = makeValue(g_variant_type_value(type), value, depth);
    return valueOfEntry ? adopt(g_variant_new_dict_entry(keyOfEntry.get(), valueOfEntry.get()))
                        : valueOfEntry;
}

} // namespace

Variant configurationFromJson(const JsonValue &value, Mistake *mistake)
{
    if (value.kind != JsonValue::Object) {
        refuse(value.offset, QStringLiteral("a configuration is no object"), mistake);
        return {};
    }
    if (const JsonMember *const type = value.member(typeKey)) {
        refuse(type->offset, QStringLiteral("a configuration has no \"$type\""), mistake);
        return {};
    }
    const Variant configuration = Converter(mistake).convertConfiguration(value, 0);
    if (configuration && isTooLarge(configuration)) {
        refuse(value.offset, QStringLiteral("a configuration is larger than the bus lets pass"),
               mistake);
        return {};
    }
    return configuration;
}

Variant arrayFromJson(const JsonValue &value, Mistake *mistake)
{
    return Converter(mistake).convertList(value, 0);
}

bool integerFromJson(const JsonValue &value, qint64 minimum, qint64 maximum, qint64 *number)
{
    gint64 found = 0;
    if (value.kind != JsonValue::Number
        || !g_ascii_string_to_signed(value.text.toLatin1().constData(), 10, minimum, maximum,
                                     &found, nullptr))
        return false;
    *number = found;
    return true;
}

bool isDBusText(const QString &text)
{
    return text.isValidUtf16() && !text.contains(QChar::Null);
}

} // namespace Tarnvel::Sandbox
