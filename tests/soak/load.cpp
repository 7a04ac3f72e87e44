// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "load.h"

#include "agreement.h"

#include <QtCore/QCoreApplication>

#include "configuration_p.h"

namespace Tarnvel::Soak {

using namespace Application::ManagedConfiguration;

namespace {

// The bus lets 128 calls of a connection be outstanding. Some thirty are those that the service
// never answers, and some more those it answers to clients that wait no longer.
constexpr int callsMost = 60;
constexpr int overrunCalls = 160;
constexpr int callsWhileDownMost = 20;
constexpr std::size_t residents = 2;
constexpr std::size_t clientsMost = 6;
constexpr int faultsMost = 20;
// In requests.
constexpr unsigned int lifeMost = 1400;

// Each of these happens once in about so many turns.
constexpr unsigned int overrunPeriod = 2000;
constexpr unsigned int clientPeriod = 100;
constexpr unsigned int impatientPeriod = 20;
constexpr unsigned int announcementPeriod = 4;

bool isRefusedByBus(const Error &error)
{
    return error.message().contains(QLatin1String("pending replies"));
}

bool isWhole(const Configuration &configuration)
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(configuration);
    if (entries.isEmpty())
        return true;
    const QVariant inner = entries.value(QLatin1String(innerKey));
    return entries.size() == entries.value(QLatin1String(entriesKey)).toInt()
        && (!inner.isValid() || isWhole(Configuration::fromVariant(inner)));
}

Configuration nest(int levels)
{
    Configuration configuration;
    configuration.set(QStringLiteral("level"), levels);
    if (levels > 1)
        configuration.set(QLatin1String(innerKey), QVariant::fromValue(nest(levels - 1)));
    return configuration;
}

std::vector<Configuration> makeConfigurations()
{
    constexpr int tooDeep = 22;
    constexpr int hugeSize = 100 * 1024;
    Configuration plain;
    plain.set(QStringLiteral("volume"), 7);
    plain.set(QStringLiteral("muted"), true);
    plain.set(QStringLiteral("theme"), QStringLiteral("dark"));
    Configuration lists;
    lists.set(QStringLiteral("numbers"), QVariant::fromValue(QList<int> {1, 2, 3}));
    lists.set(QStringLiteral("switches"), QVariant::fromValue(QList<bool> {true, false}));
    lists.set(QStringLiteral("names"), QStringList {QStringLiteral("a"), QStringLiteral("b")});
    lists.set(QStringLiteral("texts"), QVariant::fromValue(QList<QString> {QString()}));
    Configuration huge;
    huge.set(QStringLiteral("text"), QString(hugeSize, QLatin1Char('x')));

    std::vector<Configuration> configurations;
    for (int copies = 0; copies < 25; ++copies)
        configurations.insert(configurations.end(), {plain, lists, nest(3), Configuration()});
    configurations.insert(configurations.end(), {huge, nest(tooDeep)});
    return configurations;
}

} // namespace

Load::Load(Supervisor &supervisor, unsigned int seed, int capacity)
    : m_supervisor(supervisor),
      m_engine(seed),
      m_configurations(makeConfigurations()),
      m_states(static_cast<std::size_t>(capacity), State::Open)
{
    m_states.clear();
    QCoreApplication::setOrganizationName(QStringLiteral("acme"));
}

bool Load::run(int requests, int notifications)
{
    m_firstRequest = static_cast<int>(m_states.size());
    m_firstNotification = m_counts.notifications;
    m_wantedRequests = requests;
    m_endOfLife = 0;
    m_wantedNotifications = notifications;
    m_isAtFence = false;
    m_isServiceKnown = false;
    m_isRunning = true;
    addClient(false);
    addClient(true);
    if (m_supervisor.isUp())
        beReady();
    else
        m_supervisor.start([this] { beReady(); });
    return m_loop.exec() == 0;
}

void Load::dismissAll()
{
    while (!m_clients.empty())
        dismiss(m_clients.size() - 1);
}

void Load::giveUp()
{
    addFault(QStringLiteral("the time is up, with %1 requests unanswered and %2 announcements "
                            "missing, after %3 requests and %4 notifications")
                 .arg(m_open)
                 .arg(m_owed)
                 .arg(m_states.size())
                 .arg(m_counts.notifications));
    m_isRunning = false;
    m_loop.exit(1);
}

int Load::keptNotifications() const
{
    int kept = 0;
    for (const auto &client : m_clients)
        kept += client->announced;
    return kept;
}

const Counts &Load::counts() const
{
    return m_counts;
}

