// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "terminal.h"

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <Tarnvel/ManagedConfiguration/configuration.h>

namespace Tarnvel::Client {

/*!
 * \brief The values of a configuration as compact JSON, by path.
 *
 * Nested configurations are expanded, except empty ones. Unlike the values of a configuration,
 * these are compared by content.
 */
using Leaves = QMap<QString, QString>;

/*! \brief All values of \a configuration. */
Leaves leavesOf(const Application::ManagedConfiguration::Configuration &configuration);

/*! \brief A value that was added, removed or changed: a line of text and how to show it. */
struct Difference
{
    QString text;
    Tools::Style style;
};

/*! \brief What differs between \a before and \a after, in the order of the paths. */
QList<Difference> differencesBetween(const Leaves &before, const Leaves &after);

} // namespace Tarnvel::Client
