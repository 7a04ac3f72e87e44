// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "bus_limits.h"
#include "child_process.h"

#include <QtCore/QDir>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <iterator>
#include <optional>

namespace Tarnvel::Testing {

/*!
 * \brief A D-Bus daemon of type system that nobody else uses.
 *
 * For programs that must not touch the machine's bus: tests, benchmarks, the sandbox. It has the
 * default limits of a system bus and activates no services. Only the current user can enter the
 * directory of its socket. The daemon is killed when this process ends, however that happens;
 * signals from the terminal do not reach it.
 */
class PrivateBus
{
public:
    /*! \brief A bus in a temporary directory of its own. */
    PrivateBus();

    /*! \brief How long the path of a directory may be, in bytes: it has a socket. */
    static constexpr int maximumDirectorySize = DBus::maximumSocketPathSize
        - static_cast<int>(std::size("/socket")) + 1;

    /*! \brief A bus in \a directory, which must be private, and outlive the bus. */
    explicit PrivateBus(const QString &directory);

    /*! \brief Stops the daemon. */
    ~PrivateBus();

    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    /*!
     * \brief Starts the daemon and waits until it accepts connections.
     *
     * Returns what went wrong if it does not within busTimeoutMs, or a null string. A stopped
     * daemon may be started again, at the same address.
     */
    QString start();

    /*! \brief Kills the daemon, as in a crash, and waits until it is gone. */
    void stop();

    /*! \brief The address to connect to; fixed for the life of this object. */
    QString address() const;

    /*! \brief The process id of the daemon; 0 if it is not running. */
    qint64 processId() const;

private:
    class Daemon : public ChildProcess
    {
    protected:
        void prepareChild() override;
    };

    std::optional<QTemporaryDir> m_ownDirectory;
    QDir m_directory;
    Daemon m_daemon;
};

} // namespace Tarnvel::Testing
