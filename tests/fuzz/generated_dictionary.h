// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "fuzzer_input.h"

#include <QtCore/QString>

#include <gio/gio.h>
#include <memory>

namespace Tarnvel::Testing {

/*! \brief One valid argument of a D-Bus message. */
struct Body
{
    std::shared_ptr<GVariant> argument;
    /*! True if there are handles in it. All of them refer to the first open file. */
    bool hasHandles;
};

/*!
 * \brief Makes of \a input a dictionary a{sv} with values of any kind that D-Bus admits.
 *
 * Each entry is a key, which ends with a line feed, the signature of its value, and the value: of
 * each number its bytes, of each text a line, of each array the number of its elements modulo 16
 * and the elements. A byte where no code of a type can be stands for one that can.
 */
Body readBody(Input &input);

/*! \brief The \a body in the text form of GVariant. */
QString textOf(const Body &body);

} // namespace Tarnvel::Testing
