// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "setting.h"

#include <QtCore/QStringList>

namespace Tarnvel::Schema {

/*! \brief \a text as a part of a comment: nothing in it can end the comment or is a command. */
QString escapedForComment(const QString &text);

/*! \brief The paragraphs that describe a setting, the first of them in brief. */
QStringList describe(const Setting &setting);

} // namespace Tarnvel::Schema
