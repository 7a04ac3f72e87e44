// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "json_document.h"

#include <utility>

namespace Tarnvel::Schema {

// Values to be written.

inline Tools::JsonValue makeString(const QString &text)
{
    return {Tools::JsonValue::String, 0, 0, false, text, {}, {}};
}

inline Tools::JsonValue makeFalse()
{
    return {Tools::JsonValue::Boolean, 0, 0, false, {}, {}, {}};
}

inline Tools::JsonValue makeList(std::vector<Tools::JsonValue> items)
{
    return {Tools::JsonValue::List, 0, 0, false, {}, std::move(items), {}};
}

inline Tools::JsonValue makeObject(std::vector<Tools::JsonMember> members)
{
    return {Tools::JsonValue::Object, 0, 0, false, {}, {}, std::move(members)};
}

inline void addMember(const char *name, const Tools::JsonValue &value, Tools::JsonValue *object)
{
    object->members.push_back({QLatin1String(name), 0, value});
}

} // namespace Tarnvel::Schema
