// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"
#include "values/unseen_settings.h"

#include <Tarnvel/ManagedConfiguration/configuration.h>

namespace Tarnvel::Client {

/*! \brief What the service keeps for an application. */
struct Reading
{
    /*! What the application sees. */
    Application::ManagedConfiguration::Configuration configuration;
    UnseenSettings unseen;
};

/*!
 * \name Requests
 *
 * Each waits for the reply in an event loop of its own, for at most \a timeoutMs, and fails if
 * there is none or it is an error. The bus must be open.
 */
/*! @{ */

/*! \brief Sets \a reading to what the service keeps for the application. */
Tools::Failure readConfiguration(int timeoutMs, Reading *reading);

/*! \brief Sends \a change. */
Tools::Failure changeConfiguration(int timeoutMs,
                                   const Application::ManagedConfiguration::Configuration &change);

/*! @} */

} // namespace Tarnvel::Client
