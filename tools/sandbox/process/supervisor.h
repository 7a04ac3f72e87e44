// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <functional>

namespace Tarnvel::Sandbox {

class PrivateDirectory;

/*!
 * \brief Runs \a work in a child of this process, the guard, and returns its exit status.
 *
 * The status is that of a shell: 128 and its number added when a signal ended the child. \a work
 * receives a private directory, and returns the status.
 *
 * Each of the two processes puts away what the other leaves behind when it is killed, and a third
 * one the directory when both are killed at once. Once \a work has ended, in whatever way, all its
 * descendants are killed and the directory is removed. When the guard ends first, \a work receives
 * SIGTERM.
 *
 * \a work runs with the terminationSignals() blocked; those that the guard receives are passed on
 * to it, unless they were typed, when it has got them by itself. It is killed if it does not end
 * within ten seconds of the first.
 *
 * Both processes return from this function. Call it before there is a second thread.
 */
int runSupervised(const std::function<int(const PrivateDirectory &)> &work);

} // namespace Tarnvel::Sandbox
