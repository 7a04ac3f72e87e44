// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include <filesystem>
#include <functional>
#include <gio/gio.h>
#include <vector>

namespace Tarnvel::Sandbox {

/*!
 * \brief Notices when a file has a new content, written in place or moved there.
 *
 * A content written in place counts once its writer has closed the file. A file that vanishes is
 * not noticed, the one that takes its place is. Symbolic links are followed, those to a directory
 * on the way to the file too, and one that is pointed elsewhere gives the file a new content. Needs
 * an event loop that runs on GLib.
 */
class FileWatch
{
public:
    /*! \brief From now on, calls \a handler when \a fileName has a new content. */
    FileWatch(const QString &fileName, std::function<void()> handler);

    /*! \brief Ends the watching. */
    ~FileWatch();

    FileWatch(const FileWatch &) = delete;
    FileWatch &operator=(const FileWatch &) = delete;

    /*! \brief Why the file cannot be watched; null if it can. */
    QString errorString() const;

private:
    static void receive(GFileMonitor *monitor, GFile *file, GFile *otherFile,
                        GFileMonitorEvent event, gpointer data);
    bool isWatched(const std::filesystem::path &path) const;
    void watch();
    void watch(const std::filesystem::path &path);
    void stop();

    const std::filesystem::path m_fileName;
    const std::function<void()> m_handler;
    std::vector<std::filesystem::path> m_paths;
    std::vector<GFileMonitor *> m_monitors;
    QString m_errorString;
};

} // namespace Tarnvel::Sandbox
