// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

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

/*! \brief What ends the program: true if something went wrong. */
struct Failure
{
    /*! The exit status. */
    int status = Success;
    /*! What went wrong and, if somebody refused, who. */
    QString text;
    /*! What to do about it. */
    QString hint;

    /*! \brief True when there \e is a failure. */
    explicit operator bool() const
    {
        return status != Success;
    }
};

/*! \brief A mistake on the command line. */
inline Failure usageFailure(const QString &text)
{
    return {Usage, text, QStringLiteral("see managed-configuration --help")};
}

} // namespace Tarnvel::Client
