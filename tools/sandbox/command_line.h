// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Sandbox {

/*! \brief What the command line asks for. */
struct Options
{
    /*! The files to check; if there is one, nothing else is done. */
    QStringList checkFiles;
    /*! True if the check also reports slips. */
    bool isStrict = false;
    /*! True if the check prints JSON. */
    bool printsJson = false;
    /*! True if the kinds of fault are to be listed, and nothing else done. */
    bool listsFaults = false;
    /*! The scenario; none if empty. */
    QString scenarioFile;
    /*! Where to record the events; nowhere if empty. */
    QString logFile;
    /*! The calls to expect; none if empty. */
    QString expectationFile;
    /*! The command and its arguments; if empty, the sandbox runs until it is terminated. */
    QStringList command;
};

/*!
 * \brief Sets \a options from \a arguments, the first of which is the name of the program.
 *
 * Ends the process when they ask for help or for the version.
 */
Tools::Failure parseCommandLine(const QStringList &arguments, Options *options);

} // namespace Tarnvel::Sandbox
