// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "setting.h"

#include <QtCore/QStringList>
#include <QtCore/QVector>

namespace Tarnvel::Schema {

/*! \brief What readers of documents want to know about the values of a setting. */
struct Fact
{
    /*! "Allowed values". */
    const char *name;
    QStringList values;
    /*! True if the values are JSON or a pattern. */
    bool isCode;
};

/*! \brief The facts about \a setting; none about an object. */
QVector<Fact> factsOf(const Setting &setting);

} // namespace Tarnvel::Schema
