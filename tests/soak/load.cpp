// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "load.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>

#include "bus_limits.h"
#include "configuration_p.h"

#include <cstdio>
#include <utility>

namespace Tarnvel::Soak {

using namespace Application::ManagedConfiguration;

namespace {

// A connection may have DBus::maximumPendingCalls, which include the calls that the service never
// replies to, and those whose replies are late.
constexpr int maximumCalls = 60;
constexpr int overrunCalls = DBus::maximumPendingCalls + 32;
constexpr int requestsWithoutService = 20;
constexpr int stallTimeoutMs = 120000;
constexpr std::size_t residentClients = 2;
constexpr std::size_t maximumClients = 6;

// Each happens about once per this number of requests.
constexpr int overrunPeriod = 2000;
constexpr int clientPeriod = 100;
constexpr int announcementPeriod = 100;
constexpr int servicePeriod = 700;
constexpr int impatientPeriod = 20;

// Parts of the messages of internal errors. Each must occur.
constexpr const char *internalErrors[] = {"pending replies",  "nested too deep",
                                          "disconnected",     "Did not receive",
                                          "was not provided", "Unexpected reply"};

bool isWhole(const Configuration &configuration)
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(configuration);
    if (entries.isEmpty())
        return true;
    const QVariant inner = entries.value(QLatin1String(innerKey));
    return entries.size() == entries.value(QLatin1String(entriesKey)).toInt()
        && (!inner.isValid() || isWhole(Configuration::fromVariant(inner)));
}

Configuration make(const QMap<QString, QVariant> &entries)
{
    return Configuration(new ConfigurationPrivate(entries));
}

Configuration nest(int levels)
{
    Configuration configuration = make({{"level", levels}});
    if (levels > 1)
        configuration.set(innerKey, QVariant::fromValue(nest(levels - 1)));
    return configuration;
}

// The last two are for rare use: a huge one, and one that is nested too deep for D-Bus.
std::vector<Configuration> makeConfigurations()
{
    return {make({{"volume", 7}, {"muted", true}, {"theme", "dark"}}),
            make({{"numbers", QVariant::fromValue(QList<int> {1, 2, 3})},
                  {"switches", QVariant::fromValue(QList<bool> {true, false})},
                  {"names", QStringList {"a", "b"}},
                  {"texts", QVariant::fromValue(QList<QString> {QString()})}}),
            nest(3),
            make({}),
            make({{"text", QString(100 * 1024, 'x')}}),
            nest(DBus::portableContainerDepth / DBus::containersPerLevel + 1)};
}

} // namespace

Load::Load(MisbehavingService &service, quint32 seed, Tally &tally)
    : m_service(service), m_random(seed), m_tally(tally), m_configurations(makeConfigurations())
{
    QCoreApplication::setOrganizationName(QStringLiteral("acme"));
}

bool Load::run(int requests)
{
    m_left = requests;
    m_leftAtAnnouncement = requests - announcementPeriod;
    m_isLastFenceSent = false;
    addClient(false);
    addClient(true);
    startService();
    proceed();

    QTimer stallTimer;
    stallTimer.callOnTimeout([this, before = -1]() mutable {
        if (std::exchange(before, m_answers) == m_answers)
            fail(QStringLiteral("%1 requests are unanswered").arg(m_openRequests.size()));
    });
    stallTimer.start(stallTimeoutMs);
    m_loop.exec();
    m_service.close();
    return !m_hasFailed;
}

void Load::destroyManagers()
{
    while (!m_clients.empty())
        destroyClient(m_clients.size() - 1);
}

int Load::receivedAnnouncements() const
{
    int received = 0;
    for (const auto &client : m_clients)
        received += client->receivedAnnouncements;
    return received;
}

void Load::addClient(bool isImpatient)
{
    auto client = std::make_unique<Client>();
    // The manager of an impatient client has a path of its own, at which nothing happens.
    QCoreApplication::setApplicationName(isImpatient ? QStringLiteral("bystander")
                                                     : QStringLiteral("patient"));
    client->manager = std::make_unique<ConfigurationManager>();
    if (isImpatient) {
        QCoreApplication::setApplicationName(QStringLiteral("impatient"));
        client->impatient = std::make_unique<ConfigurationManagerPrivate>(client->manager.get());
        client->impatient->setTimeout(shortTimeoutMs);
    }
    QObject::connect(client->manager.get(), &ConfigurationManager::configurationChanged,
                     client->manager.get(),
                     [this, client = client.get()](const Configuration &configuration) {
                         receive(*client, configuration);
                     });
    m_clients.push_back(std::move(client));
}

void Load::destroyClient(std::size_t index)
{
    Client *const client = m_clients.at(index).get();
    const QList<int> abandoned = m_openRequests.keys(client);
    for (const int request : abandoned)
        m_openRequests.remove(request);
    m_tally[QStringLiteral("abandoned requests")] += abandoned.size();
    const int missing = client->expectedAnnouncements - client->receivedAnnouncements;
    m_missingAnnouncements -= missing;
    m_tally[QStringLiteral("abandoned announcements")] += missing;
    m_clients.erase(m_clients.begin() + static_cast<std::ptrdiff_t>(index));
}

Load::Client &Load::pickClient()
{
    const bool isImpatient = m_random.bounded(impatientPeriod) == 0;
    for (;;) {
        Client &client = *m_clients.at(m_random.bounded(static_cast<quint32>(m_clients.size())));
        if (isImpatient == static_cast<bool>(client.impatient))
            return client;
    }
}

