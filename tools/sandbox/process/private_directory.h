// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QTemporaryDir>

#include <optional>

namespace Tarnvel::Sandbox {

/*!
 * \brief A directory for temporary files that only the current user can enter.
 *
 * It is locked. If this process dies without removing it, the kernel releases the lock, and
 * removeAbandoned(), in any sandbox, removes the directory.
 */
class PrivateDirectory
{
public:
    /*! \brief Removes the directory with all that is in it. */
    ~PrivateDirectory();

    /*!
     * \brief Removes abandoned directories, and creates a new one in TMPDIR or else in /tmp.
     *
     * Fails if there is no room for the path of a socket.
     */
    Tools::Failure create();

    /*! \brief The absolute path of the directory. */
    QString path() const
    {
        return m_directory->path();
    }

    /*! \brief Removes the directories of the current user whose processes have died. */
    static void removeAbandoned();

private:
    std::optional<QTemporaryDir> m_directory;
    int m_lock = -1;
};

} // namespace Tarnvel::Sandbox
