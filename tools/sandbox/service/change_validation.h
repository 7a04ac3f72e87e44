// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "scenario/scenario.h"
#include "scenario/variant.h"

#include <QtCore/QString>

#include <optional>

namespace Tarnvel::Sandbox {

/*! \brief Why the service refuses a call. */
struct Refusal
{
    /*! One of the service's errors, without their prefix. */
    QString error;
    /*! Names what the call is about, and the reason. */
    QString message;
};

/*!
 * \brief Why calls of the user \a userId for \a application, kept at \a path, are refused.
 *
 * Nothing if they are admitted. A user that is not known is none of the admitted ones.
 */
std::optional<Refusal> refuseCaller(const Application &application, const QString &path,
                                    std::optional<quint32> userId);

/*!
 * \brief Why \a application may not make \a change, an a{sv}, to its configuration.
 *
 * \a known is the configuration as the administrator has made it: it says which settings there
 * are, and of which types; what stands in the application's configuration may have lost some.
 * Nothing if the change is admitted.
 */
std::optional<Refusal> refuseChange(const Application &application, const Variant &known,
                                    GVariant *change);

} // namespace Tarnvel::Sandbox
