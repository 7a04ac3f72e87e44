// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "reply.h"

#include "bus_limits.h"

#include <cstring>

namespace Tarnvel::Sandbox {

namespace {

GVariant *tooLargeConfiguration()
{
    auto *const text = static_cast<char *>(g_malloc(DBus::maximumMessageSize + 1));
    std::memset(text, 'x', DBus::maximumMessageSize);
    text[DBus::maximumMessageSize] = '\0';
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&builder, "{sv}", "large", g_variant_new_take_string(text));
    return g_variant_builder_end(&builder);
}

} // namespace

GVariant *replyArguments(GVariant *configuration, const std::optional<Fault> &fault)
{
    if (fault && fault->kind == Fault::WrongSignature)
        return g_variant_new("(si)", "unexpected", 1);
    if (fault && fault->kind == Fault::TooLarge)
        return g_variant_new("(@a{sv})", tooLargeConfiguration());
    const bool hasExtraArguments = fault && fault->kind == Fault::ExtraArguments;
    if (configuration && hasExtraArguments)
        return g_variant_new("(@a{sv}si)", configuration, "extra", 1);
    if (configuration)
        return g_variant_new("(@a{sv})", configuration);
    return hasExtraArguments ? g_variant_new("(si)", "extra", 1) : g_variant_new_tuple(nullptr, 0);
}

} // namespace Tarnvel::Sandbox
