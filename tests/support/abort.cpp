// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "abort.h"

#include <QtCore/qlogging.h>

#include <csignal>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace Tarnvel::Testing {

namespace {

constexpr int abortedStatus = 86;

[[noreturn]] void runInChild(const std::function<void()> &action, int errorChannel)
{
    dup2(errorChannel, STDERR_FILENO);
    qInstallMessageHandler(nullptr);
    // An ordinary exit in place of the default action lets the coverage counters be written.
    std::signal(SIGABRT, [](int) { std::exit(abortedStatus); });
    action();
    _exit(EXIT_SUCCESS);
}

QByteArray readAll(int channel)
{
    QByteArray text("");
    char buffer[512];
    for (ssize_t size = 0; (size = read(channel, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<int>(size));
    return text;
}

} // namespace

QByteArray abortMessage(const std::function<void()> &action)
{
    int channel[2];
    if (pipe(channel) != 0)
        return {};
    const pid_t child = fork();
    if (child == 0)
        runInChild(action, channel[1]);
    close(channel[1]);
    const QByteArray text = readAll(channel[0]);
    close(channel[0]);
    int status = 0;
    waitpid(child, &status, 0);
    const bool isAborted = WIFEXITED(status) && WEXITSTATUS(status) == abortedStatus;
    return isAborted ? text : QByteArray();
}

} // namespace Tarnvel::Testing
