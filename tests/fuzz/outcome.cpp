// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "outcome.h"

#include <cstdio>
#include <cstdlib>

namespace Tarnvel::Testing {

namespace {

QString textOf(const Outcome &outcome)
{
    return QLatin1String("\n    value: ") + outcome.value + QLatin1String("\n    warnings: ")
        + outcome.warnings.join(QLatin1String("\n              "));
}

} // namespace

bool Outcome::operator==(const Outcome &other) const
{
    return value == other.value && warnings == other.warnings;
}

void fail(const QString &fault, const QString &input)
{
    std::fprintf(stderr, "\nFOUND: %s\n  given: %s\n", qUtf8Printable(fault),
                 qUtf8Printable(input));
    std::fflush(stderr);
    std::abort();
}

void failWith(const Outcome &got, const Outcome &expected, const QString &input)
{
    fail(QLatin1String("the outcome is another than expected\n  expected:") + textOf(expected)
             + QLatin1String("\n  got:") + textOf(got),
         input);
}

} // namespace Tarnvel::Testing
