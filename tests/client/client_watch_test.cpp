// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_fixture.h"
#include "program.h"

#include <QtTest/QTest>

using namespace Tarnvel::Testing;
using Tarnvel::Sandbox::MethodCall;

class ClientWatchTest : public QObject
{
    Q_OBJECT

public:
    explicit ClientWatchTest(BusFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup();

    void allValuesArePrintedAtTheStart();
    void aRefusalAtTheStartEndsIt();
    void eachDifferenceIsALine();
    void anAnnouncementWithoutADifferenceIsALineToo();
    void anEmptyConfigurationIsBelievedWhenItCanBeReadAgain();
    void aConfigurationThatCannotBeReadIsKept();
    void anAnnouncementBeforeTheStartIsNotLost();
    void theServiceIsFollowedWhenItGoesAndReturns();
    // The last: the bus does not come back for this process.
    void theLossOfTheBusEndsIt();

private:
    void start(const QString &configuration);
    void announce(const QString &configuration);

    BusFixture &m_fixture;
    QScopedPointer<Program> m_watch;
};

void ClientWatchTest::init()
{
    m_watch.reset(new Program("managed-configuration"));
}

void ClientWatchTest::cleanup()
{
    m_watch.reset();
}

void ClientWatchTest::start(const QString &configuration)
{
    m_fixture.service.answerWith(configuration);
    m_watch->start(clientArguments({"watch"}));
}

void ClientWatchTest::announce(const QString &configuration)
{
    m_fixture.service.answerWith(configuration);
    m_fixture.service.announceChange(BusFixture::path);
}

void ClientWatchTest::allValuesArePrintedAtTheStart()
{
    start("({'on': <true>, 'a/b': <1>, 'é\\n': <'é\\n'>, 'l': <['x', 'y']>, '': <3>, "
          "'n': <@a{sv} {'e': <@a{sv} {}>, 'x y': <@a{sv} {'z[0]': <[1, 2]>}>}>},)");
    QCOMPARE(m_watch->readLine(), QString("\"\" = 3"));
    QCOMPARE(m_watch->readLine(), QString("\"a/b\" = 1"));
    QCOMPARE(m_watch->readLine(), QString("\"é\\n\" = \"é\\n\""));
    QCOMPARE(m_watch->readLine(), QString("l = [\"x\",\"y\"]"));
    QCOMPARE(m_watch->readLine(), QString("n/e = {}"));
    QCOMPARE(m_watch->readLine(), QString("n/x y/\"z[0]\" = [1,2]"));
    QCOMPARE(m_watch->readLine(), QString("on = true"));
    announce("({'on': <true>},)");
    QCOMPARE(m_watch->readLine(), QString("removed: \"\" (was 3)"));
}

void ClientWatchTest::aRefusalAtTheStartEndsIt()
{
    m_fixture.service.answerWithError("org.brenvik.ManagedConfiguration.Error.InvalidUserId",
                                      "who?");
    const Outcome outcome = m_watch->run(clientArguments({"watch"}));
    QVERIFY2(outcome.errors.contains("error 7, InvalidUserId: who?\n"), qPrintable(outcome.errors));
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.status, 7);
}

void ClientWatchTest::eachDifferenceIsALine()
{
    start("({'a': <1>, 'l': <[1, 2]>, 'n': <@a{sv} {'x': <'1'>, 'y': <true>}>, 'z': <0>},)");
    for (const char *line : {"a = 1", "l = [1,2]", "n/x = \"1\"", "n/y = true", "z = 0"})
        QCOMPARE(m_watch->readLine(), QString(line));
    announce("({'a': <2>, 'l': <[2, 1]>, 'm': <'new'>, 'n': <@a{sv} {'x': <1>, 'y': <true>}>},)");
    QCOMPARE(m_watch->readLine(), QString("changed: a = 2 (was 1)"));
    QCOMPARE(m_watch->readLine(), QString("changed: l = [2,1] (was [1,2])"));
    QCOMPARE(m_watch->readLine(), QString("added: m = \"new\""));
    QCOMPARE(m_watch->readLine(), QString("changed: n/x = 1 (was \"1\")"));
    QCOMPARE(m_watch->readLine(), QString("removed: z (was 0)"));
    announce("({'a': <2>, 'l': <[2, 1]>, 'm': <'new'>, 'n': <5>},)");
    QCOMPARE(m_watch->readLine(), QString("added: n = 5"));
    QCOMPARE(m_watch->readLine(), QString("removed: n/x (was 1)"));
    QCOMPARE(m_watch->readLine(), QString("removed: n/y (was true)"));
}

