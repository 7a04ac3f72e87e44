// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"
#include "path.h"
#include "value_type.h"

#include <QtCore/QString>
#include <Tarnvel/ManagedConfiguration/configuration.h>

#include <optional>

namespace Tarnvel::Client {

/*! \brief An argument of the command \c set: PATH=VALUE or PATH:TYPE=VALUE. */
struct Assignment
{
    /*! The path, of at least one step. */
    Steps steps;
    /*! The type; nullopt if it is not given. */
    std::optional<ValueType> type;
    /*! The text after the "=". */
    QString value;
};

/*!
 * \brief Parses \a text.
 *
 * The first "=" ends the path. The text after the last ":" before it is the type, if it is the name
 * of a type; otherwise it belongs to the path.
 */
Tools::Failure parseAssignment(const QString &text, Assignment *assignment);

/*!
 * \brief Changes \a configuration as \a assignment says.
 *
 * Without a type, the value gets the type of the present one. Nested configurations on the path are
 * created if they do not exist; lists are not, and do not grow.
 */
Tools::Failure assign(const Assignment &assignment,
                      Application::ManagedConfiguration::Configuration *configuration);

} // namespace Tarnvel::Client
