// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/qglobal.h>

/*!
 * \file
 * \brief The export macro of the library.
 *
 * The shared library exports only declarations marked with TARNVEL_MANAGED_CONFIGURATION_EXPORT.
 */

/*!
 * \namespace Tarnvel
 * \brief The namespace of the project.
 */

/*!
 * \namespace Tarnvel::Application
 * \brief Libraries for applications, as opposed to services and tools.
 */

/*!
 * \namespace Tarnvel::Application::ManagedConfiguration
 * \brief The library: ConfigurationManager and the types of its parameters.
 */

/*!
 * \def TARNVEL_MANAGED_CONFIGURATION_EXPORT
 * \brief Exports a class or a function from the shared library.
 */
#if defined(TARNVEL_MANAGED_CONFIGURATION_BUILD)
#define TARNVEL_MANAGED_CONFIGURATION_EXPORT Q_DECL_EXPORT
#else
#define TARNVEL_MANAGED_CONFIGURATION_EXPORT Q_DECL_IMPORT
#endif
