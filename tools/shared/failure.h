// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <cstdlib>

namespace Tarnvel::Tools {

/*! \brief Why a tool cannot do what it was asked; true if there is a failure. */
struct Failure
{
    /*! The exit status of a program that ends with this failure. */
    int status = EXIT_SUCCESS;
    /*! What went wrong. */
    QString message = {};
    /*! What to do about it; may be empty. */
    QString hint = {};
    /*! Where it went wrong: "scenario.json:3:14", or a file's name; may be empty. */
    QString location = {};

    /*! \brief True when there \e is a failure. */
    explicit operator bool() const
    {
        return status != EXIT_SUCCESS;
    }

    /*! \brief The location, if there is one, and the message: "scenario.json:3:14: not a list". */
    QString text() const
    {
        return location.isEmpty() ? message : location + QLatin1String(": ") + message;
    }
};

} // namespace Tarnvel::Tools
