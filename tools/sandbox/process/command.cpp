// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command.h"

#include "endpoint.h"
#include "exit_status.h"

#include <QtCore/QFile>
#include <QtCore/QTimer>

#include <glib.h>
#include <sys/prctl.h>

namespace Tarnvel::Sandbox {

SignalState::SignalState()
{
    sigprocmask(SIG_SETMASK, nullptr, &m_blocked);
    sigemptyset(&m_ignored);
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
            sigaddset(&m_ignored, number);
    }
    // A broken pipe must fail the write, not kill us.
    signal(SIGPIPE, SIG_IGN);
    // Where it is ignored, the exit status of a child is lost.
    signal(SIGCHLD, SIG_DFL);
}

void SignalState::restore() const
{
    for (int number = 1; number < NSIG; ++number)
        signal(number, sigismember(&m_ignored, number) == 1 ? SIG_IGN : SIG_DFL);
    sigprocmask(SIG_SETMASK, &m_blocked, nullptr);
}

Tools::Failure Command::start(const QStringList &arguments, const QString &busAddress,
                              SignalState signals, const std::function<void(int status)> &finished)
{
    g_auto(GStrv) vector = g_new0(char *, static_cast<gsize>(arguments.size()) + 1);
    for (int index = 0; index < arguments.size(); ++index)
        vector[index] = g_strdup(QFile::encodeName(arguments.at(index)).constData());
    g_auto(GStrv) environment = g_environ_setenv(g_get_environ(), DBus::busAddressVariable,
                                                 busAddress.toUtf8().constData(), TRUE);
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD
                                                | G_SPAWN_CHILD_INHERITS_STDIN
                                                | G_SPAWN_LEAVE_DESCRIPTORS_OPEN);
    const auto prepareChild = [](gpointer state) {
        static_cast<const SignalState *>(state)->restore();
        prctl(PR_SET_PDEATHSIG, SIGKILL);
    };
    g_autoptr(GError) error = nullptr;
    if (!g_spawn_async(nullptr, vector, environment, flags, prepareChild, &signals, &m_processId,
                       &error)) {
        const bool isMissing = g_error_matches(error, G_SPAWN_ERROR, G_SPAWN_ERROR_NOENT);
        return {isMissing ? CommandNotFound : CommandNotExecutable,
                QString::fromUtf8(error->message)};
    }
    m_finished = finished;
    const auto handleExit = [](GPid, gint status, gpointer command) {
        auto *const self = static_cast<Command *>(command);
        self->m_processId = 0;
        self->m_finished(shellStatus(status));
    };
    g_child_watch_add(m_processId, handleExit, this);
    return {};
}

void Command::end(int signal, bool isTyped)
{
    if (m_processId == 0)
        return;
    if (!isTyped)
        kill(m_processId, signal);
    constexpr int timeoutMs = 5000;
    QTimer::singleShot(timeoutMs, &m_context, [this] {
        if (m_processId != 0)
            kill(m_processId, SIGKILL);
    });
}

} // namespace Tarnvel::Sandbox
