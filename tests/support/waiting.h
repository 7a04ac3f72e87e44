// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtTest/QTest>

namespace Tarnvel::Testing {

/*! \brief The limit of every wait for an event, which no busy machine reaches. */
constexpr int waitTimeoutMs = 60000;

/*! \brief QTRY_COMPARE() and QTRY_VERIFY() with this limit. */
#define TRY_COMPARE(actual, expected)                                                              \
    QTRY_COMPARE_WITH_TIMEOUT(actual, expected, Tarnvel::Testing::waitTimeoutMs)
#define TRY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, Tarnvel::Testing::waitTimeoutMs)

} // namespace Tarnvel::Testing
