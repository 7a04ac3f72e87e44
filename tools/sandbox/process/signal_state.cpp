// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "signal_state.h"

namespace Tarnvel::Sandbox {

namespace {

sighandler_t handlerOf(int signal)
{
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

} // namespace

SignalState::SignalState() : m_childHandler(handlerOf(SIGCHLD)), m_pipeHandler(handlerOf(SIGPIPE))
{
    sigprocmask(SIG_SETMASK, nullptr, &m_blocked);
}

void SignalState::restore() const
{
    signal(SIGCHLD, m_childHandler);
    signal(SIGPIPE, m_pipeHandler);
    sigprocmask(SIG_SETMASK, &m_blocked, nullptr);
}

} // namespace Tarnvel::Sandbox