void ClientWatchTest::anAnnouncementWithoutADifferenceIsALineToo()
{
    const QString configuration = "({'l': <[1, 2]>, 'n': <@a{sv} {'x': <1>}>},)";
    start(configuration);
    QCOMPARE(m_watch->readLine(), QString("l = [1,2]"));
    QCOMPARE(m_watch->readLine(), QString("n/x = 1"));
    announce(configuration);
    QCOMPARE(m_watch->readLine(), QString("unchanged"));
    m_fixture.service.announceChange(BusFixture::path);
    QCOMPARE(m_watch->readLine(), QString("unchanged"));
}

void ClientWatchTest::anEmptyConfigurationIsBelievedWhenItCanBeReadAgain()
{
    start("({'z': <0>},)");
    QCOMPARE(m_watch->readLine(), QString("z = 0"));
    announce("(@a{sv} {},)");
    QCOMPARE(m_watch->readLine(), QString("removed: z (was 0)"));
    announce("({'z': <0>},)");
    QCOMPARE(m_watch->readLine(), QString("added: z = 0"));
}

void ClientWatchTest::aConfigurationThatCannotBeReadIsKept()
{
    start("({'z': <0>},)");
    QCOMPARE(m_watch->readLine(), QString("z = 0"));
    m_fixture.service.answerWithError("org.brenvik.ManagedConfiguration.Error.Internal", "no disk");
    m_fixture.service.announceChange(BusFixture::path);
    QCOMPARE(m_watch->readErrorLine(),
             QString("managed-configuration: the service or the bus failed with error 1, Internal: "
                     "no disk"));
    announce("({'z': <1>},)");
    QCOMPARE(m_watch->readLine(), QString("changed: z = 1 (was 0)"));
}

void ClientWatchTest::anAnnouncementBeforeTheStartIsNotLost()
{
    QList<MethodCall> calls;
    m_fixture.service.answerThrough([&](const MethodCall &call) { calls.append(call); });
    m_watch->start(clientArguments({"watch"}));
    QTRY_COMPARE(calls.size(), 1);
    m_fixture.service.announceChange(BusFixture::path);
    QTRY_COMPARE(calls.size(), 2);
    calls.at(0).reply(parseValue("({'z': <0>},)"));
    calls.at(1).reply(parseValue("({'z': <1>},)"));
    QCOMPARE(m_watch->readLine(), QString("z = 0"));
    QCOMPARE(m_watch->readLine(), QString("changed: z = 1 (was 0)"));
}

void ClientWatchTest::theServiceIsFollowedWhenItGoesAndReturns()
{
    start("({'z': <0>},)");
    QCOMPARE(m_watch->readLine(), QString("z = 0"));
    m_fixture.service.stop();
    QCOMPARE(m_watch->readErrorLine(),
             QString("managed-configuration: the service has gone; waiting for it to return"));
    m_fixture.service.answerWith("({'z': <1>},)");
    QVERIFY(m_fixture.service.start());
    QCOMPARE(m_watch->readErrorLine(), QString("managed-configuration: the service has returned"));
    QCOMPARE(m_watch->readLine(), QString("changed: z = 1 (was 0)"));
    announce("({'z': <2>},)");
    QCOMPARE(m_watch->readLine(), QString("changed: z = 2 (was 1)"));
}

void ClientWatchTest::theLossOfTheBusEndsIt()
{
    start("({'z': <0>},)");
    QCOMPARE(m_watch->readLine(), QString("z = 0"));
    m_fixture.bus.stop();
    const Outcome outcome = m_watch->finish();
    QVERIFY2(outcome.errors.contains(" is lost\n"), qPrintable(outcome.errors));
    QCOMPARE(outcome.status, 69);
}

TARNVEL_BUS_TEST_MAIN(ClientWatchTest)

#include "client_watch_test.moc"
