// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QString>
#include <QtCore/QTimer>

#include <filesystem>
#include <functional>
#include <gio/gio.h>
#include <vector>

namespace Tarnvel::Sandbox {

/*!
 * \brief Reports when a file has new content, and when it becomes unreadable or readable.
 *
 * New content is written in place or moved there. It counts once its writer has closed the file,
 * or has not written for two seconds. Changes soon after one another are reported once, after the
 * last one. Symbolic links are followed, including links to directories in the path; a link with a
 * new target counts as new content. Needs an event loop that runs on GLib.
 */
class FileWatch
{
public:
    /*! \brief A watch of \a fileName that has not started yet. */
    FileWatch(const QString &fileName, const std::function<void()> &handler);

    ~FileWatch();

    FileWatch(const FileWatch &) = delete;
    FileWatch &operator=(const FileWatch &) = delete;

    /*! \brief From now on, calls the handler for each change, or fails. */
    Tools::Failure start();

private:
    static void receive(GFileMonitor *monitor, GFile *file, GFile *otherFile,
                        GFileMonitorEvent event, gpointer data);
    bool isWatched(const std::filesystem::path &path) const;
    bool isReadable() const;
    Tools::Failure watch(const std::filesystem::path &path);
    void stop();

    const std::filesystem::path m_fileName;
    std::vector<std::filesystem::path> m_paths;
    std::vector<GFileMonitor *> m_monitors;
    bool m_wasReadable;
    QTimer m_settling;
};

} // namespace Tarnvel::Sandbox
