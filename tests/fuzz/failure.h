// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QStringList>

#include <cstdio>
#include <cstdlib>

namespace Tarnvel::Testing {

/*! \brief Ends the process: \a input led to \a actual, a value and warnings, not to \a expected. */
[[noreturn]] inline void fail(const QString &input, const QStringList &actual,
                              const QStringList &expected)
{
    std::fprintf(stderr, "\nFOUND: %s\n  actual: %s\n  expected: %s\n", qUtf8Printable(input),
                 qUtf8Printable(actual.join(u'\n')), qUtf8Printable(expected.join(u'\n')));
    std::abort();
}

} // namespace Tarnvel::Testing
