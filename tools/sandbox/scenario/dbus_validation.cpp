// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "dbus_validation.h"

#include <algorithm>

namespace Tarnvel::Sandbox {

namespace {

constexpr int maximumSignatureSize = 255;
constexpr int maximumArrayDepth = 32;
constexpr int maximumStructureDepth = 32;

enum Counted {
    Arrays,
    Structures,
};

int depthOf(const GVariantType *type, Counted counted);

int depthOfItems(const GVariantType *type, Counted counted)
{
    int depth = 0;
    for (const GVariantType *item = g_variant_type_first(type); item;
         item = g_variant_type_next(item))
        depth = std::max(depth, depthOf(item, counted));
    return depth;
}

int depthOf(const GVariantType *type, Counted counted)
{
    if (g_variant_type_is_array(type))
        return (counted == Arrays ? 1 : 0) + depthOf(g_variant_type_element(type), counted);
    if (g_variant_type_is_tuple(type))
        return (counted == Structures ? 1 : 0) + depthOfItems(type, counted);
    return g_variant_type_is_dict_entry(type) ? depthOfItems(type, counted) : 0;
}

// GLib knows some types that D-Bus does not: structures without members and entries without a
// dictionary; and it knows no bounds.
bool isKnownToDBus(const QString &text)
{
    return text.size() <= maximumSignatureSize && !text.contains(QLatin1String("()"))
        && text.count(QLatin1Char('{')) == text.count(QLatin1String("a{"));
}

} // namespace

bool isSignature(const QString &text)
{
    if (!isKnownToDBus(text) || text.contains(QChar::Null)
        || !g_variant_is_signature(text.toLatin1().constData()))
        return false;
    // As the members of a structure, the types can be looked at one by one.
    const QByteArray structure = '(' + text.toLatin1() + ')';
    const auto *type = reinterpret_cast<const GVariantType *>(structure.constData());
    return depthOfItems(type, Arrays) <= maximumArrayDepth
        && depthOfItems(type, Structures) <= maximumStructureDepth;
}

bool isCompleteType(const QString &text)
{
    return isSignature(text) && g_variant_type_string_is_valid(text.toLatin1().constData());
}

int containerDepth(const GVariantType *type)
{
    if (g_variant_type_is_variant(type))
        return 1;
    if (g_variant_type_is_array(type))
        return 1 + containerDepth(g_variant_type_element(type));
    if (g_variant_type_is_basic(type))
        return 0;
    int depth = 0;
    for (const GVariantType *item = g_variant_type_first(type); item;
         item = g_variant_type_next(item))
        depth = std::max(depth, containerDepth(item));
    return 1 + depth;
}

} // namespace Tarnvel::Sandbox
