// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "fuzzer_input.h"

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVariant>
#include <QtCore/QVector>

namespace Tarnvel::Testing {

/*! \brief A value of a configuration, or a configuration, in a form independent of the library. */
struct ValueTree
{
    /*! Unsupported: of a type that no configuration stores, or invalid. */
    enum Kind { Configuration, List, Scalar, Unsupported };

    Kind kind = Configuration;
    /*! The entries of a configuration. */
    QMap<QString, ValueTree> entries;
    /*! The items of a list. */
    QVector<ValueTree> items;
    /*! Anything but a configuration, as a configuration holds it. */
    QVariant value;
};

/*!
 * \brief Generates a configuration from \a input.
 *
 * Each entry is a key, which ends with a line feed, a letter for the type of its value, and the
 * value. A byte that is no such letter selects one. '}' ends a nested configuration.
 */
ValueTree generateConfiguration(FuzzerInput &input);

/*! \brief The value as a configuration holds it. */
QVariant toVariant(const ValueTree &tree);

} // namespace Tarnvel::Testing
