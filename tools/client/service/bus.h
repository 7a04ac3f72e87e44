// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "usage_failure.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace Tarnvel::Client {

/*! \brief How far it is to the service. */
enum class ServiceState {
    /*! The connection to the bus is lost, or the bus does not answer. */
    NoBus,
    /*! Nobody owns the service's name, and the bus cannot start it. */
    Absent,
    /*! It is not running; the bus starts it at the first call. */
    Activatable,
    /*! It is running. */
    Running,
};

/*!
 * \brief Connects to the bus; a failure if that takes longer than \a timeoutMs or fails.
 *
 * Call it before all else that uses the bus.
 */
Failure openBus(int timeoutMs);

/*!
 * \brief True if openBus() has given up on a bus that takes connections but does not answer.
 *
 * The bus layer still waits for it then, and would in an orderly end of the process too.
 */
bool isBusHanging();

/*! \brief How far it is now; waits for the bus no longer than \a timeoutMs at a time. */
ServiceState serviceState(int timeoutMs);

/*! \brief The process of the running service; 0 if the bus does not tell. */
uint serviceProcess(int timeoutMs);

/*! \brief Which bus it is: its address, and who says so. */
QString busAddressText();

/*! \brief The failure of having no bus, because of \a reason. */
Failure busFailure(const QString &reason);

} // namespace Tarnvel::Client
