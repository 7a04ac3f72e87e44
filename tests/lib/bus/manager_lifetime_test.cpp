// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "bus_fixture.h"
#include "configuration_manager_p.h"

#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <memory>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using Tarnvel::Testing::MethodCall;

class ManagerLifetimeTest : public QObject
{
    Q_OBJECT

public:
    explicit ManagerLifetimeTest(BusFixture &fixture) : m_service(fixture.service) { }

private Q_SLOTS:
    void init();
    void callbacksOfADestroyedManagerAreNeverCalled();
    void reReadsOfADestroyedManagerAreNotAnnounced();
    void aManagerMayBeDeletedInsideACallback_data();
    void aManagerMayBeDeletedInsideACallback();
    void aManagerMayBeDeletedWhileItAnnounces();
    void requestsOfAnotherManagerGoOn();
    void aCallbackDiesWithItsManager();

private:
    FakeService &m_service;
};

void ManagerLifetimeTest::init()
{
    m_service.answerWith("({'key': <7>},)");
}

void ManagerLifetimeTest::callbacksOfADestroyedManagerAreNeverCalled()
{
    QList<MethodCall> calls;
    m_service.answerThrough([&](const MethodCall &call) { calls.append(call); });
    Answers dropped;
    auto manager = std::make_unique<ConfigurationManager>();
    manager->getConfiguration(dropped.forReading());
    manager->changeConfiguration(Configuration(), dropped.forChanging());
    QTRY_COMPARE(calls.count(), 2);
    manager.reset();
    for (const MethodCall &call : qAsConst(calls))
        call.reply(parseValue("(@a{sv} {},)"));

    m_service.answerWith("({'key': <7>},)");
    ConfigurationManager later;
    Answers answers;
    later.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(dropped.count(), 0);
}

void ManagerLifetimeTest::reReadsOfADestroyedManagerAreNotAnnounced()
{
    QList<MethodCall> calls;
    auto manager = std::make_unique<ConfigurationManager>();
    const Announcements announcements(*manager);
    Answers answers;
    manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    m_service.answerThrough([&](const MethodCall &call) { calls.append(call); });
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(calls.count(), 1);
    manager.reset();
    calls.first().reply(parseValue("(@a{sv} {},)"));

    m_service.answerWith("({'key': <7>},)");
    ConfigurationManager later;
    later.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(2));
    QCOMPARE(announcements.count(), 0);
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
        m_service.answerWithError("org.brenvik.ManagedConfiguration.Error.Forbidden", "no");
    auto manager = std::make_unique<ConfigurationManager>();
    const QString captured = QStringLiteral("still here");
    QString afterwards;
    const auto deleteManager = [&manager, &afterwards, captured] {
        manager.reset();
        // What the callback holds lives until it returns.
        afterwards = captured;
    };
    if (isChange)
        manager->changeConfiguration(Configuration(), [=](const Error &) { deleteManager(); });
    else
        manager->getConfiguration([=](const Configuration &, const Error &) { deleteManager(); });
    QTRY_COMPARE(afterwards, captured);
    QVERIFY(!manager);
}

void ManagerLifetimeTest::aManagerMayBeDeletedWhileItAnnounces()
{
    auto manager = std::make_unique<ConfigurationManager>();
    Answers answers;
    manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QObject::connect(manager.get(), &ConfigurationManager::configurationChanged, this,
                     [&] { manager.reset(); });
    m_service.announceChange(BusFixture::path);
    QTRY_VERIFY(!manager);
}

void ManagerLifetimeTest::requestsOfAnotherManagerGoOn()
{
    QList<MethodCall> calls;
    m_service.answerThrough([&](const MethodCall &call) { calls.append(call); });
    ConfigurationManager stays;
    auto goes = std::make_unique<ConfigurationManager>();
    Answers answers;
    Answers dropped;
    goes->getConfiguration(dropped.forReading());
    stays.getConfiguration(answers.forReading());
    QTRY_COMPARE(calls.count(), 2);
    goes.reset();
    for (const MethodCall &call : qAsConst(calls))
        call.reply(parseValue("({'key': <7>},)"));
    QVERIFY(answers.waitFor(1));
    QCOMPARE(dropped.count(), 0);

    // The subscription of the manager that stays is its own.
    const Announcements announcements(stays);
    m_service.answerWith("({'key': <8>},)");
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(announcements.texts(), QStringList("{\"key\": int 8}"));
}

void ManagerLifetimeTest::aCallbackDiesWithItsManager()
{
    m_service.answerThrough([](const MethodCall &) {});
    const auto held = std::make_shared<int>(7);
    auto manager = std::make_unique<ConfigurationManager>();
    manager->getConfiguration([held](const Configuration &, const Error &) {});
    manager->changeConfiguration(Configuration(), [held](const Error &) {});
    QCOMPARE(held.use_count(), 3L);
    manager.reset();
    QCOMPARE(held.use_count(), 1L);
}

TARNVEL_BUS_TEST_MAIN(ManagerLifetimeTest)

#include "manager_lifetime_test.moc"
