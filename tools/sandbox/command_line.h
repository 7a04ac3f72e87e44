// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Sandbox {

/*! \brief The exit status for a mistake on the command line or in a file. */
constexpr int usageStatus = 2;
/*! \brief The exit status of a command that has succeeded while an expected call has not come. */
constexpr int expectationStatus = 124;
/*! \brief The exit status when the bus or the service does not start. */
constexpr int busStatus = 125;
/*! \brief The exit status when the command does not start. */
constexpr int commandStatus = 127;

/*! \brief What the command line asks for. */
struct Options
{
    /*! The files to check; if there is one, nothing else is done. */
    QStringList checkFiles;
    /*! True if the kinds of fault are to be listed, and nothing else done. */
    bool listsFaults = false;
    /*! The scenario; none if empty. */
    QString scenarioFile;
    /*! Where to record the events; nowhere if empty. */
    QString logFile;
    /*! The calls to be expected; none if empty. */
    QString expectationFile;
    /*! The command and its arguments; if empty, the sandbox stays until it is told to end. */
    QStringList command;
};

/*!
 * \brief The options in \a arguments.
 *
 * Ends the process when help or the version is asked for, and when there is a mistake.
 */
Options parseCommandLine(const QStringList &arguments);

} // namespace Tarnvel::Sandbox
