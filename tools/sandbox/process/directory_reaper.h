// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <string>
#include <sys/types.h>

namespace Tarnvel::Sandbox {

/*!
 * \brief A process that removes a directory when this process and its children are gone.
 *
 * It is no child of theirs and has a session of its own, so that whoever kills them all at once, as
 * CTest does after a timeout, does not find it. It keeps nothing open that they have open.
 *
 * Children that are to count are those forked while this object lives. Programs that they start do
 * not count.
 */
class DirectoryReaper
{
public:
    /*! \brief Starts the process for \a directory. Without one, or if that fails, there is none. */
    explicit DirectoryReaper(const std::string &directory);

    /*! \brief In the process that made it: waits until the directory is removed. */
    ~DirectoryReaper();

    DirectoryReaper(const DirectoryReaper &) = delete;
    DirectoryReaper &operator=(const DirectoryReaper &) = delete;

private:
    pid_t m_maker;
    // The directoryReaper sees its end when nobody has this one open any more.
    int m_life = -1;
    // And with this one its own end is seen.
    int m_end = -1;
};

} // namespace Tarnvel::Sandbox
