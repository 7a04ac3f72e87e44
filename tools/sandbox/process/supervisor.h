// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <functional>

namespace Tarnvel::Sandbox {

/*!
 * \brief Runs \a work in a child of this process, the worker, and returns its shellStatus().
 *
 * Both processes are subreapers: they adopt the orphans among their descendants. However \a work
 * ends, the worker killed included, all its descendants are killed. If the supervisor is killed,
 * the worker receives SIGTERM, and kills the descendants itself once \a work has returned.
 *
 * \a work runs with the terminationSignals() blocked. Those that the supervisor receives are passed
 * on to the worker, except typed ones, which it receives from the terminal. The worker is killed if
 * it has not ended ten seconds later.
 *
 * Call this before there is a second thread. It returns in both processes.
 */
int runSupervised(const std::function<int()> &work);

} // namespace Tarnvel::Sandbox
