// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "variant_json.h"

#include "scenario/configuration_reader.h"
#include "scenario/variant.h"
#include "text.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace Tarnvel::Sandbox {

namespace {

const QLatin1String textKey(gvariantTextKey);

QJsonObject textJson(GVariant *value)
{
    g_autofree gchar *text = g_variant_print(value, TRUE);
    return {{textKey, QString::fromUtf8(text)}};
}

QJsonArray listJson(GVariant *list)
{
    QJsonArray array;
    for (gsize index = 0; index < g_variant_n_children(list); ++index)
        array.append(toJson(adopt(g_variant_get_child_value(list, index)).get()));
    return array;
}

QJsonObject configurationJson(GVariant *configuration)
{
    QJsonObject object;
    const Entries entries = entriesOf(configuration);
    for (auto entry = entries.begin(); entry != entries.end(); ++entry)
        object.insert(entry.key(), toJson(entry.value().get()));
    return object.contains(textKey) ? textJson(configuration) : object;
}

} // namespace

QJsonValue toJson(GVariant *value)
{
    const QByteArray type = g_variant_get_type_string(value);
    if (type == "i")
        return g_variant_get_int32(value);
    if (type == "b")
        return g_variant_get_boolean(value) == TRUE;
    if (type == "s")
        return Tools::fromUtf8(g_variant_get_string(value, nullptr));
    if (type == "ai" || type == "ab" || type == "as")
        return listJson(value);
    if (type == "a{sv}")
        return configurationJson(value);
    return textJson(value);
}

QString toJsonText(GVariant *value)
{
    // A document is a list or an object.
    const QByteArray text = QJsonDocument({toJson(value)}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(text.mid(1, text.size() - 2));
}

} // namespace Tarnvel::Sandbox
