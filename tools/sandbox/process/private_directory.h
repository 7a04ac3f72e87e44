// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <string>

namespace Tarnvel::Sandbox {

/*!
 * \brief A new directory for temporary files that only the present user can enter.
 *
 * It can be made before there is an application object, without which Qt does not know the encoding
 * of file names.
 */
class PrivateDirectory
{
public:
    /*! \brief Makes the directory, in TMPDIR or else in /tmp. */
    PrivateDirectory();

    /*! \brief Removes the directory with all that is in it. */
    ~PrivateDirectory();

    PrivateDirectory(const PrivateDirectory &) = delete;
    PrivateDirectory &operator=(const PrivateDirectory &) = delete;

    /*! \brief The absolute path, as the file system has it; empty if there is no directory. */
    const std::string &path() const;

    /*! \brief Why there is no directory. */
    const std::string &errorString() const;

private:
    std::string m_path;
    std::string m_errorString;
};

} // namespace Tarnvel::Sandbox
