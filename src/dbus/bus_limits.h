// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

namespace Tarnvel::DBus {

/*! \brief The maximum nesting of containers in a message. */
constexpr int maximumContainerDepth = 64;

/*! \brief The nesting that every bus carries: dbus-broker carries one less than dbus-daemon. */
constexpr int portableContainerDepth = 63;

/*! \brief The containers of a configuration around a value: an array, an entry and a variant. */
constexpr int containersPerLevel = 3;

/*! \brief The maximum length of a signature. */
constexpr int maximumSignatureSize = 255;

/*! \brief The maximum nesting of arrays, and that of structures, in a signature. */
constexpr int maximumArrayDepth = 32;
constexpr int maximumStructureDepth = 32;

/*! \brief The maximum size of a message on a system bus, by default, in bytes. */
constexpr int maximumMessageSize = 32 * 1024 * 1024;

/*! \brief The maximum length of the path of a socket, in bytes: libdbus allows less than the
 * kernel. */
constexpr int maximumSocketPathSize = 99;

/*! \brief The maximum number of pending calls of a connection to dbus-daemon, by default. */
constexpr int maximumPendingCalls = 128;

} // namespace Tarnvel::DBus