const QStringList &Load::faults() const
{
    return m_faults;
}

void Load::beReady()
{
    // The answer tells that the bus layer knows of the new owner of the name, without which it
    // passes no announcement on.
    letAnnounce(false, 0);
    goOn();
}

void Load::addClient(bool isImpatient)
{
    auto client = std::make_unique<Client>();
    QCoreApplication::setApplicationName(isImpatient ? QStringLiteral("bystander")
                                                     : QStringLiteral("patient"));
    client->manager = std::make_unique<ConfigurationManager>();
    if (isImpatient) {
        QCoreApplication::setApplicationName(QStringLiteral("impatient"));
        client->impatient = std::make_unique<ConfigurationManagerPrivate>(client->manager.get());
        client->impatient->setTimeout(patienceMs);
    }
    QObject::connect(client->manager.get(), &ConfigurationManager::configurationChanged,
                     client->manager.get(),
                     [this, client = client.get()](const Configuration &configuration) {
                         receive(*client, configuration);
                     });
    m_clients.push_back(std::move(client));
    ++m_counts.managers;
}

void Load::dismiss(std::size_t index)
{
    const Client &client = *m_clients.at(index);
    for (const int id : client.open)
        m_states.at(static_cast<std::size_t>(id)) = State::Abandoned;
    m_open -= client.open.size();
    m_counts.abandonedRequests += client.open.size();
    const int missing = client.expected - client.announced;
    m_owed -= missing;
    m_counts.abandonedAnnouncements += missing;
    m_clients.erase(m_clients.begin() + static_cast<std::ptrdiff_t>(index));
}

Load::Client &Load::pickClient()
{
    const bool isImpatient = below(impatientPeriod) == 0;
    for (;;) {
        Client &client = *m_clients.at(below(static_cast<unsigned int>(m_clients.size())));
        if (isImpatient == static_cast<bool>(client.impatient))
            return client;
    }
}

void Load::goOn()
{
    while (m_isRunning && step()) { }
    if (m_isRunning && !m_isAtFence && isDrained()) {
        m_isAtFence = true;
        letAnnounce(false, 0);
    }
}

bool Load::step()
{
    const bool isUp = m_supervisor.isUp();
    if (callsUnderWay() >= callsMost || (!isUp && m_askedWhileDown >= callsWhileDownMost))
        return false;
    if (isUp && m_isServiceKnown && !m_isOrderUnderWay && giveOrder())
        return true;
    if (isAsked())
        return false;

    m_askedWhileDown += isUp ? 0 : 1;
    if (below(overrunPeriod) == 0)
        overrun();
    else if (below(clientPeriod) == 0)
        changeClients();
    ask();
    return true;
}

bool Load::giveOrder()
{
    if (!isAsked() && requestsMade() >= m_endOfLife) {
        endService();
        return true;
    }
    // Announcements leave room for what cannot be done while one is under way.
    if (isAnnouncementDue() && (isAsked() || below(announcementPeriod) == 0)) {
        const bool isImpatient = below(impatientPeriod) == 0;
        letAnnounce(isImpatient, static_cast<int>(1 + below(isImpatient ? 3 : 20)));
        return true;
    }
    return false;
}

int Load::requestsMade() const
{
    return static_cast<int>(m_states.size()) - m_firstRequest;
}

bool Load::isAsked() const
{
    return requestsMade() >= m_wantedRequests;
}

bool Load::isAnnouncementDue() const
{
    const qint64 requests = requestsMade();
    const qint64 notifications = m_counts.notifications - m_firstNotification;
    return notifications < m_wantedNotifications
        && notifications * m_wantedRequests <= requests * m_wantedNotifications;
}

bool Load::isDrained() const
{
    return isAsked() && m_counts.notifications - m_firstNotification >= m_wantedNotifications
        && callsUnderWay() == 0 && m_isServiceKnown && !m_isOrderUnderWay;
}

int Load::callsUnderWay() const
{
    return m_open + m_owed;
}

void Load::overrun()
{
    for (int call = 0; call < overrunCalls; ++call)
        ask();
}

void Load::changeClients()
{
    const auto visitors = static_cast<unsigned int>(m_clients.size() - residents);
    if (visitors > 0 && below(2) == 0)
        dismiss(residents + below(visitors));
    else if (m_clients.size() < clientsMost && !m_isOrderUnderWay)
        addClient(below(2) == 0);
}

void Load::endService()
{
    m_isServiceKnown = false;
    m_askedWhileDown = 0;
    m_endOfLife = requestsMade() + static_cast<int>(below(lifeMost));
    if (below(3) == 0)
        m_supervisor.end();
    else
        letDie();
}

