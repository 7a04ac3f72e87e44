// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_fixture.h"
#include "program.h"

#include <QtTest/QTest>

using namespace Tarnvel::Testing;

class ClientWatchTest : public QObject
{
    Q_OBJECT

public:
    explicit ClientWatchTest(BusFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup();
    void allValuesArePrintedAtTheStart();
    void refusalAtTheStartEndsIt();
    void eachDifferenceIsALine();
    void announcedEmptyConfigurationIsReadAgain();
    void announcementDuringTheFirstReadIsNotLost_data();
    void announcementDuringTheFirstReadIsNotLost();
    void serviceIsFollowedWhenItGoesAndReturns();
    // The last: the bus does not come back for this process.
    void lossOfTheBusEndsIt();

private:
    void start(const QString &configuration);
    void announce(const QString &configuration);
    QStringList readLines(int count);

    BusFixture &m_fixture;
    QScopedPointer<Program> m_watch;
    // Of the calls that were left without a reply.
    QList<std::function<void(const QString &)>> m_replies;
};

void ClientWatchTest::init()
{
    m_watch.reset(new Program("managed-configuration"));
    m_replies.clear();
    m_fixture.service.stop();
    QVERIFY(m_fixture.service.start());
}

void ClientWatchTest::cleanup()
{
    m_watch.reset();
}

void ClientWatchTest::start(const QString &configuration)
{
    m_fixture.service.replyWith(configuration);
    m_watch->start(clientArguments({"watch"}));
}

void ClientWatchTest::announce(const QString &configuration)
{
    m_fixture.service.replyWith(configuration);
    m_fixture.service.announceChange(BusFixture::path);
}

QStringList ClientWatchTest::readLines(int count)
{
    QStringList lines;
    while (lines.size() < count)
        lines.append(m_watch->readLine());
    return lines;
}

void ClientWatchTest::allValuesArePrintedAtTheStart()
{
    start("({'on': <true>, 'a/b': <1>, 'é\\n': <'é\\n'>, 'l': <['x', 'y']>, '': <3>, "
          "'n': <@a{sv} {'e': <@a{sv} {}>, 'x y': <@a{sv} {'z[0]': <[1, 2]>}>}>},)");
    const QStringList lines {"\"\" = 3",          "\"a/b\" = 1", "\"é\\n\" = \"é\\n\"",
                             "l = [\"x\",\"y\"]", "n/e = {}",    "n/x y/\"z[0]\" = [1,2]",
                             "on = true"};
    QCOMPARE(readLines(lines.size()), lines);
    announce("({'on': <true>},)");
    QCOMPARE(m_watch->readLine(), QString("removed: \"\" (was 3)"));
}

void ClientWatchTest::refusalAtTheStartEndsIt()
{
    m_fixture.service.replyWithError("org.brenvik.ManagedConfiguration.Error.InvalidUserId",
                                     "who?");
    const Outcome outcome = m_watch->run(clientArguments({"watch"}));
    QVERIFY2(outcome.errors.contains("error 7, InvalidUserId: who?\n"), qPrintable(outcome.errors));
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.status, 7);
}

void ClientWatchTest::eachDifferenceIsALine()
{
    start("({'a': <1>, 'l': <[1, 2]>, 'n': <@a{sv} {'x': <'1'>, 'y': <true>}>, 'z': <0>},)");
    readLines(5);
    announce("({'a': <2>, 'l': <[2, 1]>, 'm': <'new'>, 'n': <@a{sv} {'x': <1>, 'y': <true>}>},)");
    QCOMPARE(
        readLines(5),
        QStringList({"changed: a = 2 (was 1)", "changed: l = [2,1] (was [1,2])",
                     "added: m = \"new\"", "changed: n/x = 1 (was \"1\")", "removed: z (was 0)"}));
    for (int time = 0; time < 2; ++time) {
        announce("({'a': <2>, 'l': <[2, 1]>, 'm': <'new'>, 'n': <5>},)");
        const QStringList lines {"added: n = 5", "removed: n/x (was 1)", "removed: n/y (was true)"};
        QCOMPARE(readLines(time == 0 ? 3 : 1), time == 0 ? lines : QStringList("unchanged"));
    }
}

// The library announces an empty configuration also when it could not read the new one.
void ClientWatchTest::announcedEmptyConfigurationIsReadAgain()
{
    start("({'z': <0>},)");
    QCOMPARE(m_watch->readLine(), QString("z = 0"));
    announce("(@a{sv} {},)");
    QCOMPARE(m_watch->readLine(), QString("removed: z (was 0)"));
    announce("({'z': <0>},)");
    QCOMPARE(m_watch->readLine(), QString("added: z = 0"));
    m_fixture.service.replyWithError("org.brenvik.ManagedConfiguration.Error.Internal", "no disk");
    m_fixture.service.announceChange(BusFixture::path);
    QCOMPARE(m_watch->readErrorLine(),
             QString("managed-configuration: the service or the bus failed with error 1, Internal: "
                     "no disk"));
    announce("({'z': <1>},)");
    QCOMPARE(m_watch->readLine(), QString("changed: z = 1 (was 0)"));
}

void ClientWatchTest::announcementDuringTheFirstReadIsNotLost_data()
{
    QTest::addColumn<int>("first");

    QTest::newRow("the first read is answered first") << 0;
    QTest::newRow("the read after the announcement is answered first") << 1;
}

void ClientWatchTest::announcementDuringTheFirstReadIsNotLost()
{
    QFETCH(int, first);
    m_fixture.service.replyThrough([this](const auto &call) {
        m_replies.append([call](const QString &values) { call.reply(parseValue(values)); });
    });
    m_watch->start(clientArguments({"watch"}));
    QTRY_COMPARE_WITH_TIMEOUT(m_replies.size(), 1, 60000);
    m_fixture.service.announceChange(BusFixture::path);
    QTRY_COMPARE_WITH_TIMEOUT(m_replies.size(), 2, 60000);
    for (const int index : {first, 1 - first})
        m_replies.at(index)(QString("({'z': <%1>},)").arg(index));
    QCOMPARE(m_watch->readLine(), QString("z = 0"));
    QCOMPARE(m_watch->readLine(), QString("changed: z = 1 (was 0)"));
}

void ClientWatchTest::serviceIsFollowedWhenItGoesAndReturns()
{
    start("({'z': <0>},)");
    QCOMPARE(m_watch->readLine(), QString("z = 0"));
    m_fixture.service.stop();
    QCOMPARE(m_watch->readErrorLine(),
             QString("managed-configuration: the service has gone; waiting for it to return"));
    m_fixture.service.replyWith("({'z': <1>},)");
    QVERIFY(m_fixture.service.start());
    QCOMPARE(m_watch->readErrorLine(), QString("managed-configuration: the service has returned"));
    QCOMPARE(m_watch->readLine(), QString("changed: z = 1 (was 0)"));
    announce("({'z': <2>},)");
    QCOMPARE(m_watch->readLine(), QString("changed: z = 2 (was 1)"));
}

void ClientWatchTest::lossOfTheBusEndsIt()
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
