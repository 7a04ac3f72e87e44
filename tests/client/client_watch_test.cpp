// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "program.h"

#include <QtCore/QDateTime>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace Tarnvel::Testing;

class ClientWatchTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void init() override
    {
        // The old client first, or it would read from the new service.
        m_watch.reset();
        BusTest::init();
        m_watch.reset(new Program("managed-configuration"));
    }

    void allValuesArePrintedAtTheStart()
    {
        start("({'on': <true>, 'a/b': <1>, 'é\\n': <'é\\n'>, 'l': <['x', 'y']>, '': <3>, "
              "'n': <@a{sv} {'e': <@a{sv} {}>, 'x y': <@a{sv} {'z[0]': <[1, 2]>}>}>},)");
        const QStringList lines {"\"\" = 3",          "\"a/b\" = 1", "\"é\\n\" = \"é\\n\"",
                                 "l = [\"x\",\"y\"]", "n/e = {}",    "n/x y/\"z[0]\" = [1,2]",
                                 "on = true"};
        QCOMPARE(readLines(lines.size()), lines);
        announce("({'on': <true>},)");
        QCOMPARE(m_watch->readLine(), "removed: \"\" (was 3)");
    }

    void onlyThePathIsWatched()
    {
        start("({'n': <{'l': <[1, 2]>, 's': <'x'>}>, 'z': <0>},)", {"n"});
        QCOMPARE(readLines(2), QStringList({"n/l = [1,2]", "n/s = \"x\""}));
        announce("({'n': <{'l': <[1, 2]>, 's': <'x'>}>, 'z': <1>},)");
        announce("({'z': <2>},)");
        QCOMPARE(readLines(2),
                 QStringList({"removed: n/l (was [1,2])", "removed: n/s (was \"x\")"}));
    }

    void watchedPathMayHaveNoValueYet()
    {
        start("({'z': <0>},)", {"l[1]"});
        TRY_COMPARE(m_service.calls().size(), 1);
        announce("({'l': <[1, 2]>},)");
        QCOMPARE(m_watch->readLine(), "added: l[1] = 2");
    }

    void differencesAreJsonObjects()
    {
        start("({'n': <{'s': <'x'>}>, 'z': <[0]>},)", {"--json"});
        QStringList lines = readLines(2);
        announce("({'n': <{'s': <'x'>}>, 'z': <[0]>},)");
        announce("({'n': <{'s': <true>}>, 'y': <{'s': <'x'>}>},)");
        lines += readLines(3);
        const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
        QStringList objects;
        for (const QString &line : qAsConst(lines)) {
            QJsonObject object = QJsonDocument::fromJson(line.toUtf8()).object();
            const QString time = object.take("time").toString();
            QVERIFY2(time.size() == now.size() && time <= now && time.endsWith('Z'),
                     qPrintable(line));
            objects.append(QJsonDocument(object).toJson(QJsonDocument::Compact));
        }
        QCOMPARE(objects,
                 QStringList({R"({"new":"x","path":"n/s"})", R"({"new":[0],"path":"z"})",
                              R"({"new":true,"old":"x","path":"n/s"})",
                              R"({"new":"x","path":"y/s"})", R"({"old":[0],"path":"z"})"}));
    }

    void unseenSettingsAreToldOnce()
    {
        start("({'l': <[0.5]>, 'm': <[int64 1]>, 'z': <0>},)");
        QCOMPARE(m_watch->readLine(), "z = 0");
        announce("({'l': <[0.5]>, 'm': <[int64 1]>, 'z': <1>},)");
        QCOMPARE(m_watch->readLine(), "changed: z = 1 (was 0)");
        m_service.stop();
        QCOMPARE(m_watch->readErrorLine(),
                 "managed-configuration: Unsupported type for arrays:  double");
        QCOMPARE(m_watch->readErrorLine(),
                 "managed-configuration: Unsupported type for arrays:  qlonglong");
        QCOMPARE(m_watch->readErrorLine(),
                 "managed-configuration: applications do not see these settings: l of D-Bus type "
                 "ad, m of D-Bus "
                 "type ax");
        QCOMPARE(m_watch->readErrorLine(),
                 "managed-configuration: the service has gone; waiting for it to return");
    }

    void refusalAtTheStartEndsIt()
    {
        m_service.replyWithError("org.brenvik.ManagedConfiguration.Error.InvalidUserId", "who?");
        const Outcome outcome = m_watch->run(clientArguments({"watch"}));
        QVERIFY2(outcome.errors.contains("error 7, InvalidUserId: who?\n"),
                 qPrintable(outcome.errors));
        QCOMPARE(outcome.output, QString());
        QCOMPARE(outcome.status, 7);
    }

    void eachDifferenceIsALine()
    {
        start("({'a': <1>, 'l': <[1, 2]>, 'n': <@a{sv} {'x': <'1'>, 'y': <true>}>, 'z': <0>},)");
        readLines(5);
        announce(
            "({'a': <2>, 'l': <[2, 1]>, 'm': <'new'>, 'n': <@a{sv} {'x': <1>, 'y': <true>}>},)");
        QCOMPARE(readLines(5),
                 QStringList({"changed: a = 2 (was 1)", "changed: l = [2,1] (was [1,2])",
                              "added: m = \"new\"", "changed: n/x = 1 (was \"1\")",
                              "removed: z (was 0)"}));
        for (int time = 0; time < 2; ++time) {
            announce("({'a': <2>, 'l': <[2, 1]>, 'm': <'new'>, 'n': <5>},)");
            const QStringList lines {"added: n = 5", "removed: n/x (was 1)",
                                     "removed: n/y (was true)"};
            QCOMPARE(readLines(time == 0 ? 3 : 1), time == 0 ? lines : QStringList("unchanged"));
        }
    }

    // The library announces an empty configuration also when it could not read the new one.
    void announcedEmptyConfigurationIsReadAgain()
    {
        start("({'z': <0>},)");
        QCOMPARE(m_watch->readLine(), "z = 0");
        announce("(@a{sv} {},)");
        QCOMPARE(m_watch->readLine(), "removed: z (was 0)");
        announce("({'z': <0>},)");
        QCOMPARE(m_watch->readLine(), "added: z = 0");
        m_service.replyWithError("org.brenvik.ManagedConfiguration.Error.Internal", "no disk");
        m_service.announceChange(BusFixture::path);
        QCOMPARE(m_watch->readErrorLine(),
                 "managed-configuration: the service or the bus failed with error 1, Internal: "
                 "no disk");
        announce("({'z': <1>},)");
        QCOMPARE(m_watch->readLine(), "changed: z = 1 (was 0)");
    }

    void announcementDuringTheFirstReadIsNotLost_data()
    {
        QTest::addColumn<int>("first");

        QTest::newRow("the first read is answered first") << 0;
        QTest::newRow("the read after the announcement is answered first") << 1;
    }

    void announcementDuringTheFirstReadIsNotLost()
    {
        QFETCH(int, first);
        m_service.leaveUnanswered();
        m_watch->start(clientArguments({"watch"}));
        TRY_COMPARE(m_service.unanswered(), 1);
        m_service.announceChange(BusFixture::path);
        TRY_COMPARE(m_service.unanswered(), 2);
        for (const int index : {first, 1 - first})
            m_service.replyTo(index, QString("({'z': <%1>},)").arg(index));
        QCOMPARE(m_watch->readLine(), "z = 0");
        QCOMPARE(m_watch->readLine(), "changed: z = 1 (was 0)");
    }

    void serviceIsFollowedWhenItGoesAndReturns()
    {
        start("({'z': <0>},)");
        QCOMPARE(m_watch->readLine(), "z = 0");
        m_service.stop();
        QCOMPARE(m_watch->readErrorLine(),
                 "managed-configuration: the service has gone; waiting for it to return");
        m_service.replyWith("({'z': <1>},)");
        QVERIFY(m_service.start());
        QCOMPARE(m_watch->readErrorLine(), "managed-configuration: the service has returned");
        QCOMPARE(m_watch->readLine(), "changed: z = 1 (was 0)");
        announce("({'z': <2>},)");
        QCOMPARE(m_watch->readLine(), "changed: z = 2 (was 1)");
    }

    // The last: the bus does not come back for this process.
    void lossOfTheBusEndsIt()
    {
        start("({'z': <0>},)");
        QCOMPARE(m_watch->readLine(), "z = 0");
        m_fixture.bus.stop();
        const Outcome outcome = m_watch->finish();
        QVERIFY2(outcome.errors.contains(" is lost\n"), qPrintable(outcome.errors));
        QCOMPARE(outcome.status, 69);
    }

private:
    void start(const QString &configuration, const QStringList &arguments = {})
    {
        m_service.replyWith(configuration);
        m_watch->start(clientArguments(QStringList("watch") + arguments));
    }

    void announce(const QString &configuration)
    {
        m_service.replyWith(configuration);
        m_service.announceChange(BusFixture::path);
    }

    QStringList readLines(int count)
    {
        QStringList lines;
        while (lines.size() < count)
            lines.append(m_watch->readLine());
        return lines;
    }

    QScopedPointer<Program> m_watch;
};

TARNVEL_BUS_TEST_MAIN(ClientWatchTest)

#include "client_watch_test.moc"
