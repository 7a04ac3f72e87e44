// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "configuration_manager_p.h"
#include "message_log.h"

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

// The messages are the bus's own.
const QString noService = isOnDBusDaemon()
    ? QStringLiteral("{} error 1: The name org.brenvik.ManagedConfiguration was not provided by "
                     "any .service files")
    : QStringLiteral("{} error 1: The name is not activatable");
const QString died = isOnDBusDaemon()
    ? QStringLiteral("{} error 1: Message recipient disconnected from message bus without replying")
    : QStringLiteral("{} error 1: Remote peer disconnected");

} // namespace

class ServiceRestartTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void withoutAServiceEveryRequestFailsUntilOneAppears();
    void aServiceThatDiesInMidCallFailsTheCall();
    void changesAreAnnouncedFromEachServiceThatAppears();
};

void ServiceRestartTest::withoutAServiceEveryRequestFailsUntilOneAppears()
{
    m_service.stop();
    MessageLog log;
    ConfigurationManager manager;
    const Answers answers;
    manager.getConfiguration(answers.forReading());
    manager.changeConfiguration(Configuration(), answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(2));
    QCOMPARE(answers.texts(), QStringList({noService, noService}));
    QCOMPARE(log.take(), QStringList());

    QVERIFY(m_service.start());
    QCOMPARE(awaitRead(manager), R"({"key": int 7})");
}

void ServiceRestartTest::aServiceThatDiesInMidCallFailsTheCall()
{
    m_service.leaveUnanswered();
    ConfigurationManager manager;
    ConfigurationManagerPrivate requests(&manager);
    const Announcements announcements(manager);
    const Answers answers;
    requests.getConfiguration(answers.forReading());
    requests.changeConfiguration(Configuration(), answers.forChanging());
    requests.onConfigurationChanged();
    TRY_COMPARE(m_service.unanswered(), 3);
    m_service.stop();
    QVERIFY(answers.waitFor(2));
    QCOMPARE(answers.texts(), QStringList({died, died}));
    TRY_COMPARE(announcements.texts(), QStringList("{}"));

    m_service.replyWith("({'key': <8>},)");
    QVERIFY(m_service.start());
    QCOMPARE(awaitRead(requests), R"({"key": int 8})");
}

void ServiceRestartTest::changesAreAnnouncedFromEachServiceThatAppears()
{
    m_service.stop();
    ConfigurationManager manager;
    const Announcements announcements(manager);
    for (int life = 1; life <= 3; ++life) {
        m_service.replyWith(QString("({'life': <%1>},)").arg(life));
        QVERIFY(m_service.start());
        // Once there is an answer, Qt D-Bus knows the new owner of the name.
        const QString configuration = QString(R"({"life": int %1})").arg(life);
        QCOMPARE(awaitRead(manager), configuration);
        m_service.announceChange(BusFixture::path);
        TRY_COMPARE(announcements.count(), life);
        QCOMPARE(announcements.texts().constLast(), configuration);
        m_service.stop();
    }
}

TARNVEL_BUS_TEST_MAIN(ServiceRestartTest)

#include "service_restart_test.moc"
