// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <csignal>

namespace Tarnvel::Sandbox {

/*!
 * \brief The signals that this process blocks or ignores, to be handed on to its children.
 *
 * Of those ignored, only the ones are kept that this program, Qt or GLib alter for their own use.
 */
class SignalState
{
public:
    /*! \brief The state at this moment. */
    SignalState();

    /*! \brief Brings the state back, in a child between fork and exec. */
    void restore() const;

private:
    sigset_t m_blocked;
    sighandler_t m_childHandler;
    sighandler_t m_pipeHandler;
};

} // namespace Tarnvel::Sandbox
