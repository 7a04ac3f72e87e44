// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <cstdio>
#include <ctime>
#include <valgrind/callgrind.h>

namespace Tarnvel::Benchmarks {

/*!
 * \brief Runs \a action some \a times, as \a what.
 *
 * Under callgrind, started with --instr-atstart=no, this writes a dump named "<what>/<times>".
 * Without, it prints the name and the milliseconds of processor time for one time.
 */
template<typename Action>
void measure(const QString &what, int times, Action action)
{
    // Initialization at the first use does not count.
    action();
    const QByteArray name = QStringLiteral("%1/%2").arg(what).arg(times).toUtf8();
    const std::clock_t start = std::clock();
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    for (int time = 0; time < times; ++time)
        action();
    CALLGRIND_DUMP_STATS_AT(name.constData());
    CALLGRIND_STOP_INSTRUMENTATION;
    if (!RUNNING_ON_VALGRIND)
        std::printf("%s %.3f\n", qUtf8Printable(what),
                    1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / times);
}

} // namespace Tarnvel::Benchmarks
