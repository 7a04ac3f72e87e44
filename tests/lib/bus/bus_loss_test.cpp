// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "configuration_manager_p.h"

#include <QtDBus/QDBusConnection>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

const QString notConnected = QStringLiteral("{} error 1: Not connected to D-Bus server");

} // namespace

/*! Its functions come in this order: a process gets one system bus in its life. */
class BusLossTest : public QObject
{
    Q_OBJECT

public:
    explicit BusLossTest(BusFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void pendingCallsAndLaterOnesFailWhenTheBusDies();
    void aBusThatComesBackIsNotRejoined();

private:
    BusFixture &m_fixture;
    ConfigurationManager m_manager;
    ConfigurationManagerPrivate m_requests {&m_manager};
};

void BusLossTest::pendingCallsAndLaterOnesFailWhenTheBusDies()
{
    m_fixture.service.leaveUnanswered();
    const Announcements announcements(m_manager);
    Answers answers;
    m_requests.getConfiguration(answers.forReading());
    m_requests.changeConfiguration(Configuration(), answers.forChanging());
    m_requests.onConfigurationChanged();
    TRY_COMPARE(m_fixture.service.unanswered(), 3);
    m_fixture.bus.stop();

    QVERIFY(answers.waitFor(2));
    const QStringList texts = answers.texts();
    for (const QString &text : texts)
        QVERIFY2(text.startsWith("{} error 1: "), qPrintable(text));
    TRY_COMPARE(announcements.texts(), QStringList("{}"));
    TRY_VERIFY(!QDBusConnection::systemBus().isConnected());

    QCOMPARE(awaitRead(m_requests), notConnected);
    m_requests.onConfigurationChanged();
    TRY_COMPARE(announcements.texts(), QStringList({"{}", "{}"}));
}

void BusLossTest::aBusThatComesBackIsNotRejoined()
{
    QCOMPARE(m_fixture.bus.start(), QString());
    m_fixture.service.reset();
    QVERIFY(m_fixture.service.start());
    QCOMPARE(awaitRead(m_manager), notConnected);
    ConfigurationManager later;
    QCOMPARE(awaitChange(later, Configuration()), notConnected);
}

TARNVEL_BUS_TEST_MAIN(BusLossTest)

#include "bus_loss_test.moc"