void Load::proceed()
{
    while (m_openRequests.size() + m_missingAnnouncements < maximumCalls && step()) { }
}

// False if there is nothing to do before the next answer.
bool Load::step()
{
    int &left = m_service.isOpen() ? m_left : m_leftWithoutService;
    if (left <= 0) {
        if (m_openRequests.isEmpty() && m_missingAnnouncements == 0)
            endPhase();
        return false;
    }
    if (m_service.isOpen() && !m_isFencePending && m_left <= m_leftAtStop) {
        m_service.close();
        m_leftWithoutService = requestsWithoutService;
        return true;
    }
    if (m_service.isOpen() && !m_isFencePending && m_left <= m_leftAtAnnouncement)
        announce();
    if (m_random.bounded(clientPeriod) == 0)
        addOrDestroyClient();
    const int calls = m_random.bounded(overrunPeriod) == 0 ? overrunCalls : 1;
    for (int call = 0; call < calls; ++call)
        request();
    left -= calls;
    return true;
}

void Load::endPhase()
{
    if (!m_service.isOpen()) {
        startService();
    } else if (!m_isLastFenceSent) {
        // An answer or announcement too many comes before the answer to this fence.
        m_isLastFenceSent = true;
        sendFence();
    } else {
        m_loop.quit();
    }
}

void Load::addOrDestroyClient()
{
    const auto visitors = static_cast<quint32>(m_clients.size() - residentClients);
    if (visitors > 0 && m_random.bounded(2) == 0)
        destroyClient(residentClients + m_random.bounded(visitors));
    else if (m_clients.size() < maximumClients && !m_isFencePending)
        addClient(m_random.bounded(2) == 0);
}

// Qt D-Bus passes announcements on once it knows the new owner of the service's name. The answer to
// a fence comes later.
void Load::startService()
{
    m_leftAtStop = m_left - m_random.bounded(2 * servicePeriod);
    m_service.open();
    sendFence();
}

void Load::announce()
{
    m_leftAtAnnouncement = m_left - announcementPeriod;
    const bool isImpatient = m_random.bounded(impatientPeriod) == 0;
    const int count = m_random.bounded(1, isImpatient ? 4 : 21);
    for (const auto &client : m_clients) {
        if (isImpatient == static_cast<bool>(client->impatient)) {
            client->expectedAnnouncements += count;
            m_missingAnnouncements += count;
        }
    }
    m_service.announceAtNextFence(isImpatient ? impatientPath : patientPath, count);
    sendFence();
}

void Load::sendFence()
{
    m_isFencePending = true;
    Configuration fence;
    fence.set(QLatin1String(fenceKey), true);
    change(*m_clients.front(), fence, [this](const Error &error) {
        m_isFencePending = false;
        if (error.message().contains(QLatin1String(internalErrors[0])))
            sendFence();
        else if (error)
            fail(QStringLiteral("a fence failed: %1").arg(error.message()));
    });
}

void Load::request()
{
    constexpr int rarePeriod = 50;
    Client &client = pickClient();
    if (m_random.bounded(2) == 0) {
        read(client);
        return;
    }
    const bool isRare = m_random.bounded(rarePeriod) == 0;
    const auto index = static_cast<std::size_t>(isRare ? m_random.bounded(4, 6)
                                                       : m_random.bounded(4));
    change(client, m_configurations.at(index), [](const Error &) {});
}

void Load::read(Client &client)
{
    const auto callback = [this, id = open(client)](const Configuration &configuration,
                                                    const Error &error) {
        if (!isWhole(configuration) || (error && !configuration.isEmpty()))
            fail(QStringLiteral("a configuration came in part, or with an error"));
        close(id, error);
        proceed();
    };
    if (client.impatient)
        client.impatient->getConfiguration(callback);
    else
        client.manager->getConfiguration(callback);
}

void Load::change(Client &client, const Configuration &configuration,
                  const std::function<void(const Error &)> &answered)
{
    const auto callback = [this, id = open(client), answered](const Error &error) {
        close(id, error);
        answered(error);
        proceed();
    };
    if (client.impatient)
        client.impatient->changeConfiguration(configuration, callback);
    else
        client.manager->changeConfiguration(configuration, callback);
}

int Load::open(Client &client)
{
    m_openRequests.insert(++m_lastRequest, &client);
    return m_lastRequest;
}

void Load::close(int id, const Error &error)
{
    if (m_openRequests.remove(id) == 0)
        fail(QStringLiteral("an answer came twice, or after its manager was destroyed"));
    ++m_answers;
    ++m_tally[QStringLiteral("answers with code %1").arg(error.code())];
    for (const char *part : internalErrors)
        m_tally[QLatin1String(part)] += error.message().contains(QLatin1String(part)) ? 1 : 0;
}

void Load::receive(Client &client, const Configuration &configuration)
{
    ++m_answers;
    --m_missingAnnouncements;
    if (++client.receivedAnnouncements > client.expectedAnnouncements || !isWhole(configuration))
        fail(QStringLiteral("a change was announced twice, or with a part of the configuration"));
    proceed();
}

void Load::fail(const QString &what)
{
    std::fprintf(stderr, "FAILED: %s\n", qUtf8Printable(what));
    m_hasFailed = true;
    m_loop.quit();
}

} // namespace Tarnvel::Soak
