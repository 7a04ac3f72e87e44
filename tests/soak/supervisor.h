// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QMap>
#include <QtCore/QProcess>
#include <QtCore/QString>

#include <functional>

namespace Tarnvel::Soak {

/*!
 * \brief Keeps a service running: each time it ends, the next life of it is started.
 *
 * A service that ends unasked, or in another way than it was asked to, ends this process.
 */
class Supervisor
{
public:
    /*! \brief Supervises a service on the bus at \a address; each life is seeded from \a seed. */
    Supervisor(const QString &address, unsigned int seed);

    /*! \brief Stops the service. */
    ~Supervisor();

    Supervisor(const Supervisor &) = delete;
    Supervisor &operator=(const Supervisor &) = delete;

    /*! \brief Starts the first life; \a ready is called whenever the service owns its name. */
    void start(const std::function<void()> &ready);

    /*! \brief True from when the service owns its name until its end is announced or asked for. */
    bool isUp() const;

    /*! \brief The service has been ordered to die. */
    void expectDeath();

    /*! \brief Asks the service to end in good order. */
    void end();

    /*! \brief How many lives have ended so far by death and in good order. */
    int deaths() const;
    int goodEnds() const;

    /*! \brief What the lives that have ended have answered how often. */
    const QMap<QString, qint64> &tally() const;

    /*! \brief Ends the service for good, so that the tally is complete. */
    void stop();

private:
    class Process : public QProcess
    {
    protected:
        void setupChildProcess() override;
    };

    void startLife();
    void readOutput();
    void addToTally(const QString &entries);
    void finishLife(int status);

    QString m_address;
    unsigned int m_seed;
    std::function<void()> m_ready;
    Process m_process;
    QMap<QString, qint64> m_tally;
    int m_expectedStatus = -1;
    int m_lives = 0;
    int m_deaths = 0;
    int m_goodEnds = 0;
    bool m_isUp = false;
    bool m_isStopping = false;
};

} // namespace Tarnvel::Soak
