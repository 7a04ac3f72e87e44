// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "entry_cache.h"
#include "json_document.h"
#include "variant.h"

namespace Tarnvel::Sandbox {

/*! \brief The key of the GVariant text of a value that JSON cannot express. */
constexpr char gvariantTextKey[] = "$gvariant";

/*!
 * \brief The configuration, an a{sv}, that \a value describes.
 *
 * - An integer is an int32, a string a string, a boolean a boolean.
 * - A list of values of one of these types is an array of it, an empty list one of strings.
 * - An object is a nested configuration.
 * - An object with the only member #gvariantTextKey is the value of that GVariant text.
 *
 * Everything else adds to \a diagnostics, and so does what no D-Bus message can hold: the result is
 * then incomplete. Null if \a value is. Entries of the configuration are taken from \a cache where
 * it has them, and otherwise added to it.
 */
Variant readConfiguration(const Tools::JsonValue *value, Tools::Diagnostics *diagnostics,
                          EntryCache *cache = nullptr);

/*! \brief Adds a diagnostic about what is at \a offset if no message can hold \a configuration. */
void checkSize(const Variant &configuration, int offset, Tools::Diagnostics *diagnostics);

/*! \brief The items of the List \a list: integers, booleans or strings, as in a configuration. */
QVector<Variant> readItems(const Tools::JsonValue &list, Tools::Diagnostics *diagnostics);

} // namespace Tarnvel::Sandbox
