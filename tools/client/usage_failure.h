// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QString>

namespace Tarnvel::Client {

/*!
 * \brief The exit statuses, beside those from 1 to 8: these are the codes of Error.
 *
 * The manual page explains them.
 */
enum Status {
    /*! All went well. */
    Success = 0,
    /*! A mistake on the command line. */
    Usage = 64,
    /*! The configuration has no value at the path. */
    NoSuchPath = 66,
    /*! No bus, no service, or no answer in time. */
    Unavailable = 69,
    /*! The results could not be written. */
    Unwritten = 74,
};

using Tools::Failure;

/*! \brief A mistake on the command line. */
inline Failure usageFailure(const QString &text)
{
    return {Usage, text, QStringLiteral("see managed-configuration --help")};
}

} // namespace Tarnvel::Client
