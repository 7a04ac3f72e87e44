// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QByteArray>

#include <functional>

namespace Tarnvel::Testing {

/*!
 * \brief What the process printed on its standard error when \a action ended it by SIGABRT.
 *
 * \a action runs in a child process. A null array means that the child did not abort.
 */
QByteArray abortMessage(const std::function<void()> &action);

} // namespace Tarnvel::Testing
