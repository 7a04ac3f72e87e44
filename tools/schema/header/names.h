// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "setting.h"

namespace Tarnvel::Schema {

// The names of a setting in C++. checkNames() shows whether they can be used.

/*! \brief What reads it: "zoom". */
QString getterName(const Setting &setting);

/*! \brief What sets it: "setZoom". */
QString setterName(const Setting &setting);

/*! \brief The class of an object, or the enumeration of a string: "Network". */
QString typeName(const Setting &setting);

/*! \brief True if the values of a string are an enumeration. */
bool isEnumeration(const Setting &setting);

/*! \brief The enumerators, in the order of the values. */
std::vector<QString> enumeratorNames(const Setting &setting);

/*! \brief Why \a name cannot be that of a class: "it is a keyword"; null if it can. */
QString classNameProblem(const QString &name);

/*! \brief Adds a diagnostic for each setting in \a object that has no name in \a className. */
void checkNames(const Setting &object, const QString &className, Tools::Diagnostics *diagnostics);

} // namespace Tarnvel::Schema