void Load::letDie()
{
    m_supervisor.expectDeath();
    Configuration order;
    order.set(QLatin1String(orderKey), QLatin1String(dieOrder));
    change(*m_clients.front(), order, [this](const Error &error) {
        if (isRefusedByBus(error))
            m_supervisor.end();
    });
}

void Load::letAnnounce(bool isImpatient, int count)
{
    m_isOrderUnderWay = true;
    expectAnnouncements(isImpatient, count);
    Configuration order;
    order.set(QLatin1String(orderKey), QLatin1String(announceOrder));
    order.set(QLatin1String(countKey), count);
    order.set(QLatin1String(pathKey), QLatin1String(isImpatient ? impatientPath : patientPath));
    change(*m_clients.front(), order, [this, isImpatient, count](const Error &error) {
        finishOrder(isImpatient, count, error);
    });
}

void Load::expectAnnouncements(bool isImpatient, int count)
{
    m_counts.notifications += count;
    for (const auto &client : m_clients) {
        if (isImpatient == static_cast<bool>(client->impatient)) {
            client->expected += count;
            m_owed += count;
        }
    }
}

void Load::finishOrder(bool isImpatient, int count, const Error &error)
{
    m_isOrderUnderWay = false;
    if (!error) {
        m_isServiceKnown = true;
        if (m_isAtFence) {
            m_isRunning = false;
            m_loop.exit(0);
        }
        return;
    }
    if (!isRefusedByBus(error))
        addFault(QStringLiteral("an order failed: %1").arg(error.message()));
    expectAnnouncements(isImpatient, -count);
    if (!m_isServiceKnown || m_isAtFence)
        letAnnounce(false, 0);
}

void Load::ask()
{
    Client &client = pickClient();
    if (below(2) == 0) {
        read(client);
        return;
    }
    const auto index = below(static_cast<unsigned int>(m_configurations.size()));
    change(client, m_configurations.at(index), [](const Error &) {});
}

void Load::read(Client &client)
{
    ++m_counts.reads;
    const int id = open(client);
    const auto callback = [this, &client, id](const Configuration &configuration,
                                              const Error &error) {
        checkContent(configuration);
        if (error && !configuration.isEmpty())
            addFault(QStringLiteral("an error came with a configuration"));
        close(client, id, error);
        goOn();
    };
    if (client.impatient)
        client.impatient->getConfiguration(callback);
    else
        client.manager->getConfiguration(callback);
}

void Load::change(Client &client, const Configuration &configuration,
                  const std::function<void(const Error &)> &answered)
{
    ++m_counts.changes;
    const int id = open(client);
    const auto callback = [this, &client, id, answered](const Error &error) {
        close(client, id, error);
        answered(error);
        goOn();
    };
    if (client.impatient)
        client.impatient->changeConfiguration(configuration, callback);
    else
        client.manager->changeConfiguration(configuration, callback);
}

int Load::open(Client &client)
{
    const int id = static_cast<int>(m_states.size());
    m_states.push_back(State::Open);
    client.open.insert(id);
    ++m_open;
    return id;
}

void Load::close(Client &client, int id, const Error &error)
{
    State &state = m_states.at(static_cast<std::size_t>(id));
    if (state != State::Open) {
        addFault(QStringLiteral("request %1 was answered %2")
                     .arg(id)
                     .arg(state == State::Answered ? QStringLiteral("twice")
                                                   : QStringLiteral("without a manager")));
        return;
    }
    state = State::Answered;
    client.open.remove(id);
    --m_open;
    ++m_counts.answers;
    ++m_counts.codes[error.code()];
    if (error.code() == Error::Internal)
        ++m_counts.internalErrors[error.message()];
}

void Load::receive(Client &client, const Configuration &configuration)
{
    ++client.announced;
    --m_owed;
    ++m_counts.announcements;
    if (client.announced > client.expected)
        addFault(QStringLiteral("a manager announced %1 changes of %2")
                     .arg(client.announced)
                     .arg(client.expected));
    checkContent(configuration);
    goOn();
}

void Load::checkContent(const Configuration &configuration)
{
    if (!isWhole(configuration))
        addFault(QStringLiteral("a configuration came without some of its entries"));
}

void Load::addFault(const QString &fault)
{
    if (m_faults.size() < faultsMost)
        m_faults.append(fault);
}

unsigned int Load::below(unsigned int limit)
{
    return static_cast<unsigned int>(m_engine() % limit);
}

} // namespace Tarnvel::Soak
