// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "json_document.h"
#include "setting.h"
#include "variant.h"

#include <memory>

namespace Tarnvel::Sandbox {

/*!
 * \brief The schema in the file that \a value, the member "schema" of an application, names.
 *
 * The name is relative to the directory of the scenario. If there is no schema, null, and
 * \a diagnostics about \a value say what is wrong with the file.
 */
std::shared_ptr<const Schema::Schema> readNamedSchema(const Tools::JsonValue &value,
                                                      Tools::Diagnostics *diagnostics);

/*!
 * \brief \a configuration with the defaults of the settings in \a object that it lacks.
 *
 * An empty list has the type of its setting, which it cannot say itself.
 */
Variant withDefaults(const Schema::Setting &object, const Variant &configuration);

} // namespace Tarnvel::Sandbox
