// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "scenario/scenario.h"
#include "scenario/variant.h"

#include <QtCore/QString>

#include <optional>

namespace Tarnvel::Sandbox {

/*! \brief The configuration of an application, an a{sv}, in two states. */
struct Configurations
{
    /*! As the scenario or a fault has set it: it determines the settings and their types. */
    Variant given;
    /*! As the application has changed it; it may have lost settings. */
    Variant current;
};

/*! \brief Why the service refuses a call. */
struct Refusal
{
    /*! One of the service's errors, without their prefix. */
    QString error;
    /*! Names what the call is about, and the reason. */
    QString message;
};

/*!
 * \brief Why calls of the user \a userId for \a application, at \a path, are refused.
 *
 * Nothing if they are not. An unknown user is not among the users of an application.
 */
std::optional<Refusal> refuseCaller(const Application &application, const QString &path,
                                    std::optional<quint32> userId);

/*!
 * \brief Why \a application may not make \a change, an a{sv}, to its \a configurations.
 *
 * Nothing if it may.
 */
std::optional<Refusal> refuseChange(const Application &application,
                                    const Configurations &configurations, GVariant *change);

} // namespace Tarnvel::Sandbox
