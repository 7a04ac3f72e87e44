// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "file_watch.h"

#include <QtCore/QFile>

#include <utility>

namespace Tarnvel::Sandbox {

FileWatch::FileWatch(const QString &fileName, std::function<void()> handler)
    : m_handler(std::move(handler)),
      m_file(g_file_new_for_path(QFile::encodeName(fileName).constData()))
{
    g_autoptr(GError) error = nullptr;
    m_monitor = g_file_monitor_file(m_file, G_FILE_MONITOR_WATCH_MOVES, nullptr, &error);
    if (m_monitor)
        g_signal_connect(m_monitor, "changed", G_CALLBACK(receive), this);
    else
        m_errorString = QString::fromUtf8(error->message);
}

FileWatch::~FileWatch()
{
    if (m_monitor)
        g_signal_handlers_disconnect_by_data(m_monitor, this);
    g_clear_object(&m_monitor);
    g_object_unref(m_file);
}

QString FileWatch::errorString() const
{
    return m_errorString;
}

void FileWatch::receive(GFileMonitor *, GFile *, GFile *otherFile, GFileMonitorEvent event,
                        gpointer data)
{
    const auto *const watch = static_cast<FileWatch *>(data);
    const bool isMovedHere = event == G_FILE_MONITOR_EVENT_MOVED_IN
        || (event == G_FILE_MONITOR_EVENT_RENAMED && g_file_equal(otherFile, watch->m_file));
    if (isMovedHere || event == G_FILE_MONITOR_EVENT_CHANGES_DONE_HINT)
        watch->m_handler();
}

} // namespace Tarnvel::Sandbox
