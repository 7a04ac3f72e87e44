// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "descendants.h"

#include <QtCore/QFile>
#include <QtCore/QString>

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>

namespace Tarnvel::Sandbox {

namespace {

QList<QByteArray> children()
{
    QFile file(QStringLiteral("/proc/thread-self/children"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().simplified().split(' ')
                                          : QList<QByteArray>();
}

} // namespace

Descendants::Descendants()
{
    prctl(PR_SET_CHILD_SUBREAPER, 1);
}

Descendants::~Descendants()
{
    // Orphans are handed to the main thread, which is the one that runs this.
    for (bool found = true; found;) {
        found = false;
        for (const QByteArray &child : children()) {
            const pid_t pid = child.toInt();
            if (pid > 0 && kill(pid, SIGKILL) == 0)
                found = waitpid(pid, nullptr, 0) == pid || found;
        }
    }
}

} // namespace Tarnvel::Sandbox
