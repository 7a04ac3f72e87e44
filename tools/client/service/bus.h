// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace Tarnvel::Client {

/*! \brief Whether the service can be called. */
enum class ServiceState {
    /*! It is not running, and the bus cannot start it. */
    Absent,
    /*! It is not running; the bus starts it at the first call. */
    Activatable,
    /*! It is running. */
    Running,
};

/*!
 * \brief Connects to the bus; fails if that is not possible within \a timeoutMs.
 *
 * Call it before anything else that uses the bus. After a failure, end the process without running
 * exit handlers: a thread may still wait for the bus.
 */
Tools::Failure openBus(int timeoutMs);

/*! \brief Asks the bus for the state of the service; fails if there is no reply in \a timeoutMs. */
Tools::Failure findService(int timeoutMs, ServiceState *state);

/*! \brief The process id of the running service; 0 if the bus does not know it. */
uint serviceProcessId(int timeoutMs);

/*! \brief The address of the bus, and where it comes from. */
QString busAddressText();

/*! \brief The failure of a service that is absent. */
Tools::Failure absentServiceFailure();

} // namespace Tarnvel::Client
