// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QVariant>
#include <Tarnvel/ManagedConfiguration/configuration.h>

namespace Tarnvel::Benchmarks {

/*!
 * \brief Configuration::getByXpath() in its plainest form, for paths that fit the data.
 *
 * Each step wraps or copies the configuration that it looks into, or turns the whole list into one
 * of QVariants. An invalid value stands for every fault, and nothing is logged.
 */
QVariant getByXpathPlainly(const Application::ManagedConfiguration::Configuration &configuration,
                           const QString &xpath);

} // namespace Tarnvel::Benchmarks
