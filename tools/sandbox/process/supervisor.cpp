// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "supervisor.h"

#include "directory_reaper.h"
#include "private_directory.h"
#include "subreaper.h"
#include "termination_signals.h"

#include <QtCore/QDeadlineTimer>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tarnvel::Sandbox {

namespace {

// More than the sandbox itself gives to its command.
constexpr int endTimeoutMs = 10000;
constexpr int signalStatusBase = 128;

int shellStatus(int status)
{
    return WIFSIGNALED(status) ? signalStatusBase + WTERMSIG(status) : WEXITSTATUS(status);
}

// 0 if none of them comes in time.
int waitForSignal(const sigset_t &signals, const QDeadlineTimer &deadline, siginfo_t *info)
{
    if (deadline.isForever())
        return sigwaitinfo(&signals, info);
    const qint64 left = deadline.remainingTime();
    const timespec timeout = {static_cast<time_t>(left / 1000),
                              static_cast<long>(left % 1000 * 1000000)};
    const int signal = sigtimedwait(&signals, info, &timeout);
    return signal == -1 && errno == EAGAIN ? 0 : signal;
}

int waitForEnd(pid_t worker)
{
    sigset_t signals = terminationSignals();
    sigaddset(&signals, SIGCHLD);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    QDeadlineTimer deadline(QDeadlineTimer::Forever);
    int status = 0;
    while (waitpid(worker, &status, WNOHANG) != worker) {
        siginfo_t info = {};
        const int signal = waitForSignal(signals, deadline, &info);
        if (signal == 0) {
            kill(worker, SIGKILL);
            deadline = QDeadlineTimer(QDeadlineTimer::Forever);
        } else if (signal > 0 && signal != SIGCHLD) {
            if (!isTyped(signal, info.si_code))
                kill(worker, signal);
            if (deadline.isForever())
                deadline.setRemainingTime(endTimeoutMs);
        }
    }
    return shellStatus(status);
}

void endWith(pid_t guard)
{
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    // It may be gone already.
    if (getppid() != guard)
        raise(SIGTERM);
}

} // namespace

int runSupervised(const std::function<int(const PrivateDirectory &)> &work)
{
    const sigset_t signals = terminationSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    // Where it is ignored, nobody learns how a child has ended.
    signal(SIGCHLD, SIG_DFL);

    // Each process has these and clears away after itself, the guard after both, and the directory
    // reaper if both are killed at once. It comes before the descendants, lest it become one of
    // them.
    const PrivateDirectory directory;
    const DirectoryReaper directoryReaper(directory.path());
    const Subreaper descendants;
    const pid_t guard = getpid();
    const pid_t worker = fork();
    if (worker == -1) {
        std::perror("fork");
        return EXIT_FAILURE;
    }
    if (worker != 0)
        return waitForEnd(worker);
    endWith(guard);
    // The guard does not share with its child that it takes orphans in.
    const Subreaper ownSubreaper;
    return work(directory);
}

} // namespace Tarnvel::Sandbox
