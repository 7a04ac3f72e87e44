// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "program.h"

using namespace Tarnvel::Testing;

namespace {

Outcome runClient(const QStringList &arguments)
{
    return Program("managed-configuration").run(clientArguments(arguments));
}

} // namespace

class ClientValuesTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void init() override
    {
        BusTest::init();
        m_service.replyWith(
            "({'zoom': <100>, 'on': <true>, 'theme': <'dark'>, 'sizes': <[1, 2, 3]>, "
            "'flags': <[true]>, 'names': <['a', 'b c']>, "
            "'window': <@a{sv} {'width': <-2147483648>, 'edges': <[5, 6]>, "
            "'deep': <@a{sv} {'text': <'é😀 \"q\" \\\\'>}>}>},)");
    }

    void configurationIsPrintedAsJson()
    {
        m_service.replyWith("({'b': <@a{sv} {'d': <[true]>, 'c': <'x'>}>, 'B': <-1>},)");
        QCOMPARE(runClient({"get"}).output, QString(R"({
    "B": -1,
    "b": {
        "c": "x",
        "d": [
            true
        ]
    }
}
)"));
        QCOMPARE(runClient({"get", "--type"}).output, QString(R"({
    "B": "int",
    "b": {
        "c": "string",
        "d": "bools"
    }
}
)"));
        m_service.replyWith("(@a{sv} {},)");
        QCOMPARE(runClient({"get"}).output, "{\n}\n");
    }

    void valueAtPathIsPrinted()
    {
        const QStringList rows[] {
            {"window/width", "-2147483648", "int"},
            {"on", "true", "bool"},
            {"sizes", "[\n    1,\n    2,\n    3\n]", "ints"},
            {"/names[1]", "\"b c\"", "string"},
            {"names", "[\n    \"a\",\n    \"b c\"\n]", "strings"},
            {"window/deep/", "{\n    \"text\": \"é😀 \\\"q\\\" \\\\\"\n}",
             "{\n    \"text\": \"string\"\n}"},
        };
        for (const QStringList &row : rows) {
            QCOMPARE(runClient({"get", row.at(0)}).output, row.at(1) + "\n");
            QCOMPARE(runClient({"get", "--type", row.at(0)}).output, row.at(2) + "\n");
        }
    }

    void rawValuesHaveNoQuotes()
    {
        m_service.replyWith("({'s': <'é \"q\"\\n\u001b'>, 'i': <-1>, 'l': <['a', 'b c']>, "
                            "'is': <[1, 2]>, 'b': <true>, 'e': <@as []>, 'n': <{'s': <'x'>}>},)");
        const QPair<QString, QString> rows[] {
            {"s", "é \"q\"\n\u001b\n"},
            {"i", "-1\n"},
            {"l", "a\nb c\n"},
            {"l[1]", "b c\n"},
            {"is", "1\n2\n"},
            {"b", "true\n"},
            {"e", ""},
            {"n", "{\n    \"s\": \"x\"\n}\n"},
        };
        for (const auto &[path, text] : rows)
            QCOMPARE(runClient({"get", "--raw", path}).output, text);
    }

    void settingsAreListed()
    {
        // In UTF-16, U+1F600 comes before U+FFFD.
        m_service.replyWith("({'a/b': <1>, 'a': <@a{sv} {'b': <[true]>, 'c': <@a{sv} {}>}>, "
                            "'a b': <'x\\ty'>, '😀': <1>, '\uFFFD': <2>, '': <0>},)");
        const QString output = runClient({"list"}).output;
        QCOMPARE(output,
                 QString("\"\"\tint\t0\n\"a/b\"\tint\t1\na b\tstring\t\"x\\ty\"\n"
                         "a/b\tbools\t[true]\na/c\tconfiguration\t{}\n\uFFFD\tint\t2\n"
                         "😀\tint\t1\n"));
        QCOMPARE(runClient({"list", "a"}).output, "a/b\tbools\t[true]\na/c\tconfiguration\t{}\n");
        QCOMPARE(runClient({"list", "a/b[0]"}).output, "a/b[0]\tbool\ttrue\n");
        m_service.replyWith("(@a{sv} {},)");
        QCOMPARE(runClient({"list"}).output, "");
    }

    void valuesAreSentWithTheirTypes()
    {
        m_service.replyWith(
            "({'bool': <true>, 'bools': <[true]>, 'config': <@a{sv} {}>, 'int': <1>, 'ints': "
            "<[1]>, "
            "'string': <'x'>, 'strings': <['x']>, 'no config': <{'x': <1>}>, "
            "'no string': <'x'>, 'no strings': <['x']>, 'retyped': <1>, "
            "'items': <[1, 2, 3]>, 'flags': <[true]>, 'names': <['a', 'b c']>},)");
        const QPair<QString, QString> rows[] {
            // With the types of the present values.
            {"bool=false", "'bool': <false>"},
            {"bools=[false]", "'bools': <[false]>"},
            {R"(config={"a":1,"b":true,"c":"x","d":[1],"e":[true],"f":["x"],"g":[],"h":{}})",
             "'config': <{'a': <1>, 'b': <true>, 'c': <'x'>, 'd': <[1]>, 'e': <[true]>, "
             "'f': <['x']>, 'g': <@as []>, 'h': <@a{sv} {}>}>"},
            {"int=-5", "'int': <-5>"},
            {"ints=[7, -8]", "'ints': <[7, -8]>"},
            {"string=a=b:int \"x\"", "'string': <'a=b:int \"x\"'>"},
            {"strings=[\"x\"]", "'strings': <['x']>"},
            {"no config={}", "'no config': <@a{sv} {}>"},
            {"no string=", "'no string': <''>"},
            {"no strings=[]", "'no strings': <@as []>"},
            {"items[1]=-7", "'items': <[1, -7, 3]>"},
            {"names[0]=\"z\"", "'names': <['\"z\"', 'b c']>"},
            // With types of their own.
            {"flags[0]:bool=false", "'flags': <[false]>"},
            {"retyped:string=7", "'retyped': <'7'>"},
            {" a b :int=-2147483648", "' a b ': <-2147483648>"},
            {"a:b:bool=true", "'a:b': <true>"},
            {"new bools:bools=[true]", "'new bools': <[true]>"},
            {"new ints:ints=[2147483647]", "'new ints': <[2147483647]>"},
            {"new strings:strings=[\"é\"]", "'new strings': <['é']>"},
            {"x/y/z:configuration={}", "'x': <{'y': <{'z': <@a{sv} {}>}>}>"},
        };
        QStringList arguments {"set"};
        QStringList entries;
        for (const auto &[argument, entry] : rows) {
            arguments.append(argument);
            entries.append(entry);
        }
        entries.sort();
        const Outcome outcome = runClient(arguments);
        QCOMPARE(outcome.errors, QString());
        QCOMPARE(outcome.output, QString());
        QCOMPARE(outcome.status, 0);
        QCOMPARE(m_service.changes(), QStringList("({" + entries.join(", ") + "},)"));
    }

    void changesAreMergedIntoTopLevelValues()
    {
        const Outcome outcome = runClient({"set", "window/deep/text=x", "window/edges[0]=9",
                                           "zoom=2", "new:configuration={}", "new/a:int=2", "--",
                                           "-x:int=3"});
        QCOMPARE(outcome.errors, QString());
        QCOMPARE(
            m_service.changes(),
            QStringList("({'-x': <3>, 'new': <{'a': <2>}>, 'window': <{'deep': <{'text': <'x'>}>, "
                        "'edges': <[9, 6]>, 'width': <-2147483648>}>, 'zoom': <2>},)"));
    }

    void wrongArgumentsAreNamed_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");

        const QPair<const char *, const char *> usageRows[] {
            {"--organization= get", "--organization is missing"},
            {"--application= get", "--application is missing"},
            {"--organization=a-b get", "/a-b_2eviewer: \"-\" is not allowed in an object path"},
            {"--application=😀 get", "/acme_2elabs_2e😀: \"😀\" is not allowed in an object path"},
            {"--organization=/a get", "//a_2eviewer: an element of an object path cannot be empty"},
            {"--application=c/ get",
             "/acme_2elabs_2ec/: an element of an object path cannot be empty"},
            {"--timeout= get", "expected a timeout from 0.1 to 20 seconds, found \"\""},
            {"--timeout=0.09 get", "expected a timeout from 0.1 to 20 seconds, found \"0.09\""},
            {"--timeout=20.1 get", "expected a timeout from 0.1 to 20 seconds, found \"20.1\""},
            {"--timeout=1s get", "expected a timeout from 0.1 to 20 seconds, found \"1s\""},
            {"", "the command is missing"},
            {"got", "there is no command \"got\""},
            {"--tpye get", "Unknown option 'tpye'."},
            {"get a b", "get takes at most one path"},
            {"list a b", "list takes at most one path"},
            {"watch a b", "watch takes at most one path"},
            {"check a", "check takes no arguments"},
            {"set --type a=1", "--type is an option of get only"},
            {"list --raw", "--raw is an option of get only"},
            {"get --json", "--json is an option of watch only"},
            {"get --force", "--force is an option of set only"},
            {"get --type --raw", "--type and --raw are mutually exclusive"},
            {"set", "set needs at least one PATH=VALUE, or --from"},
            {"set --from= a=1", "--from needs the name of a file"},
            {"set --from - a=1", "set takes either --from or PATH=VALUE"},
            {"watch --from -", "--from is an option of set only"},
            {"get --dry-run", "--dry-run is an option of set only"},
            {"set a=1 b", "expected PATH=VALUE or PATH:TYPE=VALUE, found \"b\""},
            {"set i:int=1 i:int=2", "\"i:int=2\" replaces what an earlier argument sets"},
            {"set /zoom=1 zoom/=2", "\"zoom/=2\" replaces what an earlier argument sets"},
            {"set sizes[0]=1 sizes=[2]", "\"sizes=[2]\" replaces what an earlier argument sets"},
            {"get //", "\"//\" is not a path"},
            {"set a[x]=1",
             "The xpath part contains an invalid index: \"x\" (xpath=\"a[x]\")\n"
             "managed-configuration: \"a[x]\" is not a path"},
            {"set window/new=1", "window/new has no value yet, so its type is not known"},
            {"set new:integer=1", "\"new:integer\" has no value yet, so its type is not known"},
            {"set theme=x zoom=", "zoom: expected a 32-bit integer, found \"\""},
            {"set zoom=2147483648", "zoom: expected a 32-bit integer, found 2147483648"},
            {"set zoom=1.5", "zoom: expected a 32-bit integer, found 1.5"},
            {"set on=True", "on: expected true or false, found \"True\": illegal number"},
            {"set on=1", "on: expected true or false, found 1"},
            {"set sizes=1,2", "sizes: expected a list of integers, found \"1,2\""},
            {"set sizes={}", "sizes: expected a list of integers, found {}"},
            {"set window=[]", "window: expected a JSON object, found []"},
            {"set sizes=[1,true]", "sizes: expected a 32-bit integer, found true"},
            {"set names=[[]]", "names: expected a string, found []"},
            {R"(set window={"a":["x",1]})", "window: expected a string, found 1"},
            {R"(set window={"a":null})", "window: a value cannot be null"},
            {R"(set names=["a\u0000"])", R"(names: D-Bus cannot carry "a\u0000")"},
            {R"(set window={"\u0000":1})", R"(window: D-Bus cannot carry "\u0000")"},
            {"set sizes[0]:string=x", "sizes holds ints; this item has another type"},
        };
        for (const auto &[arguments, message] : usageRows)
            QTest::newRow(arguments) << 64 << message;

        const QPair<const char *, const char *> pathRows[] {
            {"list Zoom", "no such path: the configuration has no key \"Zoom\""},
            {"get Zoom", "no such path: the configuration has no key \"Zoom\""},
            {"get window/height", "no such path: window has no key \"height\""},
            {"get sizes[0]/x", "no such path: sizes[0] has no keys"},
            {"get window[0]", "no such path: window is not a list"},
            {"get sizes[3]", "no such path: sizes has only 3 items"},
            {"get flags[1]", "no such path: flags has only 1 item"},
            {"set theme/x:int=1", "no such path: theme has no keys"},
            {"set sizes[3]=1", "no such path: sizes has only 3 items"},
            {"set new[0]:int=1", "no such path: the configuration has no key \"new\""},
            {"set sizes[0]/x:int=1", "no such path: sizes[0] has no keys"},
        };
        for (const auto &[arguments, message] : pathRows)
            QTest::newRow(arguments) << 66 << message;
    }

    void wrongArgumentsAreNamed()
    {
        QFETCH(int, status);
        QFETCH(QString, message);
        const QString arguments = QTest::currentDataTag();
        const Outcome outcome = runClient(arguments.split(' ', Qt::SkipEmptyParts));
        QVERIFY2(outcome.errors.startsWith("managed-configuration: " + message
                                           + "\nmanaged-configuration: what to do: "),
                 qPrintable(outcome.errors));
        QCOMPARE(outcome.output, QString());
        QCOMPARE(outcome.status, status);
        QCOMPARE(m_service.changes(), QStringList());
    }

    void textIsUtf8InEveryLocale()
    {
        m_service.replyWith("({'é': <'ü'>},)");
        Program shell("/bin/sh");
        shell.setVariable("LC_ALL", "C");
        const Outcome outcome = shell.run(
            {"-c",
             "client='" INSTALLED_PROGRAMS "/managed-configuration --organization acme.labs"
             " --application viewer'; $client get \"$(printf '\\303\\251')\" &&"
             " $client set \"$(printf '\\303\\251=\\303\\244')\" &&"
             " $client set \"$(printf 'a=\\377')\""});
        QCOMPARE(outcome.output, "\"ü\"\n");
        QCOMPARE(m_service.changes(), QStringList("({'é': <'ä'>},)"));
        QVERIFY2(outcome.errors.contains(" is not UTF-8\n"), qPrintable(outcome.errors));
        QCOMPARE(outcome.status, 64);
    }
};

TARNVEL_BUS_TEST_MAIN(ClientValuesTest)

#include "client_values_test.moc"
