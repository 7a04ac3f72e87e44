// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "bus_fixture.h"
#include "configuration_manager_p.h"
#include "description.h"
#include "message_log.h"

#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using Tarnvel::Testing::MethodCall;

namespace {

// The messages are the bus's own.
const QString noService = isOnDBusDaemon()
    ? QStringLiteral("{} error 1: The name org.brenvik.ManagedConfiguration was not "
                     "provided by any .service files")
    : QStringLiteral("{} error 1: The name is not activatable");
const QString died = isOnDBusDaemon()
    ? QStringLiteral("{} error 1: Message recipient disconnected from message bus without replying")
    : QStringLiteral("{} error 1: Remote peer disconnected");

} // namespace

class ServiceRestartTest : public QObject
{
    Q_OBJECT

public:
    explicit ServiceRestartTest(BusFixture &fixture) : m_service(fixture.service) { }

private Q_SLOTS:
    void init();
    void withoutAServiceEveryRequestFails();
    void aServiceThatAppearsLaterIsFound();
    void aServiceThatDiesInMidCallFailsTheCall();
    void aServiceThatDiesDuringAReReadAnnouncesAnEmptyConfiguration();
    void changesAreAnnouncedFromEachServiceThatAppears();

private:
    FakeService &m_service;
};

void ServiceRestartTest::init()
{
    m_service.stop();
    m_service.answerWith("({'key': <7>},)");
}

void ServiceRestartTest::withoutAServiceEveryRequestFails()
{
    MessageLog log;
    ConfigurationManager manager;
    Answers answers;
    manager.getConfiguration(answers.forReading());
    manager.changeConfiguration(Configuration(), answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(2));

    QCOMPARE(answers.texts(), QStringList({noService, noService}));
    QCOMPARE(log.take(), QStringList());
}

void ServiceRestartTest::aServiceThatAppearsLaterIsFound()
{
    ConfigurationManager manager;
    Answers answers;
    manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.texts(), QStringList(noService));

    QVERIFY(m_service.start());
    manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(2));
    QVERIFY(!answers.at(1).error);
    QCOMPARE(describe(answers.at(1).configuration), QStringLiteral("{\"key\": int 7}"));
}

void ServiceRestartTest::aServiceThatDiesInMidCallFailsTheCall()
{
    QVERIFY(m_service.start());
    int calls = 0;
    m_service.answerThrough([&](const MethodCall &) {
        if (++calls == 2)
            m_service.stop();
    });
    ConfigurationManager manager;
    Answers answers;
    manager.getConfiguration(answers.forReading());
    manager.changeConfiguration(Configuration(), answers.forChanging());
    QVERIFY(answers.waitFor(2));

    QCOMPARE(answers.texts(), QStringList({died, died}));
    QVERIFY(m_service.start());
    m_service.answerWith("({'key': <8>},)");
    manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(3));
    QCOMPARE(describe(answers.at(2).configuration), QStringLiteral("{\"key\": int 8}"));
}

void ServiceRestartTest::aServiceThatDiesDuringAReReadAnnouncesAnEmptyConfiguration()
{
    QVERIFY(m_service.start());
    ConfigurationManager manager;
    const Announcements announcements(manager);
    Answers answers;
    manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    m_service.answerThrough([&](const MethodCall &) { m_service.stop(); });
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(announcements.texts(), QStringList("{}"));
}

void ServiceRestartTest::changesAreAnnouncedFromEachServiceThatAppears()
{
    ConfigurationManager manager;
    const Announcements announcements(manager);
    Answers answers;
    for (int life = 1; life <= 3; ++life) {
        QVERIFY(m_service.start());
        m_service.answerWith(QStringLiteral("({'life': <%1>},)").arg(life));
        // The answer tells that the bus layer knows of the new owner of the name.
        manager.getConfiguration(answers.forReading());
        QVERIFY(answers.waitFor(life));
        m_service.announceChange(BusFixture::path);
        QTRY_COMPARE(announcements.count(), life);
        QCOMPARE(announcements.texts().constLast(), QStringLiteral("{\"life\": int %1}").arg(life));
        m_service.stop();
    }
}

TARNVEL_BUS_TEST_MAIN(ServiceRestartTest)

#include "service_restart_test.moc"
