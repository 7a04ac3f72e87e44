// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "json_document.h"

#include <QtCore/QStringList>

#include <glib.h>

namespace Tarnvel::Sandbox {

/*!
 * \brief \a value, which is written at \a offset, as a validator sees it.
 *
 * A value of an unsupported type is a Number that is none: its GVariant text, such as "0.5".
 */
Tools::JsonValue toPlainJson(GVariant *value, int offset = 0);

/*! \brief A valid \a configuration in a scenario with the values that GVariant text in it means. */
Tools::JsonValue plainConfiguration(const Tools::JsonValue &configuration);

/*!
 * \brief Where the setting with these \a keys is written in \a configuration.
 *
 * If that is inside GVariant text, the text.
 */
const Tools::JsonValue &writtenAt(const Tools::JsonValue &configuration, const QStringList &keys);

} // namespace Tarnvel::Sandbox
