// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "plain_json.h"

#include "configuration_reader.h"
#include "text.h"
#include "variant.h"

namespace Tarnvel::Sandbox {

using Tools::JsonValue;

namespace {

JsonValue makeText(JsonValue::Kind kind, const char *text)
{
    JsonValue value;
    value.kind = kind;
    value.text = Tools::fromUtf8(text);
    return value;
}

JsonValue makeScalar(GVariant *variant)
{
    if (g_variant_is_of_type(variant, G_VARIANT_TYPE_STRING))
        return makeText(JsonValue::String, g_variant_get_string(variant, nullptr));
    if (g_variant_is_of_type(variant, G_VARIANT_TYPE_BOOLEAN)) {
        JsonValue value;
        value.kind = JsonValue::Boolean;
        value.isTrue = g_variant_get_boolean(variant) == TRUE;
        return value;
    }
    g_autofree gchar *text = g_variant_print(variant, TRUE);
    return makeText(JsonValue::Number, text);
}

bool isList(GVariant *value)
{
    return g_variant_is_of_type(value, G_VARIANT_TYPE("ai"))
        || g_variant_is_of_type(value, G_VARIANT_TYPE("ab"))
        || g_variant_is_of_type(value, G_VARIANT_TYPE_STRING_ARRAY);
}

} // namespace

JsonValue toPlainJson(GVariant *value, int offset)
{
    JsonValue json;
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_VARDICT)) {
        json.kind = JsonValue::Object;
        const Entries entries = entriesOf(value);
        for (auto entry = entries.begin(); entry != entries.end(); ++entry)
            json.members.push_back({entry.key(), offset, toPlainJson(entry->get(), offset)});
    } else if (isList(value)) {
        json.kind = JsonValue::List;
        for (gsize index = 0; index < g_variant_n_children(value); ++index)
            json.items.push_back(
                toPlainJson(adopt(g_variant_get_child_value(value, index)).get(), offset));
    } else {
        json = makeScalar(value);
    }
    json.offset = offset;
    return json;
}

JsonValue plainConfiguration(const JsonValue &configuration)
{
    if (configuration.kind != JsonValue::Object)
        return configuration;
    if (const JsonValue *const text = configuration.member(QLatin1String(gvariantTextKey))) {
        const Variant value = adopt(
            g_variant_parse(nullptr, text->text.toUtf8().constData(), nullptr, nullptr, nullptr));
        return toPlainJson(value.get(), configuration.offset);
    }
    JsonValue plain = configuration;
    for (Tools::JsonMember &member : plain.members)
        member.value = plainConfiguration(member.value);
    return plain;
}

const JsonValue &writtenAt(const JsonValue &configuration, const QStringList &keys)
{
    const JsonValue *value = &configuration;
    for (const QString &key : keys) {
        const JsonValue *const inner = value->member(key);
        if (!inner)
            break;
        value = inner;
    }
    return *value;
}

} // namespace Tarnvel::Sandbox
