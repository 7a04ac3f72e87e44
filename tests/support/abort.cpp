// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "abort.h"

#include <QtCore/qlogging.h>

#include <csignal>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tarnvel::Testing {

namespace {

#ifdef COVERAGE
constexpr int abortedStatus = 86;

// Only a normal exit writes the coverage counters.
void prepareAbort()
{
    std::signal(SIGABRT, [](int) { std::exit(abortedStatus); });
}

bool isAborted(int status)
{
    return WIFEXITED(status) && WEXITSTATUS(status) == abortedStatus;
}
#else
void prepareAbort()
{
    constexpr rlimit noCoreFile {};
    setrlimit(RLIMIT_CORE, &noCoreFile);
    std::signal(SIGABRT, SIG_DFL);
}

bool isAborted(int status)
{
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
}
#endif

[[noreturn]] void runInChild(const std::function<void()> &action, int errorPipe)
{
    dup2(errorPipe, STDERR_FILENO);
    qInstallMessageHandler(nullptr);
    prepareAbort();
    action();
    _exit(EXIT_SUCCESS);
}

QByteArray readAll(int pipe)
{
    QByteArray text("");
    char buffer[512];
    for (ssize_t size = 0; (size = read(pipe, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<int>(size));
    return text;
}

} // namespace

QByteArray abortMessage(const std::function<void()> &action)
{
    int ends[2];
    if (pipe(ends) != 0)
        return {};
    const pid_t child = fork();
    if (child == 0)
        runInChild(action, ends[1]);
    close(ends[1]);
    const QByteArray text = readAll(ends[0]);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return isAborted(status) ? text : QByteArray();
}

} // namespace Tarnvel::Testing
