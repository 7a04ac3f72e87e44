// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "path.h"
#include "usage_failure.h"
#include "value_type.h"

#include <QtCore/QString>
#include <Tarnvel/ManagedConfiguration/configuration.h>

#include <optional>

namespace Tarnvel::Client {

/*! \brief A value to be set: PATH=VALUE or PATH:TYPE=VALUE. */
struct Assignment
{
    /*! The path; there is at least one step. */
    Steps steps;
    /*! The type, if it is given. */
    std::optional<ValueType> type;
    /*! What stands behind the "=". */
    QString value;

    /*! \brief The key of the whole configuration under which the value lies. */
    QString topLevelKey() const;
};

/*!
 * \brief Sets \a assignment to what \a text says.
 *
 * The first "=" ends the path, and a type is what stands behind the last ":" before it, if it has
 * a type's name.
 */
Failure parseAssignment(const QString &text, Assignment *assignment);

/*!
 * \brief Does \a assignment in \a configuration.
 *
 * Without a type the value gets that of the present one. Nested configurations that the path needs
 * and that are not there are made; lists are not made and do not grow.
 */
Failure assign(const Assignment &assignment,
               Application::ManagedConfiguration::Configuration *configuration);

} // namespace Tarnvel::Client
