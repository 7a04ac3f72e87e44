// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "supervisor.h"

#include "exit_status.h"
#include "termination_signals.h"

#include <QtCore/QDeadlineTimer>

#include <cstdio>
#include <fstream>
#include <sys/prctl.h>
#include <unistd.h>

namespace Tarnvel::Sandbox {

namespace {

// More than the worker allows the command.
constexpr unsigned int workerTimeoutSeconds = 10;
// A debugger can delay the end of a process that is killed.
constexpr int killTimeoutMs = 5000;
constexpr int pollIntervalUs = 1000;

// False if there is none that this process may kill.
bool killChildren()
{
    bool isAnyKilled = false;
    std::ifstream children("/proc/thread-self/children");
    for (pid_t child = 0; children >> child; waitpid(child, nullptr, WNOHANG))
        isAnyKilled |= kill(child, SIGKILL) == 0;
    return isAnyKilled;
}

// Until there is none left: the orphans of those killed become children of this process.
void killDescendants()
{
    const QDeadlineTimer deadline(killTimeoutMs);
    while (killChildren() && !deadline.hasExpired())
        usleep(pollIntervalUs);
}

int waitForEnd(pid_t worker)
{
    sigset_t signals = terminationSignals();
    sigaddset(&signals, SIGCHLD);
    sigaddset(&signals, SIGALRM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    int status = 0;
    while (waitpid(worker, &status, WNOHANG) != worker) {
        siginfo_t info = {};
        const int signal = sigwaitinfo(&signals, &info);
        if (signal == SIGALRM) {
            kill(worker, SIGKILL);
        } else if (signal > 0 && signal != SIGCHLD) {
            if (!isTyped(signal, info.si_code))
                kill(worker, signal);
            alarm(workerTimeoutSeconds);
        }
    }
    return shellStatus(status);
}

} // namespace

int runSupervised(const std::function<int()> &work)
{
    const sigset_t signals = terminationSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    const pid_t supervisor = getpid();
    const pid_t worker = fork();
    if (worker == -1) {
        std::perror("fork");
        return SandboxFailed;
    }
    if (worker == 0) {
        // A child does not inherit it.
        prctl(PR_SET_CHILD_SUBREAPER, 1);
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        // The supervisor may have died before.
        if (getppid() != supervisor)
            raise(SIGTERM);
    }
    const int status = worker == 0 ? work() : waitForEnd(worker);
    killDescendants();
    return status;
}

} // namespace Tarnvel::Sandbox
