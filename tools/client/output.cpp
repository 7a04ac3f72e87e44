// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "output.h"

#include <QtCore/QCoreApplication>

#include <cerrno>
#include <cstdlib>

namespace Tarnvel::Client {

void print(const QString &line, Tools::Style style)
{
    errno = 0;
    Tools::printLine(stdout, line, style);
    if (!std::ferror(stdout))
        return;
    if (errno == EPIPE)
        std::exit(EX_OK);
    std::exit(report(
        {EX_IOERR,
         QStringLiteral("the standard output takes nothing more: %1").arg(qt_error_string(errno)),
         QStringLiteral("make room, or direct the output elsewhere")}));
}

void printNote(const QString &text, Tools::Style style)
{
    Tools::printLine(
        stderr, QStringLiteral("managed-configuration: ") + Tools::shownOnOneLine(text), style);
}

int report(const Failure &failure)
{
    printNote(failure.text(), Tools::Style::Bad);
    printNote(QStringLiteral("what to do: ") + failure.hint);
    return failure.status;
}

void finish(const Failure &failure)
{
    if (failure)
        report(failure);
    QCoreApplication::exit(failure.status);
}

} // namespace Tarnvel::Client
