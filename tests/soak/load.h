// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QEventLoop>
#include <QtCore/QMap>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>
#include <Tarnvel/ManagedConfiguration/error.h>

#include "configuration_manager_p.h"
#include "supervisor.h"

#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace Tarnvel::Soak {

/*! \brief What a Load has done so far, and what it has met. */
struct Counts
{
    int reads = 0;
    int changes = 0;
    int answers = 0;
    /*! Requests whose manager was destroyed before they were answered. */
    int abandonedRequests = 0;
    int notifications = 0;
    int announcements = 0;
    /*! Announcements that were still to come when their manager was destroyed. */
    int abandonedAnnouncements = 0;
    int managers = 0;
    QMap<Application::ManagedConfiguration::Error::Code, int> codes;
    /*! By the message of the error. */
    QMap<QString, int> internalErrors;
};

/*!
 * \brief The application under which the library is soaked.
 *
 * Its clients ask the service for one thing after the other, by pseudo-random choice, with some
 * sixty calls under way, or now and then more than the bus allows. Each request is counted by a
 * number of its own.
 */
class Load
{
public:
    /*!
     * \brief A load on the service that \a supervisor keeps, which must be started after this.
     *
     * \a capacity is how many requests there will be altogether, so that counting them does not
     * take memory while memory is measured.
     */
    Load(Supervisor &supervisor, unsigned int seed, int capacity);

    /*!
     * \brief Makes \a requests and lets the service announce \a notifications changes, at least.
     *
     * Returns once all is answered and announced; false if that was cut short by giveUp().
     */
    bool run(int requests, int notifications);

    /*! \brief Destroys all managers. */
    void dismissAll();

    /*! \brief Ends run() with a fault that tells what is missing. */
    void giveUp();

    /*! \brief How many notifications the living managers have received, each for itself. */
    int keptNotifications() const;

    /*! \brief What has been done and met so far. */
    const Counts &counts() const;

    /*! \brief What the library has done wrong, at most a few of each kind. */
    const QStringList &faults() const;

private:
    using Configuration = Application::ManagedConfiguration::Configuration;
    using ConfigurationManager = Application::ManagedConfiguration::ConfigurationManager;
    using ConfigurationManagerPrivate =
        Application::ManagedConfiguration::ConfigurationManagerPrivate;
    using Error = Application::ManagedConfiguration::Error;

    enum class State : unsigned char { Open, Answered, Abandoned };

    struct Client
    {
        std::unique_ptr<ConfigurationManager> manager;
        // The manager offers no time-out, its D-Bus side does.
        std::unique_ptr<ConfigurationManagerPrivate> impatient;
        QSet<int> open;
        int expected = 0;
        int announced = 0;
    };

    void beReady();
    void addClient(bool isImpatient);
    void dismiss(std::size_t index);
    Client &pickClient();

    void goOn();
    bool step();
    bool giveOrder();
    int requestsMade() const;
    bool isAsked() const;
    bool isAnnouncementDue() const;
    bool isDrained() const;
    int callsUnderWay() const;
    void overrun();
    void changeClients();
    void endService();
    void letDie();
    void letAnnounce(bool isImpatient, int count);
    void expectAnnouncements(bool isImpatient, int count);
    void finishOrder(bool isImpatient, int count, const Error &error);

    void ask();
    void read(Client &client);
    void change(Client &client, const Configuration &configuration,
                const std::function<void(const Error &)> &answered);
    int open(Client &client);
    void close(Client &client, int id, const Error &error);
    void receive(Client &client, const Configuration &configuration);
    void checkContent(const Configuration &configuration);
    void addFault(const QString &fault);
    unsigned int below(unsigned int limit);

    Supervisor &m_supervisor;
    std::mt19937 m_engine;
    std::vector<Configuration> m_configurations;
    std::vector<std::unique_ptr<Client>> m_clients;
    std::vector<State> m_states;
    QEventLoop m_loop;
    Counts m_counts;
    QStringList m_faults;
    int m_firstRequest = 0;
    int m_firstNotification = 0;
    int m_wantedRequests = 0;
    int m_wantedNotifications = 0;
    int m_endOfLife = 0;
    int m_open = 0;
    int m_owed = 0;
    int m_askedWhileDown = 0;
    bool m_isRunning = false;
    bool m_isAtFence = false;
    bool m_isServiceKnown = false;
    bool m_isOrderUnderWay = false;
};

} // namespace Tarnvel::Soak
