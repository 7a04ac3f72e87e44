// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QVariant>
#include <Tarnvel/ManagedConfiguration/configuration.h>

namespace Tarnvel::Benchmarks {

/*!
 * \brief The simplest way to write Configuration::getByXpath(), for paths that fit the data.
 *
 * Each step copies a configuration, or converts a list to a QVariantList. Returns an invalid value
 * on every error, and logs nothing.
 */
QVariant getByXpathStepByStep(const Application::ManagedConfiguration::Configuration &configuration,
                              const QString &xpath);

} // namespace Tarnvel::Benchmarks
