// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

namespace Tarnvel::Sandbox {

/*!
 * \brief Ends, with this process's help, whatever processes its children leave behind.
 *
 * While it lives, a process whose parent ends becomes a child of this process.
 */
class Subreaper
{
public:
    Subreaper();

    /*!
     * \brief Kills all children, and the children that come to this process by that.
     *
     * Waits until they are gone, but not for more than five seconds: a debugger can hold them back.
     */
    ~Subreaper();

    Subreaper(const Subreaper &) = delete;
    Subreaper &operator=(const Subreaper &) = delete;
};

} // namespace Tarnvel::Sandbox
