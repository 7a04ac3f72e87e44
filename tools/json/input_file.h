// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Tarnvel::Tools {

/*! \brief The name that stands for standard input. */
constexpr char standardInputName[] = "-";

/*!
 * \brief Sets \a text to the content of the file \a fileName, without its byte-order mark.
 *
 * It is a regular file, or standard input, which is read to its end: until then, a termination
 * signal ends the process. Never waits for the writer of a FIFO. \a status is that of a failure.
 */
Failure readInputFile(const QString &fileName, QByteArray *text, int status);

} // namespace Tarnvel::Tools
