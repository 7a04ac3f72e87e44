// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <Tarnvel/ManagedConfiguration/configuration.h>

namespace Tarnvel::Client {

/*!
 * \brief The values of a configuration as compact JSON, under their paths.
 *
 * Nested configurations are gone into, save for empty ones. Unlike values of a configuration,
 * these compare by their content.
 */
using Leaves = QMap<QString, QString>;

/*! \brief All values of \a configuration. */
Leaves leavesOf(const Application::ManagedConfiguration::Configuration &configuration);

/*! \brief What is different in \a after, in the order of the paths, a line each. */
QStringList differences(const Leaves &before, const Leaves &after);

} // namespace Tarnvel::Client
