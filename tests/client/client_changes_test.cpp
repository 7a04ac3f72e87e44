// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "program.h"

#include <QtCore/QTemporaryDir>

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
            {"@ai []", "k of D-Bus type ai (empty list)"},
            {"@ab []", "k of D-Bus type ab (empty list)"},
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
        QVERIFY2(told.isEmpty()
                     || errors.endsWith("applications do not see these settings: " + told + "\n"),
                 qPrintable(errors));
        QCOMPARE(runClient({"get", "l"}).errors.contains("do not see"), false);
        if (told.isEmpty())
            return;

        const Outcome outcome = runClient({"set", "k/new:int=1"});
        QVERIFY2(outcome.errors.contains("the change would remove " + told + "\n"),
                 qPrintable(outcome.errors));
        QCOMPARE(outcome.status, 64);
        QCOMPARE(m_service.changes(), QStringList());
    }

    void changeRemovesNothingUnnamed_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("refusal");
        QTest::addColumn<QString>("change");

        const QString all = "n/d of D-Bus type d (double), n/e of D-Bus type ai (empty list), "
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
        QCOMPARE(m_service.changes(), refusal.isNull() ? QStringList(change) : QStringList());
        QCOMPARE(runClient(QStringList {"set", "--force"} + arguments).errors, QString());
        const QStringList sent = m_service.changes();
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
        QCOMPARE(m_service.changes(), QStringList());
        runClient({"set", "d:int=1"});
        QCOMPARE(m_service.changes(), QStringList("({'d': <1>},)"));
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
            QCOMPARE(m_service.changes(), sent);
            QCOMPARE(runClient({"set", "--force", argument}).status, 0);
            sent.append(change);
            QCOMPARE(m_service.changes(), sent);
        }
        QCOMPARE(runClient({"set", "sl=[]"}).status, 0);
        sent.append("({'sl': <@as []>},)");
        QCOMPARE(m_service.changes(), sent);
    }

    void valuesWithTypesAreSentWithoutReading()
    {
        QCOMPARE(runClient({"set", "n:int=5", "m:configuration={}"}).status, 0);
        QCOMPARE(m_service.changes(), QStringList("({'m': <@a{sv} {}>, 'n': <5>},)"));
        QCOMPARE(m_service.calls().size(), 1);
        QCOMPARE(runClient({"set", "n:int=5", "m/a:int=1"}).status, 0);
        QCOMPARE(m_service.calls().size(), 3);
    }

    void fileThatGetPrintedChangesNothing()
    {
        m_service.replyWith(
            "({'b': <true>, 'e': <@as []>, 'a/b': <'x'>, 'l': <[1, 2]>, 'd': <0.5>, "
            "'n': <@a{sv} {'l': <['x']>, 'm': <@a{sv} {}>, 'u': <uint32 1>}>},)");
        const Outcome outcome = runOnFile(runClient({"get"}).output, {});
        QCOMPARE(outcome.errors, QString());
        QCOMPARE(outcome.output, "unchanged\n");
        QCOMPARE(outcome.status, 0);
        QCOMPARE(m_service.changes(), QStringList());
    }

    void valuesInAFileAreSet_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("differences");
        QTest::addColumn<QString>("change");

        QTest::newRow("a value") << R"({"i": 2, "s": "x"})"
                                 << "changed: i = 2 (was 1)\n"
                                 << "({'i': <2>},)";
        QTest::newRow("nested") << R"({"n": {"m": {"a": "z"}, "new": {"x": [true]}}})"
                                << "changed: n/m/a = \"z\" (was \"y\")\nadded: n/new/x = [true]\n"
                                << "({'n': <{'l': <['x']>, 'm': <{'a': <'z'>, 'b': <2>}>, "
                                   "'new': <{'x': <[true]>}>}>},)";
        QTest::newRow("keys that no path has") << R"({"a/b": {"": false}})"
                                               << "added: \"a/b\"/\"\" = false\n"
                                               << "({'a/b': <{'': <false>}>},)";
        QTest::newRow("empty") << R"({"new": {}, "n": {}, "e": []})"
                               << "added: e = []\nadded: new = {}\n"
                               << "({'e': <@as []>, 'new': <@a{sv} {}>},)";
    }

    void valuesInAFileAreSet()
    {
        QFETCH(QString, json);
        QFETCH(QString, differences);
        QFETCH(QString, change);
        m_service.replyWith("({'i': <1>, 's': <'x'>, 'u': <uint32 1>, 'n': <@a{sv} {'l': <['x']>, "
                            "'m': <@a{sv} {'a': <'y'>, 'b': <2>}>}>},)");
        Outcome outcome = runOnFile(json, {"--dry-run"});
        QCOMPARE(outcome.output + outcome.errors, differences);
        QCOMPARE(outcome.status, 0);
        QCOMPARE(m_service.changes(), QStringList());
        outcome = runOnFile(json, {});
        QCOMPARE(outcome.output + outcome.errors, QString());
        QCOMPARE(outcome.status, 0);
        QCOMPARE(m_service.changes(), QStringList(change));
    }

    void byteOrderMarkOfTheFileIsLeftOutAndNoOther()
    {
        const QString mark(QChar::ByteOrderMark);
        const QString json = QString("{\"%1k\":[\"%1v\"]}").arg(mark);
        QCOMPARE(runOnFile(mark + json, {}).errors, QString());
        QCOMPARE(runClient({"set", mark + "k:string=" + mark, "n:configuration=" + json}).errors,
                 QString());
        QCOMPARE(m_service.changes(),
                 QStringList({"({'\\ufeffk': <['\\ufeffv']>},)",
                              "({'n': <{'\\ufeffk': <['\\ufeffv']>}>, "
                              "'\\ufeffk': <'\\ufeff'>},)"}));
        QCOMPARE(runClient({"set", "--dry-run", "k:string=" + mark}).output,
                 "added: k = \"" + mark + "\"\n");
    }

    void wrongFilesAreRefused_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("status");

        QTest::newRow("{\"i\": \"x\"}") << "-: i: expected a 32-bit integer, found \"x\"" << 65;
        QTest::newRow("{\"n\": {\"a b\": {\"d\": 1.5}}}")
            << "-: n/a b/d: expected a 32-bit integer, found 1.5" << 65;
        QTest::newRow("{\"n\": {\"\\u0000\": 1}}") << "D-Bus cannot carry \"\\u0000\"" << 65;
        QTest::newRow("{\"s\": \"\\ud800\"}") << "-: s: D-Bus cannot carry" << 65;
        QTest::newRow("[1]") << "-: expected a JSON object" << 65;
        QTest::newRow("") << "-: illegal value, at byte 0" << 65;
        QTest::newRow("{\"u\": 2}") << "the change would remove u of D-Bus type u (uint32)" << 64;
        QTest::newRow("{\"n\": {\"a\": 2}}")
            << "the change would remove n/d of D-Bus type d (double)" << 64;
        QTest::newRow("{\"il\": []}")
            << "il: an empty list of integers or booleans vanishes for every reader" << 64;
    }

    void wrongFilesAreRefused()
    {
        QFETCH(QString, message);
        m_service.replyWith("({'i': <1>, 'il': <[1]>, 's': <'x'>, 'u': <uint32 1>, "
                            "'n': <@a{sv} {'a': <1>, 'd': <0.5>}>},)");
        const Outcome outcome = runOnFile(QTest::currentDataTag(), {});
        QVERIFY2(outcome.errors.contains(message), qPrintable(outcome.errors));
        QTEST(outcome.status, "status");
        QCOMPARE(outcome.output, QString());
        QCOMPARE(m_service.changes(), QStringList());
    }

    void fileMustBeReadable()
    {
        const QTemporaryDir directory;
        for (const QString &file : {directory.path(), directory.filePath("none")}) {
            const Outcome outcome = runClient({"set", "--from", file});
            QVERIFY2(outcome.errors.startsWith("managed-configuration: " + file + ": "),
                     qPrintable(outcome.errors));
            QCOMPARE(outcome.status, 66);
        }
        QCOMPARE(m_service.calls().size(), 0);
    }

    void dryRunSendsNothing()
    {
        m_service.replyWith("({'i': <1>, 'n': <{'a': <1>, 'b': <2>}>},)");
        QCOMPARE(runClient({"set", "--dry-run", "n={}", "i:string=1", "new:ints=[1]"}).output,
                 "changed: i = \"1\" (was 1)\nadded: n = {}\nremoved: n/a (was 1)\n"
                 "removed: n/b (was 2)\nadded: new = [1]\n");
        QCOMPARE(runClient({"set", "--dry-run", "i:int=1"}).output, "unchanged\n");
        const Outcome forced = runClient({"set", "--dry-run", "--force", "new:ints=[]"});
        QCOMPARE(forced.errors,
                 "managed-configuration: new: an empty list of integers or booleans vanishes for "
                 "every reader\n");
        QCOMPARE(forced.status, 0);
        QCOMPARE(m_service.changes(), QStringList());
    }

private:
    // Runs "set --from -" with \a json on standard input.
    static Outcome runOnFile(const QString &json, const QStringList &options)
    {
        const QString client = INSTALLED_PROGRAMS "/managed-configuration";
        const QStringList shellArguments {"-c", R"(json=$1; shift; printf %s "$json" | "$@")", "sh",
                                          json, client};
        return Program("/bin/sh").run(
            shellArguments + clientArguments(QStringList {"set", "--from", "-"} + options));
    }

    static Outcome runClient(const QStringList &arguments)
    {
        return Program("managed-configuration").run(clientArguments(arguments));
    }
};

TARNVEL_BUS_TEST_MAIN(ClientChangesTest)

#include "client_changes_test.moc"
