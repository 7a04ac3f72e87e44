// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "program.h"

using namespace Tarnvel::Testing;

// What a change would remove without a word.
class ClientChangesTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void unseenSettingsAreTold_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("told");

        const QPair<const char *, const char *> rows[] {
            {"byte 1", "k of D-Bus type y (byte)"},
            {"int16 1", "k of D-Bus type n (int16)"},
            {"uint16 1", "k of D-Bus type q (uint16)"},
            {"uint32 1", "k of D-Bus type u (uint32)"},
            {"int64 1", "k of D-Bus type x (int64)"},
            {"uint64 1", "k of D-Bus type t (uint64)"},
            {"0.5", "k of D-Bus type d (double)"},
            {"objectpath '/'", "k of D-Bus type o (object path)"},
            {"signature 's'", "k of D-Bus type g (signature)"},
            {"<1>", "k of D-Bus type v (variant)"},
            {"@ai []", "k of D-Bus type ai (an empty list)"},
            {"@ab []", "k of D-Bus type ab (an empty list)"},
            {"b'bytes'", "k of D-Bus type ay"},
            {"[0.5]", "k of D-Bus type ad"},
            {"(1, 'x')", "k of D-Bus type (is)"},
            {"{'x': 'y'}", "k of D-Bus type a{ss}"},
            {"{1: <2>}", "k of D-Bus type a{iv}"},
            {"@a{sd} {}", "k of D-Bus type a{sd}"},
            {"{'x/y': <{'z': <0.5>}>}", "k/\"x/y\"/z of D-Bus type d (double)"},
            {"{objectpath '/o': <0.5>, '/p': <1>}", "k/\"/o\" of D-Bus type d (double)"},
            {"1", ""},
            {"@as []", ""},
            {"[true]", ""},
            {"@a{sv} {}", ""},
            {"{signature 's': <'x'>}", ""},
        };
        for (const auto &[value, told] : rows)
            QTest::newRow(value) << value << told;
    }

    void unseenSettingsAreTold()
    {
        QFETCH(QString, value);
        QFETCH(QString, told);
        m_service.replyWith(QString("({'k': <%1>, 'l': <1>},)").arg(value));
        const QString errors = runClient({"get"}).errors;
        QCOMPARE(errors.contains("do not see"), !told.isEmpty());
        QVERIFY2(told.isEmpty() || errors.endsWith("applications do not see " + told + "\n"),
                 qPrintable(errors));
        QCOMPARE(runClient({"get", "l"}).errors.contains("do not see"), false);
        if (told.isEmpty())
            return;

        const Outcome outcome = runClient({"set", "k/new:int=1"});
        QVERIFY2(outcome.errors.contains("the change would remove " + told + "\n"),
                 qPrintable(outcome.errors));
        QCOMPARE(outcome.status, 64);
        QCOMPARE(changes(), QStringList());
    }

    void changeRemovesNothingUnnamed_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("refusal");
        QTest::addColumn<QString>("change");

        const QString all = "n/d of D-Bus type d (double), n/e of D-Bus type ai (an empty list), "
                            "n/u of D-Bus type u (uint32)\n";
        QTest::newRow("another value") << QStringList {"n/a=2"} << "the change would remove " + all
                                       << "({'n': <{'a': <2>}>},)";
        QTest::newRow("the whole value")
            << QStringList {"n={}"} << "the change would remove " + all << "({'n': <@a{sv} {}>},)";
        QTest::newRow("two of them") << QStringList {"n/d:int=1", "n/e:ints=[1]"}
                                     << "the change would remove n/u of D-Bus type u (uint32)\n"
                                     << "({'n': <{'a': <1>, 'd': <1>, 'e': <[1]>}>},)";
        QTest::newRow("all of them")
            << QStringList {"n/d:int=1", "n/e:ints=[1]", "n/u:int=7"} << QString()
            << "({'n': <{'a': <1>, 'd': <1>, 'e': <[1]>, 'u': <7>}>},)";
        QTest::newRow("below a typed value")
            << QStringList {"n:configuration={\"a\":3}", "n/b:int=1"} << QString()
            << "({'n': <{'a': <3>, 'b': <1>}>},)";
        QTest::newRow("in a value of another type")
            << QStringList {"x/a:int=1"} << "the change would remove x of D-Bus type x (int64)\n"
            << "({'x': <{'a': <1>}>},)";
        QTest::newRow("beside them")
            << QStringList {"m/a=2"} << QString() << "({'m': <{'a': <2>}>},)";
    }

    void changeRemovesNothingUnnamed()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, refusal);
        QFETCH(QString, change);
        m_service.replyWith("({'m': <{'a': <1>}>, 'n': <@a{sv} {'a': <1>, 'd': <0.5>, "
                            "'e': <@ai []>, 'u': <uint32 7>}>, 'nn': <0.5>, 'x': <int64 1>},)");
        const Outcome outcome = runClient(QStringList("set") + arguments);
        QCOMPARE(outcome.errors.section('\n', 0, 0) + '\n',
                 refusal.isNull() ? "\n" : "managed-configuration: " + refusal);
        QCOMPARE(outcome.status, refusal.isNull() ? 0 : 64);
        QCOMPARE(changes(), refusal.isNull() ? QStringList(change) : QStringList());
        QCOMPARE(runClient(QStringList {"set", "--force"} + arguments).errors, QString());
        const QStringList sent = changes();
        QCOMPARE(sent.last(), change);
    }

    void valueThatCannotBeWrittenIsNamedWithItsType()
    {
        m_service.replyWith("({'d': <1.5>, 'n': <{'l': <[0.5]>}>},)");
        const QPair<const char *, const char *> rows[] {
            {"d=1.5", "d has the D-Bus type d (double), which applications cannot write\n"},
            {"n/l[0]=1.5", "n/l has the D-Bus type ad, which applications cannot write\n"},
        };
        for (const auto &[argument, message] : rows) {
            const Outcome outcome = runClient({"set", "--force", argument});
            QVERIFY2(outcome.errors.contains(message), qPrintable(outcome.errors));
            QCOMPARE(outcome.status, 64);
        }
        QCOMPARE(changes(), QStringList());
        runClient({"set", "d:int=1"});
        QCOMPARE(changes(), QStringList("({'d': <1>},)"));
    }

    void emptyListThatWouldVanishIsRefused()
    {
        m_service.replyWith(
            "({'il': <[1]>, 'bl': <[true]>, 'sl': <['x']>, 'n': <{'il': <[1]>}>},)");
        const QPair<const char *, const char *> rows[] {
            {"il=[]", "({'il': <@ai []>},)"},
            {"bl=[]", "({'bl': <@ab []>},)"},
            {"n/il=[]", "({'n': <{'il': <@ai []>}>},)"},
            {"new:ints=[]", "({'new': <@ai []>},)"},
        };
        QStringList sent;
        for (const auto &[argument, change] : rows) {
            const Outcome outcome = runClient({"set", argument});
            QVERIFY2(outcome.errors.contains(
                         ": an empty list of integers or booleans vanishes for every "
                         "reader\n"),
                     qPrintable(outcome.errors));
            QCOMPARE(outcome.status, 64);
            QCOMPARE(changes(), sent);
            QCOMPARE(runClient({"set", "--force", argument}).status, 0);
            sent.append(change);
            QCOMPARE(changes(), sent);
        }
        QCOMPARE(runClient({"set", "sl=[]"}).status, 0);
        sent.append("({'sl': <@as []>},)");
        QCOMPARE(changes(), sent);
    }

    void valuesWithTypesAreSentWithoutReading()
    {
        QCOMPARE(runClient({"set", "n:int=5", "m:configuration={}"}).status, 0);
        QCOMPARE(changes(), QStringList("({'m': <@a{sv} {}>, 'n': <5>},)"));
        QCOMPARE(m_service.calls().size(), 1);
        QCOMPARE(runClient({"set", "n:int=5", "m/a:int=1"}).status, 0);
        QCOMPARE(m_service.calls().size(), 3);
    }

private:
    static Outcome runClient(const QStringList &arguments)
    {
        return Program("managed-configuration").run(clientArguments(arguments));
    }

    // The arguments of the changes that this test has asked for.
    QStringList changes() const
    {
        QStringList arguments;
        const auto calls = m_service.calls();
        for (const FakeService::Call &call : calls) {
            if (call.method == QLatin1String("ChangeConfiguration"))
                arguments.append(call.arguments);
        }
        return arguments;
    }
};

TARNVEL_BUS_TEST_MAIN(ClientChangesTest)

#include "client_changes_test.moc"
