// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "usage_failure.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVariant>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/xpath.h>

namespace Tarnvel::Client {

/*! \brief The steps of a path, as Xpath finds them. */
using Steps = QList<Application::ManagedConfiguration::XpathAccess>;

/*! \brief Sets \a steps to those of \a path; a failure if it is no path. */
Failure parsePath(const QString &path, Steps *steps);

/*!
 * \brief Sets \a value to that to which \a steps lead in \a configuration.
 *
 * A failure if they lead to none, which says where the way ends.
 */
Failure findValue(const Application::ManagedConfiguration::Configuration &configuration,
                  const Steps &steps, QVariant *value);

/*! \brief The failure of a path that does not go on, because of \a reason. */
Failure pathFailure(const QString &reason);

/*! \brief The first \a count of \a steps as a path for people; see keyText(). */
QString pathText(const Steps &steps, int count);

/*!
 * \brief \a key as it stands in a path, or as a JSON string.
 *
 * It is a JSON string if it holds something that would not be clear in a path or on one line.
 */
QString keyText(const QString &key);

} // namespace Tarnvel::Client
