// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Client {

/*! \brief What the user asks for. */
struct CommandLine
{
    /*! These may only be empty if the file is a schema. */
    QString organization;
    QString application;
    /*! The first argument that is not an option. */
    QString command;
    /*! The arguments after it. */
    QStringList arguments;
    /*! True if types are asked for in place of values. */
    bool showsTypes = false;
    /*! True if strings and lists are asked for as plain text. */
    bool isRaw = false;
    /*! True if differences are asked for as JSON. */
    bool isJson = false;
    /*! True if a change may remove what it does not name. */
    bool isForced = false;
    /*! True if a change is not to be sent. */
    bool isDryRun = false;
    /*! The file with the values to set, or with the schema; empty if there is none. */
    QString file;
    /*! How long to wait for each reply. */
    int timeoutMs = 0;
};

/*!
 * \brief Sets \a commandLine from the \a count \a arguments, the first of which is the program.
 *
 * They are UTF-8 in every locale. Ends the process if they ask for the help or the version. The
 * command checks its own arguments.
 */
Tools::Failure parseCommandLine(int count, const char *const *arguments, CommandLine *commandLine);

/*! \brief Fails if organization and application do not make a valid object path. */
Tools::Failure validateIdentity(const CommandLine &commandLine);

} // namespace Tarnvel::Client
