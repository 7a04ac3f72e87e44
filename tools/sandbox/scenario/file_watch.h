// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QString>

#include <filesystem>
#include <functional>
#include <gio/gio.h>
#include <vector>

namespace Tarnvel::Sandbox {

/*!
 * \brief Reports when a file has new content, written in place or moved there.
 *
 * Content written in place counts once its writer has closed the file. A file that disappears is
 * not reported; one that replaces it is. Symbolic links are followed, including links to
 * directories in the path; a link with a new target counts as new content. Needs an event loop that
 * runs on GLib.
 */
class FileWatch
{
public:
    /*! \brief A watch of \a fileName that has not started yet. */
    FileWatch(const QString &fileName, std::function<void()> handler);

    ~FileWatch();

    FileWatch(const FileWatch &) = delete;
    FileWatch &operator=(const FileWatch &) = delete;

    /*! \brief From now on, calls the handler for each new content, or fails. */
    Tools::Failure start();

private:
    static void receive(GFileMonitor *monitor, GFile *file, GFile *otherFile,
                        GFileMonitorEvent event, gpointer data);
    bool isWatched(const std::filesystem::path &path) const;
    Tools::Failure watch(const std::filesystem::path &path);
    void stop();

    const std::filesystem::path m_fileName;
    const std::function<void()> m_handler;
    std::vector<std::filesystem::path> m_paths;
    std::vector<GFileMonitor *> m_monitors;
};

} // namespace Tarnvel::Sandbox
