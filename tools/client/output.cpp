// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "output.h"

#include <cerrno>
#include <cstdlib>
#include <sysexits.h>

namespace Tarnvel::Client {

void print(const QString &line, Tools::Style style)
{
    printText(Tools::shownOnOneLine(line), style);
}

void printText(const QString &text, Tools::Style style)
{
    errno = 0;
    Tools::printLine(stdout, text, style);
    if (!std::ferror(stdout))
        return;
    if (errno == EPIPE)
        std::quick_exit(EX_OK);
    report({EX_IOERR,
            QStringLiteral("cannot write to standard output: %1").arg(qt_error_string(errno)),
            QStringLiteral("free some space, or redirect the output")});
    std::quick_exit(EX_IOERR);
}

void printNote(const QString &text, Tools::Style style)
{
    Tools::printLine(
        stderr, QStringLiteral("managed-configuration: ") + Tools::shownOnOneLine(text), style);
}

void printUnseenSettings(const UnseenSettings &settings)
{
    if (!settings.isEmpty())
        printNote(QStringLiteral("applications do not see ") + unseenSettingsText(settings));
}

void report(const Tools::Failure &failure)
{
    if (failure.message.isEmpty())
        return;
    printNote(failure.text(), Tools::Style::Bad);
    printNote(QStringLiteral("what to do: ") + failure.hint);
}

} // namespace Tarnvel::Client
