// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "command_line.h"
#include "failure.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVariant>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/xpath.h>

namespace Tarnvel::Client {

/*! \brief The steps of a path. */
using Steps = QList<Application::ManagedConfiguration::XpathAccess>;

/*! \brief Sets \a steps to those of \a path. If it is not a path, a logged warning says why. */
Tools::Failure parsePath(const QString &path, Steps *steps);

/*! \brief Sets \a steps to those of the only argument, a path, or to none if there is none. */
Tools::Failure parsePathArgument(const CommandLine &commandLine, Steps *steps);

/*! \brief Sets \a value to the value at \a steps in \a configuration. */
Tools::Failure findValue(const Application::ManagedConfiguration::Configuration &configuration,
                         const Steps &steps, QVariant *value);

/*!
 * \brief The first \a count of \a steps as a path to be read by people; see keyText().
 *
 * All steps if \a count is -1.
 */
QString pathText(const Steps &steps, int count = -1);

/*! \brief \a key as it is, or as a JSON string if it would be ambiguous in a path or on a line. */
QString keyText(const QString &key);

} // namespace Tarnvel::Client
