// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "reading_model.h"

#include <QtCore/QMap>
#include <QtCore/QVariant>

#include <memory>

namespace Tarnvel::Testing {

namespace {

using Value = std::unique_ptr<GVariant, decltype(&g_variant_unref)>;

QString configurationText(GVariant *dictionary, QStringList &warnings);

Value child(GVariant *container, gsize index)
{
    return {g_variant_get_child_value(container, index), g_variant_unref};
}

// QString takes a byte order mark at the beginning of UTF-8 for no part of the text.
QString stringFrom(GVariant *value)
{
    glong length = 0;
    gunichar2 *const units = g_utf8_to_utf16(g_variant_get_string(value, nullptr), -1, nullptr,
                                             &length, nullptr);
    QString text = QString::fromUtf16(reinterpret_cast<const char16_t *>(units), 0);
    text.append(reinterpret_cast<const QChar *>(units), int(length));
    g_free(units);
    if (text.startsWith(QChar(QChar::ByteOrderMark)))
        text.remove(0, 1);
    return text;
}

QString itemText(GVariant *item)
{
    switch (g_variant_classify(item)) {
    case G_VARIANT_CLASS_BOOLEAN:
        return g_variant_get_boolean(item) ? QStringLiteral("true") : QStringLiteral("false");
    case G_VARIANT_CLASS_INT32:
        return QString::number(g_variant_get_int32(item));
    default:
        return u'"' + stringFrom(item) + u'"';
    }
}

QString listText(const char *type, GVariant *array)
{
    QStringList items;
    for (gsize i = 0; i < g_variant_n_children(array); ++i)
        items.append(itemText(child(array, i).get()));
    return QLatin1String(type) + QLatin1String(" [") + items.join(QLatin1String(", ")) + u']';
}

QLatin1String elementTypeName(const QByteArray &signature)
{
    static const QMap<QByteArray, const char *> names {
        {"n", "short"},      {"q", "ushort"}, {"u", "uint"},         {"x", "qlonglong"},
        {"t", "qulonglong"}, {"d", "double"}, {"as", "QStringList"}, {"ay", "QByteArray"},
    };
    return QLatin1String(names.value(signature, QVariant::typeToName(QVariant::UserType)));
}

/*! \brief The text of what is stored for \a array, null if that is nothing. */
QString arrayText(GVariant *array, QStringList &warnings)
{
    const QByteArray signature = g_variant_get_type_string(array);
    if (signature.startsWith("a{"))
        return configurationText(array, warnings);
    if (signature == "as")
        return listText("QStringList", array);
    if (signature == "ay" || g_variant_n_children(array) == 0)
        return {};
    if (signature == "ai")
        return listText("QList<int>", array);
    if (signature == "ab")
        return listText("QList<bool>", array);
    warnings.append(QLatin1String("Unsupported type for arrays:  ")
                    + elementTypeName(signature.mid(1)));
    return {};
}

/*! \brief The same for any value. */
QString valueText(GVariant *value, QStringList &warnings)
{
    switch (g_variant_classify(value)) {
    case G_VARIANT_CLASS_BOOLEAN:
        return QLatin1String("bool ") + itemText(value);
    case G_VARIANT_CLASS_INT32:
        return QLatin1String("int ") + itemText(value);
    case G_VARIANT_CLASS_STRING:
        return QLatin1String("QString ") + itemText(value);
    case G_VARIANT_CLASS_ARRAY:
        return arrayText(value, warnings);
    default:
        return {};
    }
}

QString configurationText(GVariant *dictionary, QStringList &warnings)
{
    QMap<QString, QString> stored;
    const bool isConfiguration = g_variant_is_of_type(dictionary, G_VARIANT_TYPE_VARDICT) != 0;
    for (gsize i = 0; isConfiguration && i < g_variant_n_children(dictionary); ++i) {
        const Value entry = child(dictionary, i);
        const Value key = child(entry.get(), 0);
        const Value variant = child(entry.get(), 1);
        const Value value(g_variant_get_variant(variant.get()), g_variant_unref);
        const QString text = valueText(value.get(), warnings);
        if (!text.isNull())
            stored.insert(stringFrom(key.get()), text);
    }

    QStringList entries;
    for (auto entry = stored.cbegin(); entry != stored.cend(); ++entry)
        entries.append(u'"' + entry.key() + QLatin1String("\": ") + entry.value());
    return u'{' + entries.join(QLatin1String(", ")) + u'}';
}

} // namespace

Outcome expectedReading(GVariant *argument)
{
    Outcome outcome;
    outcome.value = configurationText(argument, outcome.warnings);
    return outcome;
}

} // namespace Tarnvel::Testing
