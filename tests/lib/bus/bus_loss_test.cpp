// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "bus_fixture.h"
#include "configuration_manager_p.h"

#include <QtDBus/QDBusConnection>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using Tarnvel::Testing::MethodCall;

class BusLossTest : public QObject
{
    Q_OBJECT

public:
    explicit BusLossTest(BusFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    // In this order: a process gets one system bus in its life.
    void callsUnderWayFailWhenTheBusDies();
    void laterRequestsFailFromTheEventLoop();
    void aLaterReReadAnnouncesAnEmptyConfiguration();
    void aManagerMadeAfterwardsFailsLikewise();
    void aBusThatComesBackIsNotRejoined();

private:
    void expectDisconnection(ConfigurationManagerPrivate &requests);

    BusFixture &m_fixture;
    ConfigurationManager m_manager;
    ConfigurationManagerPrivate m_requests {&m_manager};
};

void BusLossTest::callsUnderWayFailWhenTheBusDies()
{
    int calls = 0;
    m_fixture.service.answerThrough([&](const MethodCall &) { ++calls; });
    const Announcements announcements(m_manager);
    Answers answers;
    m_requests.getConfiguration(answers.forReading());
    m_requests.changeConfiguration(Configuration(), answers.forChanging());
    m_requests.onConfigurationChanged();
    QTRY_COMPARE(calls, 3);
    m_fixture.bus.stop();

    QVERIFY(answers.waitFor(2));
    QVERIFY(answers.at(0).configuration.isEmpty());
    for (int index = 0; index < 2; ++index) {
        QCOMPARE(answers.at(index).error.code(), Error::Internal);
        QVERIFY(!answers.at(index).error.message().isEmpty());
    }
    QTRY_COMPARE(announcements.texts(), QStringList("{}"));
    QTRY_VERIFY(!QDBusConnection::systemBus().isConnected());
}

void BusLossTest::laterRequestsFailFromTheEventLoop()
{
    expectDisconnection(m_requests);
}

void BusLossTest::aLaterReReadAnnouncesAnEmptyConfiguration()
{
    const Announcements announcements(m_manager);
    m_requests.onConfigurationChanged();
    QCOMPARE(announcements.count(), 0);
    QTRY_COMPARE(announcements.texts(), QStringList("{}"));
}

void BusLossTest::aManagerMadeAfterwardsFailsLikewise()
{
    ConfigurationManagerPrivate requests(&m_manager);
    expectDisconnection(requests);
}

void BusLossTest::aBusThatComesBackIsNotRejoined()
{
    QCOMPARE(m_fixture.bus.start(), QString());
    m_fixture.service.stop();
    QVERIFY(m_fixture.service.start());
    expectDisconnection(m_requests);
}

void BusLossTest::expectDisconnection(ConfigurationManagerPrivate &requests)
{
    Answers answers;
    requests.getConfiguration(answers.forReading());
    requests.changeConfiguration(Configuration(), answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(2));
    const QString failure = QStringLiteral("{} error 1: Not connected to D-Bus server");
    QCOMPARE(answers.texts(), QStringList({failure, failure}));
}

TARNVEL_BUS_TEST_MAIN(BusLossTest)

#include "bus_loss_test.moc"
