// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Testing {

/*! \brief What came of one use of the library, or should have. */
struct Outcome
{
    /*! The value as a text with all its types. */
    QString value;
    /*! The warnings, in their order. */
    QStringList warnings;

    bool operator==(const Outcome &other) const;
};

/*! \brief Ends the process with \a fault and what was given, \a input, printed. */
[[noreturn]] void fail(const QString &fault, const QString &input);

/*! \brief Does so, with both printed, because \a got is another than \a expected. */
[[noreturn]] void failWith(const Outcome &got, const Outcome &expected, const QString &input);

} // namespace Tarnvel::Testing
