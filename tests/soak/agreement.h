// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

/*!
 * \file
 * \brief What the two programs of the soak have agreed on.
 */

namespace Tarnvel::Soak {

/*!
 * \brief In a change of configuration: this is an order to the service, and which.
 *
 * An order is followed rather than answered in some random manner.
 */
constexpr char orderKey[] = "order";
/*! \brief The order to announce changes and then accept the change: so the answer comes last. */
constexpr char announceOrder[] = "announce";
/*! \brief In an order to announce: how many changes. */
constexpr char countKey[] = "count";
/*! \brief In an order to announce: the object path at which they happen. */
constexpr char pathKey[] = "path";
/*! \brief The order to die on the spot. */
constexpr char dieOrder[] = "die";

/*! \brief In each dictionary but an empty one: how many entries a Configuration keeps of it. */
constexpr char entriesKey[] = "entries";
/*! \brief The nested dictionary, if there is one. */
constexpr char innerKey[] = "inner";

/*! \brief Where clients call that can stand a service that answers too late or not at all. */
constexpr char impatientPath[] = "/acme_2eimpatient";
/*! \brief Where all others call. */
constexpr char patientPath[] = "/acme_2epatient";
/*! \brief How long an impatient client waits for an answer. */
constexpr int patienceMs = 100;

/*! \brief The line with which the service tells its supervisor that it owns its name. */
constexpr char readyLine[] = "ready";
/*! \brief Begins the line in which the service tells, at its end, what it has answered how often.
 */
constexpr char tallyWord[] = "tally";
/*! \brief The exit status of a service that was ordered to die. */
constexpr int diedStatus = 42;

} // namespace Tarnvel::Soak
