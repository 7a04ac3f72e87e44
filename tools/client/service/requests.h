// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "usage_failure.h"

#include <Tarnvel/ManagedConfiguration/configuration.h>

#include <functional>

namespace Tarnvel::Client {

/*! \brief Takes what was read, or the reason why nothing was. */
using ReadHandler = std::function<void(
    const Application::ManagedConfiguration::Configuration &configuration, const Failure &failure)>;

/*! \brief Takes the outcome of a change. */
using ChangeHandler = std::function<void(const Failure &failure)>;

/*! \brief Reads the configuration; \a handler is called once, after \a timeoutMs at the latest. */
void readConfiguration(int timeoutMs, const ReadHandler &handler);

/*! \brief Sends \a change; \a handler is called once, after \a timeoutMs at the latest. */
void changeConfiguration(const Application::ManagedConfiguration::Configuration &change,
                         int timeoutMs, const ChangeHandler &handler);

} // namespace Tarnvel::Client
