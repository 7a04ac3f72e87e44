// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <optional>

namespace Tarnvel::Testing {

/*!
 * \brief A D-Bus daemon of type system that nobody else uses.
 *
 * It has the default limits of a system bus and activates no services. Its socket lies in a
 * directory that only the present user can enter. The daemon dies with this process, however this
 * process ends, and is out of the terminal's reach.
 */
class PrivateBus
{
public:
    /*! \brief A bus in a temporary directory of its own. */
    PrivateBus();

    /*! \brief A bus in \a directory, which must be private, and outlive the bus. */
    explicit PrivateBus(const QString &directory);

    /*! \brief Stops the daemon. */
    ~PrivateBus();

    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    /*!
     * \brief Starts the daemon and waits, for at most ten seconds, until it accepts connections.
     *
     * False if it does not come up; errorString() then says why. A daemon that has been stopped may
     * be started again, at the same address.
     */
    bool start();

    /*! \brief Kills the daemon, as in a crash, and waits until it is gone. */
    void stop();

    /*! \brief The address to connect to; fixed for the life of this object. */
    QString address() const;

    /*! \brief The process of the daemon; 0 if it is not running. */
    qint64 processId() const;

    /*! \brief What went wrong in start(). */
    QString errorString() const;

private:
    class Daemon : public QProcess
    {
    protected:
        void setupChildProcess() override;
    };

    bool writeConfiguration(const QString &fileName);
    bool waitForAddress();

    std::optional<QTemporaryDir> m_ownDirectory;
    QDir m_directory;
    Daemon m_daemon;
    QString m_errorString;
};

} // namespace Tarnvel::Testing
