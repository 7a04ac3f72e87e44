// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "termination_signals.h"

#include <glib-unix.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace Tarnvel::Sandbox {

sigset_t terminationSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM})
        sigaddset(&signals, signal);
    // A script's background commands ignore SIGINT without anybody's having asked for it; SIGHUP is
    // ignored on purpose only.
    struct sigaction hangUp = {};
    sigaction(SIGHUP, nullptr, &hangUp);
    if (hangUp.sa_handler != SIG_IGN)
        sigaddset(&signals, SIGHUP);
    return signals;
}

bool isTyped(int signal, int code)
{
    // When its terminal hangs up, the leader of a session is the only one that is told.
    return code == SI_KERNEL && signal != SIGHUP;
}

TerminationSignals::TerminationSignals(Handler handler) : m_handler(std::move(handler))
{
    const sigset_t signals = terminationSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    m_file = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    m_source = g_unix_fd_add(
        m_file, G_IO_IN,
        [](gint, GIOCondition, gpointer target) -> gboolean {
            static_cast<TerminationSignals *>(target)->receive();
            return G_SOURCE_CONTINUE;
        },
        this);
}

TerminationSignals::~TerminationSignals()
{
    g_source_remove(m_source);
    ::close(m_file);
}

void TerminationSignals::receive()
{
    signalfd_siginfo info = {};
    if (::read(m_file, &info, sizeof info) != sizeof info)
        return;
    const int signal = static_cast<int>(info.ssi_signo);
    m_handler(signal, isTyped(signal, info.ssi_code));
}

} // namespace Tarnvel::Sandbox
