// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Schema {

/*! \brief What the command line asks for. */
struct CommandLine
{
    /*! The first argument that is not an option. */
    QString command;
    /*! The files after it. */
    QStringList files;
    /*! The long names of the options. */
    QStringList options;
    /*! The name of the class to generate. */
    QString className;
    /*! The application in a scenario: "acme/viewer"; empty for the only one. */
    QString application;
    /*! The file to write; standard output if empty. */
    QString outputFile;
};

/*!
 * \brief Sets \a commandLine from \a arguments, the first of which is the name of the program.
 *
 * Ends the process when they ask for help or for the version.
 */
Tools::Failure parseCommandLine(const QStringList &arguments, CommandLine *commandLine);

/*! \brief The failure of a command that was called in the wrong way. */
Tools::Failure usageFailure(const QString &message);

} // namespace Tarnvel::Schema
