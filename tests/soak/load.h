// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "misbehaving_service.h"

#include <QtCore/QEventLoop>
#include <QtCore/QHash>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include "configuration_manager_p.h"

#include <functional>
#include <memory>
#include <vector>

namespace Tarnvel::Soak {

/*!
 * \brief An application that makes random requests and checks each answer.
 *
 * Many calls are pending at any time, and sometimes more than the bus allows. Managers are created
 * and destroyed, and the service restarts, with calls pending.
 */
class Load
{
public:
    /*! \brief A load on \a service; \a tally counts what happens. */
    Load(MisbehavingService &service, quint32 seed, Tally &tally);

    /*!
     * \brief Makes about \a requests requests; about a tenth as many changes are announced.
     *
     * Returns once everything is answered and announced. Prints what went wrong and returns false
     * if an answer or an announcement was wrong, came twice or did not come.
     */
    bool run(int requests);

    /*! \brief Destroys all managers. */
    void destroyManagers();

    /*! \brief How many announcements the living managers have received, each for itself. */
    int receivedAnnouncements() const;

private:
    using Configuration = Application::ManagedConfiguration::Configuration;
    using Error = Application::ManagedConfiguration::Error;

    struct Client
    {
        std::unique_ptr<Application::ManagedConfiguration::ConfigurationManager> manager;
        // For requests with a short timeout, which the manager itself does not offer.
        std::unique_ptr<Application::ManagedConfiguration::ConfigurationManagerPrivate> impatient;
        int expectedAnnouncements = 0;
        int receivedAnnouncements = 0;
    };

    void addClient(bool isImpatient);
    void destroyClient(std::size_t index);
    Client &pickClient();

    void proceed();
    bool step();
    void endPhase();
    void addOrDestroyClient();
    void startService();
    void announce();
    void sendFence();

    void request();
    void read(Client &client);
    void change(Client &client, const Configuration &configuration,
                const std::function<void(const Error &)> &answered);
    int open(Client &client);
    void close(int id, const Error &error);
    void receive(Client &client, const Configuration &configuration);
    void fail(const QString &what);

    MisbehavingService &m_service;
    QRandomGenerator m_random;
    Tally &m_tally;
    std::vector<Configuration> m_configurations;
    std::vector<std::unique_ptr<Client>> m_clients;
    QHash<int, Client *> m_openRequests;
    QEventLoop m_loop;
    int m_lastRequest = 0;
    int m_missingAnnouncements = 0;
    int m_answers = 0;
    // Numbers of requests that are still to be made.
    int m_left = 0;
    int m_leftAtAnnouncement = 0;
    int m_leftAtStop = 0;
    int m_leftWithoutService = 0;
    bool m_isFencePending = false;
    bool m_isLastFenceSent = false;
    bool m_hasFailed = false;
};

} // namespace Tarnvel::Soak
