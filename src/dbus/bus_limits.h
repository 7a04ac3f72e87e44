// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

namespace Tarnvel::DBus {

/*! \brief How many containers a message holds inside one another at most. */
constexpr int maximumContainerDepth = 64;

/*! \brief How many of them every bus carries: dbus-broker carries one less than dbus-daemon. */
constexpr int portableContainerDepth = 63;

/*! \brief What lies between a configuration and a value in it: an array, an entry and a variant. */
constexpr int containersPerLevel = 3;

/*! \brief The characters of the longest signature. */
constexpr int maximumSignatureSize = 255;

/*! \brief How many arrays, and how many structures, a signature holds inside one another at most.
 */
constexpr int maximumArrayDepth = 32;
constexpr int maximumStructureDepth = 32;

/*! \brief The bytes of the largest message that a system bus carries by default. */
constexpr int maximumMessageSize = 32 * 1024 * 1024;

/*! \brief The calls of one connection that dbus-daemon lets be pending by default. */
constexpr int maximumPendingCalls = 128;

} // namespace Tarnvel::DBus
