// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_reader.h"

#include "bus_limits.h"
#include "dbus_validation.h"
#include "json_reader.h"

namespace Tarnvel::Sandbox {

namespace {

const QLatin1String textKey("$gvariant");

Variant readScalar(const JsonValue &value, Diagnostics *diagnostics)
{
    switch (value.kind) {
    case JsonValue::Boolean:
        return adopt(g_variant_new_boolean(value.isTrue));
    case JsonValue::Number:
        return adopt(g_variant_new_int32(readInt32(&value, diagnostics)));
    case JsonValue::String:
        return adopt(g_variant_new_string(value.text.toUtf8().constData()));
    default:
        refuse(value, QStringLiteral("a boolean, an integer or a string"), diagnostics);
        return {};
    }
}

// Reads values with the number of containers around them in mind.
class ValueReader
{
public:
    explicit ValueReader(Diagnostics *diagnostics) : m_diagnostics(diagnostics) { }

    Variant readValue(const JsonValue &value, int depth) const;

private:
    Variant readArray(const JsonValue &list, int depth) const;
    Variant readText(const JsonValue &object, int depth) const;
    Variant readObject(const JsonValue &object, int depth) const;
    bool isCarried(const JsonValue &value, const QString &violation) const;

    Diagnostics *m_diagnostics;
};

Variant ValueReader::readValue(const JsonValue &value, int depth) const
{
    if (value.kind == JsonValue::List)
        return readArray(value, depth);
    if (value.kind != JsonValue::Object)
        return readScalar(value, m_diagnostics);
    return value.member(textKey) ? readText(value, depth) : readObject(value, depth);
}

Variant ValueReader::readArray(const JsonValue &list, int depth) const
{
    const QVector<Variant> items = readItems(list, m_diagnostics);
    if (!isCarried(list, depthViolation(depth + 1)))
        return {};
    GVariantBuilder builder;
    g_variant_builder_init(&builder,
                           items.isEmpty() ? G_VARIANT_TYPE_STRING_ARRAY : G_VARIANT_TYPE_ARRAY);
    for (const Variant &item : items)
        g_variant_builder_add_value(&builder, item.get());
    return adopt(g_variant_builder_end(&builder));
}

Variant ValueReader::readText(const JsonValue &object, int depth) const
{
    ObjectReader reader(object, m_diagnostics);
    const JsonValue &text = *reader.require(textKey);
    reader.refuseOthers(QStringLiteral("a value with \"%1\"").arg(textKey));
    const QByteArray string = readString(&text, m_diagnostics).toUtf8();
    if (text.kind != JsonValue::String)
        return {};
    g_autoptr(GError) error = nullptr;
    GVariant *const parsed = g_variant_parse(nullptr, string.constData(), nullptr, nullptr, &error);
    if (!parsed) {
        m_diagnostics->add(
            text.offset,
            QStringLiteral("invalid GVariant text: %1").arg(QString::fromUtf8(error->message)));
        return {};
    }
    const Variant value = adopt(parsed);
    return isCarried(text, dbusViolation(parsed, depth)) ? inOrder(value) : Variant();
}

Variant ValueReader::readObject(const JsonValue &object, int depth) const
{
    const int innerDepth = depth + DBus::containersPerLevel;
    if (!isCarried(object, depthViolation(innerDepth)))
        return {};
    Entries entries;
    for (const JsonMember &member : object.members) {
        if (const Variant value = readValue(member.value, innerDepth))
            entries.insert(member.key, value);
    }
    return makeConfiguration(entries);
}

bool ValueReader::isCarried(const JsonValue &value, const QString &violation) const
{
    if (!violation.isNull())
        m_diagnostics->add(value.offset, violation);
    return violation.isNull();
}

} // namespace

Variant readConfiguration(const JsonValue *value, Diagnostics *diagnostics)
{
    if (!value)
        return {};
    if (value->kind != JsonValue::Object) {
        refuse(*value, describe(JsonValue::Object), diagnostics);
        return {};
    }
    const Variant configuration = ValueReader(diagnostics).readValue(*value, 0);
    if (!configuration)
        return {};
    if (!g_variant_is_of_type(configuration.get(), G_VARIANT_TYPE_VARDICT))
        diagnostics->add(value->offset, QStringLiteral("expected a value of type \"a{sv}\""));
    else if (isTooLarge(configuration))
        diagnostics->add(value->offset,
                         QStringLiteral("D-Bus limits a message to %1 MiB")
                             .arg(DBus::maximumMessageSize / 1024 / 1024));
    return configuration;
}

QVector<Variant> readItems(const JsonValue &list, Diagnostics *diagnostics)
{
    QVector<Variant> items;
    for (const JsonValue &item : list.items) {
        const JsonValue::Kind kind = list.items.front().kind;
        if (item.kind != kind)
            refuse(item, QStringLiteral("%1 like the first item").arg(describe(kind)), diagnostics);
        else if (const Variant value = readScalar(item, diagnostics))
            items.append(value);
    }
    return items;
}

} // namespace Tarnvel::Sandbox
