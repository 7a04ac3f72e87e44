// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "output.h"

#include "values/json.h"

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

void printDifference(const Difference &difference)
{
    const QString &path = difference.path;
    const QString then = compactText(toJson(difference.before));
    const QString now = compactText(toJson(difference.after));
    if (!difference.before.isValid())
        print(QStringLiteral("added: %1 = %2").arg(path, now), Tools::Style::Good);
    else if (!difference.after.isValid())
        print(QStringLiteral("removed: %1 (was %2)").arg(path, then), Tools::Style::Bad);
    else
        print(QStringLiteral("changed: %1 = %2 (was %3)").arg(path, now, then), Tools::Style::News);
}

void printNote(const QString &text, Tools::Style style)
{
    Tools::printLine(
        stderr, QStringLiteral("managed-configuration: ") + Tools::shownOnOneLine(text), style);
}

void printUnseenSettings(const UnseenSettings &settings)
{
    if (!settings.isEmpty())
        printNote(QStringLiteral("applications do not see these settings: ")
                  + unseenSettingsText(settings));
}

void report(const Tools::Failure &failure)
{
    if (failure.message.isEmpty())
        return;
    printNote(failure.text(), Tools::Style::Bad);
    if (!failure.hint.isEmpty())
        printNote(QStringLiteral("what to do: ") + failure.hint);
}

} // namespace Tarnvel::Client
