// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "scenario/scenario.h"
#include "scenario/variant.h"

#include <QtCore/QString>

#include <optional>

namespace Tarnvel::Sandbox {

/*!
 * \brief What the service keeps for an application.
 *
 * The changes are kept apart, so that a change costs the same however many settings there are.
 */
struct KeptConfiguration
{
    /*! The configuration, as the scenario or a fault has set it: it determines settings and types.
     */
    Variant given;
    /*! The values that the application has changed; a nested configuration may lack settings. */
    Entries changes;

    /*! \brief The present value at \a path, which has a key; null if none is there. */
    Variant value(const QStringList &path) const;
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
 * \brief Why \a application may not make \a changes to what is \a kept for it.
 *
 * Nothing if it may.
 */
std::optional<Refusal> refuseChange(const Application &application, const KeptConfiguration &kept,
                                    const Entries &changes);

/*!
 * \brief The first part of \a value that \a allowed does not allow; null if there is none.
 *
 * It is an item if the value is a list, otherwise the value itself.
 */
Variant forbiddenValue(const AllowedValues &allowed, const Variant &value);

/*! \brief What \a allowed allows, for people: "25 to 400". */
QString allowedText(const AllowedValues &allowed);

} // namespace Tarnvel::Sandbox
