// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "subreaper.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFile>
#include <QtCore/QString>

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tarnvel::Sandbox {

namespace {

constexpr int endTimeoutMs = 5000;
constexpr int pollIntervalUs = 1000;

QList<QByteArray> children()
{
    QFile file(QStringLiteral("/proc/thread-self/children"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().simplified().split(' ')
                                          : QList<QByteArray>();
}

// False if none is left that this process may kill.
bool killChildren()
{
    bool isAnyLeft = false;
    const QList<QByteArray> pids = children();
    for (const QByteArray &child : pids) {
        const pid_t pid = child.toInt();
        if (pid > 0 && kill(pid, SIGKILL) == 0) {
            waitpid(pid, nullptr, WNOHANG);
            // Also if this one is gone now: it may have left children of its own.
            isAnyLeft = true;
        }
    }
    return isAnyLeft;
}

} // namespace

Subreaper::Subreaper()
{
    prctl(PR_SET_CHILD_SUBREAPER, 1);
}

Subreaper::~Subreaper()
{
    // Orphans are handed to the main thread, which is the one that runs this.
    const QDeadlineTimer deadline(endTimeoutMs);
    while (killChildren() && !deadline.hasExpired())
        usleep(pollIntervalUs);
}

} // namespace Tarnvel::Sandbox
