// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Tools {

/*! \brief "did you mean ...?" with the one of \a known that \a text may be a slip of; or empty. */
QString similarTextHint(const QString &text, const QStringList &known);

} // namespace Tarnvel::Tools
