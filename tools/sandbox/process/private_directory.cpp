// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "private_directory.h"

#include "exit_status.h"
#include "private_bus.h"

#include <QtCore/QDir>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tarnvel::Sandbox {

namespace {

constexpr char nameTemplate[] = "managed-configuration-sandbox-XXXXXX";
constexpr char namePattern[] = "managed-configuration-sandbox-??????";

// QDir::temp() would be the current directory where TMPDIR does not exist.
QDir parentDirectory()
{
    const QString directory = QFile::decodeName(qgetenv("TMPDIR"));
    return {directory.isEmpty() ? QStringLiteral("/tmp") : directory};
}

Tools::Failure failure(const QString &reason)
{
    return {SandboxFailed,
            QStringLiteral("cannot be TMPDIR: ") + reason,
            {},
            parentDirectory().absolutePath()};
}

int openDirectory(const QString &path)
{
    return open(QFile::encodeName(path).constData(),
                O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

} // namespace

PrivateDirectory::~PrivateDirectory()
{
    m_directory.reset();
    close(m_lock);
}

Tools::Failure PrivateDirectory::create()
{
    removeAbandoned();
    const QString pattern = parentDirectory().absoluteFilePath(QLatin1String(nameTemplate));
    // The size of the template includes its end, in place of the separator.
    const int maximumSize = Testing::PrivateBus::maximumDirectorySize
        - static_cast<int>(std::size(nameTemplate));
    if (QFile::encodeName(parentDirectory().absolutePath()).size() > maximumSize)
        return failure(QStringLiteral("a path of more than %1 bytes is too long for a socket")
                           .arg(maximumSize));
    // Another sandbox may remove the directory before it is locked.
    do {
        close(m_lock);
        m_directory.emplace(pattern);
        if (!m_directory->isValid())
            return failure(m_directory->errorString());
        m_lock = openDirectory(path());
        if (m_lock == -1 && errno != ENOENT)
            return {SandboxFailed, qt_error_string(errno), {}, path()};
        flock(m_lock, LOCK_EX);
    } while (!QFileInfo::exists(path()));
    return {};
}

void PrivateDirectory::removeAbandoned()
{
    const QDir parent = parentDirectory();
    const QStringList names = parent.entryList(QStringList(QLatin1String(namePattern)), QDir::Dirs);
    for (const QString &name : names) {
        const QString path = parent.filePath(name);
        const int directory = openDirectory(path);
        // The name proves nothing: others may use it too.
        struct stat status = {};
        if (fstat(directory, &status) == 0 && status.st_uid == geteuid()
            && (status.st_mode & ACCESSPERMS) == S_IRWXU
            && flock(directory, LOCK_EX | LOCK_NB) == 0)
            QDir(path).removeRecursively();
        close(directory);
    }
}

} // namespace Tarnvel::Sandbox
