// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"

#include <memory>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

class ManagerLifetimeTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void init() override;
    void callbacksOfADestroyedManagerAreNeverCalled();
    void reReadsOfADestroyedManagerAreNotAnnounced();
    void aManagerMayBeDeletedInsideACallback_data();
    void aManagerMayBeDeletedInsideACallback();
    void aManagerMayBeDeletedWhileItAnnounces();
    void callbacksAreDestroyedBeforeTheirManager();

private:
    std::unique_ptr<ConfigurationManager> m_manager;
};

void ManagerLifetimeTest::init()
{
    BusTest::init();
    m_manager = std::make_unique<ConfigurationManager>();
    // By the time the service replies, the bus has the subscription too.
    QCOMPARE(awaitRead(*m_manager), R"({"key": int 7})");
}

void ManagerLifetimeTest::callbacksOfADestroyedManagerAreNeverCalled()
{
    m_service.leaveUnanswered();
    ConfigurationManager other;
    const Answers dropped;
    const Answers answers;
    m_manager->getConfiguration(dropped.forReading());
    m_manager->changeConfiguration(Configuration(), dropped.forChanging());
    other.getConfiguration(answers.forReading());
    TRY_COMPARE(m_service.unanswered(), 3);
    m_manager.reset();
    for (const int call : {0, 1, 2})
        m_service.replyTo(call, "({'key': <7>},)");
    QVERIFY(answers.waitFor(1));
    QCOMPARE(dropped.count(), 0);
}

void ManagerLifetimeTest::reReadsOfADestroyedManagerAreNotAnnounced()
{
    ConfigurationManager other;
    QCOMPARE(awaitRead(other), R"({"key": int 7})");
    const Announcements dropped(*m_manager);
    const Announcements announcements(other);
    m_service.leaveUnanswered();
    m_service.announceChange(BusFixture::path);
    TRY_COMPARE(m_service.unanswered(), 2);
    m_manager.reset();
    for (const int call : {0, 1})
        m_service.replyTo(call, "({'key': <7>},)");

    // The subscription of the other manager is its own.
    m_service.replyWith("({'key': <8>},)");
    m_service.announceChange(BusFixture::path);
    TRY_COMPARE(announcements.texts(), QStringList({R"({"key": int 7})", R"({"key": int 8})"}));
    QCOMPARE(dropped.count(), 0);
}

void ManagerLifetimeTest::aManagerMayBeDeletedInsideACallback_data()
{
    addRequestRows();
}

void ManagerLifetimeTest::aManagerMayBeDeletedInsideACallback()
{
    QFETCH(const bool, isChange);
    QFETCH(const bool, isRefused);

    if (isRefused)
        m_service.replyWithError("org.brenvik.ManagedConfiguration.Error.Forbidden", "no");
    const QString captured = QStringLiteral("still here");
    const auto afterwards = std::make_shared<QString>();
    const auto deleteManager = [this, afterwards, captured] {
        m_manager.reset();
        // What the callback holds lives until it returns.
        *afterwards = captured;
    };
    if (isChange)
        m_manager->changeConfiguration(Configuration(), [=](const Error &) { deleteManager(); });
    else
        m_manager->getConfiguration([=](const Configuration &, const Error &) { deleteManager(); });
    TRY_COMPARE(*afterwards, captured);
    QVERIFY(!m_manager);
}

void ManagerLifetimeTest::aManagerMayBeDeletedWhileItAnnounces()
{
    QObject::connect(m_manager.get(), &ConfigurationManager::configurationChanged, this,
                     [this] { m_manager.reset(); });
    m_service.announceChange(BusFixture::path);
    TRY_VERIFY(!m_manager);
}

void ManagerLifetimeTest::callbacksAreDestroyedBeforeTheirManager()
{
    m_service.leaveUnanswered();
    const auto held = std::make_shared<int>(7);
    m_manager->getConfiguration([held](const Configuration &, const Error &) {});
    m_manager->changeConfiguration(Configuration(), [held](const Error &) {});
    QCOMPARE(held.use_count(), 3L);
    long countAtDestruction = 0;
    const auto record = [&] { countAtDestruction = held.use_count(); };
    QObject::connect(m_manager.get(), &QObject::destroyed, m_manager.get(), record);
    m_manager.reset();
    QCOMPARE(countAtDestruction, 1L);
}

TARNVEL_BUS_TEST_MAIN(ManagerLifetimeTest)

#include "manager_lifetime_test.moc"
