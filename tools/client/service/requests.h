// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <Tarnvel/ManagedConfiguration/configuration.h>

namespace Tarnvel::Client {

/*!
 * \name Requests
 *
 * Each waits for the reply in an event loop of its own, for at most \a timeoutMs, and fails if
 * there is none or it is an error. The bus must be open.
 */
/*! @{ */

/*! \brief Sets \a configuration to that of the application. */
Tools::Failure readConfiguration(int timeoutMs,
                                 Application::ManagedConfiguration::Configuration *configuration);

/*! \brief Sends \a change. */
Tools::Failure changeConfiguration(int timeoutMs,
                                   const Application::ManagedConfiguration::Configuration &change);

/*! @} */

} // namespace Tarnvel::Client
