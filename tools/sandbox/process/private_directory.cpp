// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "private_directory.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace Tarnvel::Sandbox {

namespace {

std::filesystem::path parentDirectory()
{
    const char *const chosen = std::getenv("TMPDIR");
    std::error_code error;
    return std::filesystem::absolute(chosen && *chosen ? chosen : "/tmp", error);
}

} // namespace

PrivateDirectory::PrivateDirectory()
    : m_path(parentDirectory() / "managed-configuration-sandbox-XXXXXX")
{
    const std::string pattern = m_path;
    if (mkdtemp(m_path.data()))
        return;
    m_errorString = pattern + ": " + std::strerror(errno);
    m_path.clear();
}

PrivateDirectory::~PrivateDirectory()
{
    std::error_code error;
    if (!m_path.empty())
        std::filesystem::remove_all(m_path, error);
}

const std::string &PrivateDirectory::path() const
{
    return m_path;
}

const std::string &PrivateDirectory::errorString() const
{
    return m_errorString;
}

} // namespace Tarnvel::Sandbox
