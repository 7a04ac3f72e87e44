// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "file_watch.h"

#include "exit_status.h"

#include <QtCore/QFile>

#include <algorithm>
#include <deque>
#include <unistd.h>
#include <utility>

namespace Tarnvel::Sandbox {

namespace {

// As many as the kernel follows.
constexpr int maximumLinks = 40;

// Longer than a program takes between two steps of saving a file.
constexpr int settlingTimeMs = 100;

// The symbolic links on the way to the file, and the file itself.
std::vector<std::filesystem::path> pathsTo(const std::filesystem::path &fileName)
{
    std::error_code error;
    std::vector<std::filesystem::path> paths;
    std::deque<std::filesystem::path> steps(fileName.begin(), fileName.end());
    std::filesystem::path path;
    while (!steps.empty()) {
        const std::filesystem::path step = steps.front();
        steps.pop_front();
        if (step == "..")
            path = path.parent_path();
        if (step.empty() || step == "." || step == "..")
            continue;
        const std::filesystem::path next = path / step;
        const std::filesystem::path target = std::filesystem::read_symlink(next, error);
        if (error || paths.size() == maximumLinks) {
            path = next;
            continue;
        }
        paths.push_back(next);
        steps.insert(steps.begin(), target.begin(), target.end());
    }
    paths.push_back(path);
    return paths;
}

} // namespace

FileWatch::FileWatch(const QString &fileName, const std::function<void()> &handler)
    : m_fileName(std::filesystem::absolute(QFile::encodeName(fileName).constData())),
      m_wasReadable(isReadable())
{
    m_settling.setSingleShot(true);
    m_settling.setInterval(settlingTimeMs);
    QObject::connect(&m_settling, &QTimer::timeout, &m_settling, handler);
}

FileWatch::~FileWatch()
{
    stop();
}

Tools::Failure FileWatch::start()
{
    Tools::Failure failure;
    // A link may get another target before it is watched.
    for (auto paths = pathsTo(m_fileName); paths != m_paths; paths = pathsTo(m_fileName)) {
        stop();
        m_paths = paths;
        for (const std::filesystem::path &path : paths) {
            if (const Tools::Failure found = watch(path))
                failure = found;
        }
    }
    return failure;
}

void FileWatch::receive(GFileMonitor *, GFile *, GFile *otherFile, GFileMonitorEvent event,
                        gpointer data)
{
    auto *const watch = static_cast<FileWatch *>(data);
    const bool isNew = event == G_FILE_MONITOR_EVENT_CHANGES_DONE_HINT
        || event == G_FILE_MONITOR_EVENT_MOVED_IN
        || (event == G_FILE_MONITOR_EVENT_RENAMED && watch->isWatched(g_file_peek_path(otherFile)));
    // The links may lead elsewhere now.
    const std::vector<std::filesystem::path> paths = watch->m_paths;
    watch->start();
    const bool wasReadable = std::exchange(watch->m_wasReadable, watch->isReadable());
    // The writer has not closed the file yet.
    const bool isOpen = event == G_FILE_MONITOR_EVENT_CREATED
        || event == G_FILE_MONITOR_EVENT_CHANGED;
    if (isNew || watch->m_paths != paths || (!isOpen && watch->m_wasReadable != wasReadable))
        watch->m_settling.start();
    else if (isOpen)
        watch->m_settling.stop();
}

bool FileWatch::isWatched(const std::filesystem::path &path) const
{
    return std::find(m_paths.begin(), m_paths.end(), path) != m_paths.end();
}

bool FileWatch::isReadable() const
{
    return access(m_fileName.c_str(), R_OK) == 0;
}

Tools::Failure FileWatch::watch(const std::filesystem::path &path)
{
    g_autoptr(GFile) file = g_file_new_for_path(path.c_str());
    g_autoptr(GError) error = nullptr;
    GFileMonitor *const monitor = g_file_monitor_file(file, G_FILE_MONITOR_WATCH_MOVES, nullptr,
                                                      &error);
    if (!monitor)
        return {
            SandboxFailed, QString::fromUtf8(error->message), {}, QFile::decodeName(path.c_str())};
    g_signal_connect(monitor, "changed", G_CALLBACK(receive), this);
    m_monitors.push_back(monitor);
    return {};
}

void FileWatch::stop()
{
    for (GFileMonitor *const monitor : m_monitors) {
        g_signal_handlers_disconnect_by_data(monitor, this);
        g_object_unref(monitor);
    }
    m_monitors.clear();
}

} // namespace Tarnvel::Sandbox
