// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "directory_reaper.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Tarnvel::Sandbox {

namespace {

void waitForEnd(int descriptor)
{
    char byte = 0;
    while (read(descriptor, &byte, 1) == -1 && errno == EINTR) { }
}

void closeAllBut(int first, int second)
{
    std::error_code error;
    std::vector<int> descriptors;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd", error))
        descriptors.push_back(std::atoi(entry.path().filename().c_str()));
    for (const int descriptor : descriptors) {
        if (descriptor != first && descriptor != second)
            close(descriptor);
    }
}

[[noreturn]] void takeCare(const std::string &directory, int life, int end)
{
    closeAllBut(life, end);
    std::error_code error;
    std::filesystem::current_path("/", error);
    waitForEnd(life);
    std::filesystem::remove_all(directory, error);
    std::_Exit(EXIT_SUCCESS);
}

// Behind a child that ends at once, so that the directoryReaper is nobody's child.
bool start(const std::string &directory, int life, int end)
{
    const pid_t starter = fork();
    if (starter == 0) {
        setsid();
        if (fork() == 0)
            takeCare(directory, life, end);
        std::_Exit(EXIT_SUCCESS);
    }
    return starter != -1 && waitpid(starter, nullptr, 0) == starter;
}

} // namespace

DirectoryReaper::DirectoryReaper(const std::string &directory) : m_maker(getpid())
{
    std::array<int, 2> life {-1, -1};
    std::array<int, 2> end {-1, -1};
    if (directory.empty() || pipe2(life.data(), O_CLOEXEC) == -1)
        return;
    if (pipe2(end.data(), O_CLOEXEC) != -1 && start(directory, life[0], end[1])) {
        m_life = life[1];
        m_end = end[0];
    } else {
        close(life[1]);
        close(end[0]);
    }
    close(life[0]);
    close(end[1]);
}

DirectoryReaper::~DirectoryReaper()
{
    if (m_life == -1)
        return;
    close(m_life);
    if (getpid() == m_maker)
        waitForEnd(m_end);
    close(m_end);
}

} // namespace Tarnvel::Sandbox
