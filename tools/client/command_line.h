// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "usage_failure.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Client {

/*! \brief What the user asks for. */
struct CommandLine
{
    QString organization;
    QString application;
    /*! The first word that is no option. */
    QString command;
    /*! The words behind it. */
    QStringList arguments;
    /*! True if types are asked for in place of values. */
    bool showsTypes = false;
    /*! How long to wait for each answer. */
    int timeoutMs = 25000;
};

/*!
 * \brief The \a count words of \a words, the program's name first, as texts.
 *
 * They are UTF-8 whatever the locale says. A failure if one of them is not.
 */
Failure decodeWords(int count, const char *const *words, QStringList *decoded);

/*!
 * \brief Sets \a commandLine to what \a words, the program's name first, ask for.
 *
 * Ends the process when they ask for help or for the version. The command's own arguments are
 * checked by the command.
 */
Failure parseCommandLine(const QStringList &words, CommandLine *commandLine);

} // namespace Tarnvel::Client
