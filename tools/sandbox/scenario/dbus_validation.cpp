// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "dbus_validation.h"

#include "bus_limits.h"
#include "variant.h"

#include <algorithm>

namespace Tarnvel::Sandbox {

namespace {

// How many containers a type holds inside one another, itself included. Arrays count as if they
// had an item; the contents of variants do not count.
struct Nesting
{
    int containers = 0;
    int arrays = 0;
    int structures = 0;
};

Nesting nestingOf(const GVariantType *type)
{
    if (!g_variant_type_is_container(type))
        return {};
    if (g_variant_type_is_variant(type))
        return {1, 0, 0};
    const bool isArray = g_variant_type_is_array(type);
    Nesting nesting;
    const GVariantType *item = isArray ? g_variant_type_element(type) : g_variant_type_first(type);
    while (item) {
        const Nesting inner = nestingOf(item);
        nesting.containers = std::max(nesting.containers, inner.containers);
        nesting.arrays = std::max(nesting.arrays, inner.arrays);
        nesting.structures = std::max(nesting.structures, inner.structures);
        item = isArray ? nullptr : g_variant_type_next(item);
    }
    ++nesting.containers;
    nesting.arrays += isArray ? 1 : 0;
    nesting.structures += g_variant_type_is_tuple(type) ? 1 : 0;
    return nesting;
}

// GLib does not have these limits, and has types that D-Bus does not have.
QString signatureViolation(const QByteArray &signature)
{
    if (signature.size() > DBus::maximumSignatureSize)
        return QStringLiteral("D-Bus limits a signature to %1 characters")
            .arg(DBus::maximumSignatureSize);
    if (signature.contains("()"))
        return QStringLiteral("D-Bus has no empty structures");
    if (signature.count('{') != signature.count("a{"))
        return QStringLiteral("D-Bus has dictionary entries only in arrays");
    // A signature may consist of several types, a GVariantType is one.
    const QByteArray structure = '(' + signature + ')';
    const Nesting nesting = nestingOf(
        reinterpret_cast<const GVariantType *>(structure.constData()));
    if (nesting.arrays > DBus::maximumArrayDepth
        || nesting.structures - 1 > DBus::maximumStructureDepth)
        return QStringLiteral("D-Bus limits a signature to %1 nested arrays and %2 structures")
            .arg(DBus::maximumArrayDepth)
            .arg(DBus::maximumStructureDepth);
    return {};
}

QString contentViolation(GVariant *value, int depth)
{
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_SIGNATURE))
        return signatureViolation(g_variant_get_string(value, nullptr));
    const QByteArray type = g_variant_get_type_string(value);
    if (!type.contains('v') && !type.contains('g'))
        return {};
    for (gsize index = 0; index < g_variant_n_children(value); ++index) {
        const Variant child = adopt(g_variant_get_child_value(value, index));
        const QString violation = type == "v" ? dbusViolation(child.get(), depth + 1)
                                              : contentViolation(child.get(), depth + 1);
        if (!violation.isNull())
            return violation;
    }
    return {};
}

} // namespace

QString dbusViolation(GVariant *value, int depth)
{
    const QByteArray type = g_variant_get_type_string(value);
    if (type.contains('m'))
        return QStringLiteral("D-Bus has no maybe types");
    if (type.contains('h'))
        return QStringLiteral("a file cannot hold a file descriptor");
    QString violation = signatureViolation(type);
    if (violation.isNull())
        violation = depthViolation(depth + nestingOf(g_variant_get_type(value)).containers);
    return violation.isNull() ? contentViolation(value, depth) : violation;
}

QString depthViolation(int containers)
{
    if (containers <= DBus::maximumContainerDepth)
        return {};
    return QStringLiteral("D-Bus limits a message to %1 nested containers; "
                          "each configuration takes %2")
        .arg(DBus::maximumContainerDepth)
        .arg(DBus::containersPerLevel);
}

} // namespace Tarnvel::Sandbox
