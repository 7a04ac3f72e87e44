// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "fuzzer_input.h"

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVariant>

namespace Tarnvel::Testing {

/*!
 * \brief A value of a configuration, in a form that shares nothing with the library's.
 *
 * Configurations themselves are values too.
 */
struct ValueTree
{
    enum Kind {
        Configuration,
        /*! One of the four kinds of list that a configuration stores. */
        List,
        /*! Int, bool or string. */
        Scalar,
        /*! Of a type that no configuration stores, or invalid. */
        Refused,
    };

    Kind kind = Configuration;
    /*! The entries of a configuration. */
    QMap<QString, ValueTree> entries;
    /*! The items of a list. */
    QVariantList items;
    /*! All but a configuration as a configuration holds it. */
    QVariant value;
};

/*!
 * \brief Makes of \a input a configuration.
 *
 * Each entry is a key, which ends with a line feed, a letter for the kind of its value, and the
 * value. A byte that is no such letter stands for one. '}' ends a nested configuration.
 */
ValueTree readConfiguration(Input &input);

/*! \brief The value as a configuration holds it. */
QVariant toVariant(const ValueTree &tree);

} // namespace Tarnvel::Testing
