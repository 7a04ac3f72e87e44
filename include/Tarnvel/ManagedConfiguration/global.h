// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/qglobal.h>

/*!
 * \file
 * \brief The export macro of the library.
 *
 * Everything that does not bear TARNVEL_MANAGED_CONFIGURATION_EXPORT stays inside the shared
 * library.
 */

/*!
 * \namespace Tarnvel
 * \brief What the project offers.
 */

/*!
 * \namespace Tarnvel::Application
 * \brief What is linked into applications, as opposed to services and tools.
 */

/*!
 * \namespace Tarnvel::Application::ManagedConfiguration
 * \brief The library: ConfigurationManager, and the values that it takes and hands out.
 */

/*!
 * \def TARNVEL_MANAGED_CONFIGURATION_EXPORT
 * \brief Makes a class or a function visible outside the shared library.
 */
#if defined(TARNVEL_MANAGED_CONFIGURATION_BUILD)
#define TARNVEL_MANAGED_CONFIGURATION_EXPORT Q_DECL_EXPORT
#else
#define TARNVEL_MANAGED_CONFIGURATION_EXPORT Q_DECL_IMPORT
#endif
