// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "json_document.h"

#include <optional>
#include <vector>

namespace Tarnvel::Sandbox {

/*! \brief The items of the list \a name in \a object; none if that is not a list. */
inline const std::vector<Tools::JsonValue> &itemsOf(const Tools::JsonValue &object,
                                                    const QString &name)
{
    static const std::vector<Tools::JsonValue> none;
    const Tools::JsonValue *const list = object.member(name);
    return list ? list->items : none;
}

/*!
 * \brief What \a read finds in \a part; nothing if it adds a diagnostic.
 *
 * Slips are found in the valid parts of a scenario, whatever is wrong with the others.
 */
template<typename Read, typename Part>
auto readValidPart(Read read, const Part &part)
{
    Tools::Diagnostics diagnostics({}, {});
    const auto value = read(part, &diagnostics);
    return diagnostics.isEmpty() ? std::make_optional(value) : std::nullopt;
}

} // namespace Tarnvel::Sandbox
