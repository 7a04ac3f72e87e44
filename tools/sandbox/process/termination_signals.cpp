// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "termination_signals.h"

#include <sys/signalfd.h>
#include <unistd.h>

namespace Tarnvel::Sandbox {

sigset_t terminationSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM})
        sigaddset(&signals, signal);
    // A shell without job control ignores SIGINT and SIGQUIT for its background commands; SIGHUP is
    // ignored only where the user asked for it.
    struct sigaction hangUp = {};
    sigaction(SIGHUP, nullptr, &hangUp);
    if (hangUp.sa_handler != SIG_IGN)
        sigaddset(&signals, SIGHUP);
    return signals;
}

bool isTyped(int signal, int code)
{
    // When a terminal hangs up, only the session leader is sent SIGHUP.
    return code == SI_KERNEL && signal != SIGHUP;
}

TerminationSignals::TerminationSignals(const std::function<void(int, bool)> &handler)
    : m_signals(terminationSignals()),
      m_file(signalfd(-1, &m_signals, SFD_CLOEXEC | SFD_NONBLOCK)),
      m_notifier(m_file, QSocketNotifier::Read)
{
    sigprocmask(SIG_BLOCK, &m_signals, nullptr);
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this, handler] {
        signalfd_siginfo info = {};
        if (read(m_file, &info, sizeof info) != sizeof info)
            return;
        const int signal = static_cast<int>(info.ssi_signo);
        handler(signal, isTyped(signal, info.ssi_code));
    });
}

TerminationSignals::~TerminationSignals()
{
    m_notifier.setEnabled(false);
    close(m_file);
}

} // namespace Tarnvel::Sandbox
