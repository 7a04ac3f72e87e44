// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_fixture.h"
#include "program.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <gio/gunixsocketaddress.h>

using namespace Tarnvel::Testing;
using Tarnvel::Sandbox::MethodCall;

namespace {

const QString client = QStringLiteral("managed-configuration");

const QString everything = QStringLiteral(
    "({'zoom': <100>, 'on': <true>, 'theme': <'dark'>, 'sizes': <[1, 2, 3]>, "
    "'flags': <[true, false]>, 'names': <['a', 'b c']>, "
    "'window': <@a{sv} {'width': <-2147483648>, 'edges': <[5, 6]>, "
    "'deep': <@a{sv} {'text': <'é😀 \"q\" \\\\'>}>}>},)");

const QString errorPrefix = QStringLiteral("org.brenvik.ManagedConfiguration.Error.");

} // namespace

class ClientRequestsTest : public QObject
{
    Q_OBJECT

public:
    explicit ClientRequestsTest(BusFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void init();

    void helpAndVersionAreShown();
    void aMistakeOfUseIsNamedAndNothingIsAsked_data();
    void aMistakeOfUseIsNamedAndNothingIsAsked();
    void wordsMustBeUtf8();
    void aSeparatorInANameMakesALongerPath();

    void aValueIsPrintedAsJson_data();
    void aValueIsPrintedAsJson();
    void theWholeConfigurationIsPrintedInOrder();
    void anEmptyConfigurationIsAnEmptyObject();
    void aPathWithoutAValueIsNamed_data();
    void aPathWithoutAValueIsNamed();

    void aValueIsSetWithItsType_data();
    void aValueIsSetWithItsType();
    void allValuesGoOutAsOneRequestWithTheirTopLevelKeys();
    void aValueThatDoesNotFitIsNotSent_data();
    void aValueThatDoesNotFitIsNotSent();
    void textIsUtf8InEveryLocale();

    void aRefusalHasItsStatusItsReasonAndAHint_data();
    void aRefusalHasItsStatusItsReasonAndAHint();
    void aRefusalWithoutAReasonSaysSo();
    void anErrorOfTheBusIsTheInternalOne();

    void anAnswerIsAwaitedForTheGivenTimeOnly_data();
    void anAnswerIsAwaitedForTheGivenTimeOnly();
    void aServiceThatGoesInMidCallIsMissed();
    void withoutAServiceThereIsAHint();
    void withoutABusThereIsAHint();
    void aBusThatHangsIsGivenUp();

private:
    Outcome run(const QStringList &arguments);
    QStringList changes() const;

    BusFixture &m_fixture;
    int m_earlierCalls = 0;
};

void ClientRequestsTest::init()
{
    m_earlierCalls = m_fixture.service.calls().size();
    m_fixture.service.answerWith(everything);
}

Outcome ClientRequestsTest::run(const QStringList &arguments)
{
    return Program(client).run(clientArguments(arguments));
}

// The arguments of the changes asked for in this test.
QStringList ClientRequestsTest::changes() const
{
    QStringList arguments;
    const auto calls = m_fixture.service.calls().mid(m_earlierCalls);
    for (const FakeService::Call &call : calls) {
        if (call.method == QLatin1String("ChangeConfiguration"))
            arguments.append(call.arguments);
    }
    return arguments;
}

void ClientRequestsTest::helpAndVersionAreShown()
{
    const Outcome help = Program(client).run({"--help"});
    QCOMPARE(help.status, 0);
    QCOMPARE(help.errors, QString());
    const QStringList names {
        "--organization", "--application", "--timeout",        "--type", "--help",
        "--version",      "get [PATH]",    "set PATH[:TYPE]=", "watch",  "check"};
    for (const QString &name : names)
        QVERIFY2(help.output.contains(name), qPrintable(name));

    const Outcome version = Program(client).run({"--version"});
    QCOMPARE(version.output, QString("managed-configuration " CLIENT_VERSION "\n"));
    QCOMPARE(version.status, 0);
}

void ClientRequestsTest::aMistakeOfUseIsNamedAndNothingIsAsked_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("mistake");

    QTest::newRow("nothing") << QStringList() << "--organization is missing";
    QTest::newRow("empty organization")
        << QStringList {"--organization", "", "--application", "b", "get"}
        << "--organization is missing";
    QTest::newRow("no application")
        << QStringList {"--organization", "a", "get"} << "--application is missing";
    QTest::newRow("no command") << clientArguments({}) << "the command is missing";
    QTest::newRow("unknown command") << clientArguments({"got"}) << "there is no command \"got\"";
    QTest::newRow("unknown option")
        << clientArguments({"--tpye", "get"}) << "Unknown option 'tpye'.";
    QTest::newRow("two paths") << clientArguments({"get", "a", "b"})
                               << "get takes at most one path";
    QTest::newRow("path for watch")
        << clientArguments({"watch", "a"}) << "watch takes no arguments";
    QTest::newRow("path for check")
        << clientArguments({"check", "a"}) << "check takes no arguments";
    QTest::newRow("types set") << clientArguments({"set", "--type", "a=1"})
                               << "--type is an option of get only";
    QTest::newRow("nothing to set")
        << clientArguments({"set"}) << "set needs at least one PATH=VALUE";
    QTest::newRow("no equals sign") << clientArguments({"set", "a=1", "b"})
                                    << "expected PATH=VALUE or PATH:TYPE=VALUE, found \"b\"";
    QTest::newRow("separators only") << clientArguments({"get", "//"}) << "\"//\" is not a path";
    QTest::newRow("bad index")
        << clientArguments({"set", "a[x]=1"})
        << "The xpath part contains an invalid index: \"x\" (xpath=\"a[x]\")\n"
           "managed-configuration: \"a[x]\" is not a path";
    QTest::newRow("character in a name")
        << QStringList {"--organization", "a-b", "--application", "c", "get"}
        << "/a-b_2ec: \"-\" is not allowed in an object path";
    QTest::newRow("rare character in a name")
        << QStringList {"--organization", "a", "--application", "😀", "get"}
        << "/a_2e😀: \"😀\" is not allowed in an object path";
    QTest::newRow("separator at the beginning of a name")
        << QStringList {"--organization", "/a", "--application", "c", "get"}
        << "//a_2ec: an element of an object path cannot be empty";
    QTest::newRow("two separators in a name")
        << QStringList {"--organization", "a//b", "--application", "c", "get"}
        << "/a//b_2ec: an element of an object path cannot be empty";
    QTest::newRow("separator at the end of a name")
        << QStringList {"--organization", "a", "--application", "c/", "get"}
        << "/a_2ec/: an element of an object path cannot be empty";
    for (const char *seconds : {"", "0.09", "-1", "20.1", "1s"}) {
        QTest::addRow("timeout %s", seconds)
            << clientArguments({QStringLiteral("--timeout=") + seconds, "get"})
            << QStringLiteral("expected a timeout from 0.1 to 20 seconds, found \"%1\"")
                   .arg(seconds);
    }
}

void ClientRequestsTest::aMistakeOfUseIsNamedAndNothingIsAsked()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, mistake);
    const Outcome outcome = Program(client).run(arguments);
    QVERIFY2(outcome.errors.startsWith("managed-configuration: " + mistake
                                       + "\nmanaged-configuration: what to do: "),
             qPrintable(outcome.errors));
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.status, 64);
    QCOMPARE(m_fixture.service.calls().size(), m_earlierCalls);
}

void ClientRequestsTest::wordsMustBeUtf8()
{
    Program shell("/bin/sh");
    const Outcome outcome = shell.run(
        {"-c", "exec \"$0\" --organization a --application b set \"$(printf 'a=\\377')\"",
         INSTALLED_PROGRAMS "/managed-configuration"});
    QVERIFY2(outcome.errors.contains(" is not UTF-8\n"), qPrintable(outcome.errors));
    QCOMPARE(outcome.status, 64);
}

void ClientRequestsTest::aSeparatorInANameMakesALongerPath()
{
    const Outcome outcome = Program(client).run(
        {"--organization", "a/b", "--application", "c", "get", "zoom"});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.output, QString("100\n"));
    QCOMPARE(outcome.status, 0);
    QCOMPARE(m_fixture.service.calls().last().path, QString("/a/b_2ec"));
}

void ClientRequestsTest::aValueIsPrintedAsJson_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("type");

    QTest::newRow("least integer") << "window/width"
                                   << "-2147483648"
                                   << "int";
    QTest::newRow("integer") << "zoom"
                             << "100"
                             << "int";
    QTest::newRow("boolean") << "on"
                             << "true"
                             << "bool";
    QTest::newRow("string") << "theme"
                            << "\"dark\""
                            << "string";
    QTest::newRow("rare characters") << "window/deep/text"
                                     << "\"é😀 \\\"q\\\" \\\\\""
                                     << "string";
    QTest::newRow("integers") << "sizes"
                              << "[\n    1,\n    2,\n    3\n]"
                              << "ints";
    QTest::newRow("booleans") << "flags"
                              << "[\n    true,\n    false\n]"
                              << "bools";
    QTest::newRow("strings") << "names"
                             << "[\n    \"a\",\n    \"b c\"\n]"
                             << "strings";
    QTest::newRow("item") << "window/edges[1]"
                          << "6"
                          << "int";
    QTest::newRow("item that is a string") << "/names[1]"
                                           << "\"b c\""
                                           << "string";
    QTest::newRow("configuration") << "window/deep/"
                                   << "{\n    \"text\": \"é😀 \\\"q\\\" \\\\\"\n}"
                                   << "{\n    \"text\": \"string\"\n}";
}

void ClientRequestsTest::aValueIsPrintedAsJson()
{
    QFETCH(QString, path);
    QFETCH(QString, value);
    QFETCH(QString, type);
    const Outcome outcome = run({"get", path});
    QCOMPARE(outcome.output, value + "\n");
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 0);
    const Outcome typeOutcome = run({"get", "--type", path});
    QCOMPARE(typeOutcome.output, type + "\n");
    QCOMPARE(typeOutcome.errors, QString());
    QCOMPARE(typeOutcome.status, 0);
}

void ClientRequestsTest::theWholeConfigurationIsPrintedInOrder()
{
    m_fixture.service.answerWith(
        "({'b': <@a{sv} {'d': <[1]>, 'c': <'x'>}>, 'a': <true>, 'B': <-1>},)");
    const Outcome outcome = run({"get"});
    QCOMPARE(outcome.output, QString(R"({
    "B": -1,
    "a": true,
    "b": {
        "c": "x",
        "d": [
            1
        ]
    }
}
)"));
    QCOMPARE(outcome.status, 0);
    QCOMPARE(run({"get", "--type"}).output, QString(R"({
    "B": "int",
    "a": "bool",
    "b": {
        "c": "string",
        "d": "ints"
    }
}
)"));
}

void ClientRequestsTest::anEmptyConfigurationIsAnEmptyObject()
{
    m_fixture.service.answerWith("(@a{sv} {},)");
    const Outcome outcome = run({"get"});
    QCOMPARE(outcome.output.simplified(), QString("{ }"));
    QCOMPARE(outcome.status, 0);
}

void ClientRequestsTest::aPathWithoutAValueIsNamed_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("reason");

    QTest::newRow("no such key") << QStringList {"get", "Zoom"}
                                 << "the configuration has no key \"Zoom\"";
    QTest::newRow("no such nested key")
        << QStringList {"get", "window/height"} << "window has no key \"height\"";
    QTest::newRow("key of a string") << QStringList {"get", "theme/x"} << "theme has no keys";
    QTest::newRow("key of an item") << QStringList {"get", "sizes[0]/x"} << "sizes[0] has no keys";
    QTest::newRow("item of a string") << QStringList {"get", "theme[0]"} << "theme is not a list";
    QTest::newRow("item of a configuration")
        << QStringList {"get", "window[0]"} << "window is not a list";
    QTest::newRow("item behind the end")
        << QStringList {"get", "sizes[3]"} << "sizes has only 3 items";
    QTest::newRow("set key of a string")
        << QStringList {"set", "theme/x:int=1"} << "theme has no keys";
    QTest::newRow("set item behind the end")
        << QStringList {"set", "sizes[3]=1"} << "sizes has only 3 items";
    QTest::newRow("set item of what is not there")
        << QStringList {"set", "new[0]:int=1"} << "the configuration has no key \"new\"";
    QTest::newRow("set key of an item")
        << QStringList {"set", "sizes[0]/x:int=1"} << "sizes[0] has no keys";
}

void ClientRequestsTest::aPathWithoutAValueIsNamed()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, reason);
    const Outcome outcome = run(arguments);
    QCOMPARE(outcome.errors,
             QString("managed-configuration: no such path: %1\n"
                     "managed-configuration: what to do: \"get\" shows what exists; keys are "
                     "case-sensitive\n")
                 .arg(reason));
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.status, 66);
    QCOMPARE(changes(), QStringList());
}

void ClientRequestsTest::aValueIsSetWithItsType_data()
{
    QTest::addColumn<QString>("assignment");
    QTest::addColumn<QString>("change");

    QTest::newRow("present integer") << "zoom=-5"
                                     << "'zoom': <-5>";
    QTest::newRow("present boolean") << "on=false"
                                     << "'on': <false>";
    QTest::newRow("present string") << "theme=a=b:int \"x\""
                                    << "'theme': <'a=b:int \"x\"'>";
    QTest::newRow("empty string") << "theme="
                                  << "'theme': <''>";
    QTest::newRow("present integers") << "sizes=[7, -8]"
                                      << "'sizes': <[7, -8]>";
    QTest::newRow("no integers") << "sizes=[]"
                                 << "'sizes': <@ai []>";
    QTest::newRow("present booleans") << "flags=[false]"
                                      << "'flags': <[false]>";
    QTest::newRow("no booleans") << "flags=[]"
                                 << "'flags': <@ab []>";
    QTest::newRow("present strings") << "names=[\"x\"]"
                                     << "'names': <['x']>";
    QTest::newRow("no strings") << "names=[]"
                                << "'names': <@as []>";
    QTest::newRow("present configuration") << "window={\"w\":1}"
                                           << "'window': <{'w': <1>}>";
    QTest::newRow("item") << "sizes[1]=-7"
                          << "'sizes': <[1, -7, 3]>";
    QTest::newRow("item with its type") << "flags[0]:bool=false"
                                        << "'flags': <[false, false]>";
    QTest::newRow("string item") << "names[0]=z"
                                 << "'names': <['z', 'b c']>";
    QTest::newRow("integer") << "new:int=2147483647"
                             << "'new': <2147483647>";
    QTest::newRow("least integer") << "new:int=-2147483648"
                                   << "'new': <-2147483648>";
    QTest::newRow("boolean") << "new:bool=true"
                             << "'new': <true>";
    QTest::newRow("string") << "new:string=7"
                            << "'new': <'7'>";
    QTest::newRow("integers") << "new:ints=[2147483647]"
                              << "'new': <[2147483647]>";
    QTest::newRow("booleans") << "new:bools=[true]"
                              << "'new': <[true]>";
    QTest::newRow("strings") << "new:strings=[\"é\"]"
                             << "'new': <['é']>";
    QTest::newRow("configuration")
        << R"(new:configuration={"a":1,"b":true,"c":"x","d":[1],"e":[true],"f":["x"],"g":[],"h":{}})"
        << "'new': <{'a': <1>, 'b': <true>, 'c': <'x'>, 'd': <[1]>, 'e': <[true]>, 'f': <['x']>, "
           "'g': <@as []>, 'h': <@a{sv} {}>}>";
    QTest::newRow("other type than the present one") << "zoom:string=7"
                                                     << "'zoom': <'7'>";
    QTest::newRow("colon in a key") << "a:b:int=1"
                                    << "'a:b': <1>";
    QTest::newRow("type as a key") << "int:int=1"
                                   << "'int': <1>";
    QTest::newRow("blanks in a key") << " a b :int=1"
                                     << "' a b ': <1>";
    QTest::newRow("nested where nothing is") << "x/y/z:bool=true"
                                             << "'x': <{'y': <{'z': <true>}>}>";
}

void ClientRequestsTest::aValueIsSetWithItsType()
{
    QFETCH(QString, assignment);
    QFETCH(QString, change);
    const Outcome outcome = run({"set", assignment});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(changes(), QStringList("({" + change + "},)"));
}

void ClientRequestsTest::allValuesGoOutAsOneRequestWithTheirTopLevelKeys()
{
    const Outcome outcome = run({"set", "zoom=1", "window/deep/text=x", "window/edges[0]=9",
                                 "zoom=2", "new/a:int=1", "new/a=2", "--", "-x:int=3"});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(changes(),
             QStringList("({'-x': <3>, 'new': <{'a': <2>}>, 'window': <{'deep': <{'text': <'x'>}>, "
                         "'edges': <[9, 6]>, 'width': <-2147483648>}>, 'zoom': <2>},)"));
}

void ClientRequestsTest::aValueThatDoesNotFitIsNotSent_data()
{
    QTest::addColumn<QString>("assignment");
    QTest::addColumn<QString>("mistake");

    QTest::newRow("no type") << "window/new=1"
                             << "window/new has no value yet, so its type is not known";
    QTest::newRow("unknown type") << "new:integer=1"
                                  << "\"new:integer\" has no value yet, so its type is not known";
    QTest::newRow("empty integer") << "zoom="
                                   << "zoom: expected a 32-bit integer, found \"\"";
    QTest::newRow("large integer") << "zoom=2147483648"
                                   << "zoom: expected a 32-bit integer, found 2147483648";
    QTest::newRow("fraction") << "zoom=1.5"
                              << "zoom: expected a 32-bit integer, found 1.5";
    QTest::newRow("boolean") << "on=True"
                             << "on: expected true or false, found \"True\": illegal number";
    QTest::newRow("list without brackets") << "sizes=1,2"
                                           << "sizes: expected a list of integers, found \"1,2\"";
    QTest::newRow("object as a list") << "sizes={}"
                                      << "sizes: expected a list of integers, found {}";
    QTest::newRow("list as an object") << "window=[]"
                                       << "window: expected a JSON object, found []";
    QTest::newRow("mixed list") << "sizes=[1,true]"
                                << "sizes: expected a 32-bit integer, found true";
    QTest::newRow("large item") << "sizes=[3e9]"
                                << "sizes: expected a 32-bit integer, found 3000000000";
    QTest::newRow("fraction as an item") << "sizes=[0.5]"
                                         << "sizes: expected a 32-bit integer, found 0.5";
    QTest::newRow("list in a list") << "names=[[]]"
                                    << "names: expected a string, found []";
    QTest::newRow("null") << R"(window={"a":null})"
                          << "window: a value cannot be null";
    QTest::newRow("mixed list in an object") << R"(window={"a":["x",1]})"
                                             << "window: expected a string, found 1";
    QTest::newRow("text that D-Bus does not carry") << R"(names=["a\u0000"])"
                                                    << "names: D-Bus cannot carry \"a\\u0000\"";
    QTest::newRow("key that D-Bus does not carry") << R"(window={"\u0000":1})"
                                                   << "window: D-Bus cannot carry \"\\u0000\"";
    QTest::newRow("item of another type") << "sizes[0]:string=x"
                                          << "sizes holds ints; this item has another type";
}

void ClientRequestsTest::aValueThatDoesNotFitIsNotSent()
{
    QFETCH(QString, assignment);
    QFETCH(QString, mistake);
    const Outcome outcome = run({"set", "theme=x", assignment});
    QCOMPARE(outcome.errors.section('\n', 0, 0), "managed-configuration: " + mistake);
    QVERIFY2(outcome.errors.section('\n', 1).startsWith("managed-configuration: what to do: "),
             qPrintable(outcome.errors));
    QCOMPARE(outcome.status, 64);
    QCOMPARE(changes(), QStringList());
}

void ClientRequestsTest::textIsUtf8InEveryLocale()
{
    m_fixture.service.answerWith("({'é': <'ü'>},)");
    Program program("/bin/sh");
    program.setVariable("LC_ALL", "C");
    const Outcome outcome = program.run(
        {"-c",
         "client='" INSTALLED_PROGRAMS "/managed-configuration --organization acme.labs"
         " --application viewer'; $client get \"$(printf '\\303\\251')\" &&"
         " $client set \"$(printf '\\303\\251=\\303\\244')\""});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.output, QString("\"ü\"\n"));
    QCOMPARE(changes(), QStringList("({'é': <'ä'>},)"));
}

void ClientRequestsTest::aRefusalHasItsStatusItsReasonAndAHint_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("hint");

    QTest::newRow("Internal") << 1 << "log";
    QTest::newRow("NotExistingKey") << 2 << "correct the path";
    QTest::newRow("InvalidType") << 3 << "get --type";
    QTest::newRow("InvalidValue") << 4 << "accepts";
    QTest::newRow("Forbidden") << 5 << "trying again does not help";
    QTest::newRow("NotConfigurable") << 6 << "correct --organization and --application";
    QTest::newRow("InvalidUserId") << 7 << "run this as a user that the service accepts";
    QTest::newRow("UnsupportedType") << 8 << "use a value of another type";
}

void ClientRequestsTest::aRefusalHasItsStatusItsReasonAndAHint()
{
    QFETCH(int, status);
    QFETCH(QString, hint);
    const QString name = QTest::currentDataTag();
    const QString who = status == 1 ? "the service or the bus failed" : "the service refused";
    const QString text = QString("managed-configuration: %1 with error %2, %3: the reason\n")
                             .arg(who)
                             .arg(status)
                             .arg(name);
    m_fixture.service.answerWithError(errorPrefix + name, "the reason");
    const Outcome reading = run({"get"});

    m_fixture.service.answerThrough([&](const MethodCall &call) {
        if (call.method() == "GetConfiguration")
            call.reply(parseValue(everything));
        else
            call.replyError(errorPrefix + name, "the reason");
    });
    const Outcome changing = run({"set", "zoom=1"});
    QCOMPARE(changes().size(), 1);

    for (const Outcome &outcome : {reading, changing}) {
        QVERIFY2(outcome.errors.startsWith(text), qPrintable(outcome.errors));
        const QString rest = outcome.errors.mid(text.size());
        QVERIFY2(rest.startsWith("managed-configuration: what to do: "), qPrintable(rest));
        QVERIFY2(rest.contains(hint), qPrintable(rest));
        QCOMPARE(outcome.output, QString());
        QCOMPARE(outcome.status, status);
    }
}

void ClientRequestsTest::aRefusalWithoutAReasonSaysSo()
{
    m_fixture.service.answerWithError(errorPrefix + "Forbidden", "");
    QVERIFY(run({"get"}).errors.contains("error 5, Forbidden: no reason given\n"));
}

void ClientRequestsTest::anErrorOfTheBusIsTheInternalOne()
{
    m_fixture.service.answerWithError("org.freedesktop.DBus.Error.AccessDenied", "not you");
    const Outcome outcome = run({"get"});
    QVERIFY(
        outcome.errors.contains("the service or the bus failed with error 1, Internal: not you\n"));
    QCOMPARE(outcome.status, 1);
}

void ClientRequestsTest::anAnswerIsAwaitedForTheGivenTimeOnly_data()
{
    QTest::addColumn<QString>("unanswered");
    QTest::addColumn<QString>("addition");

    QTest::newRow("reading") << "GetConfiguration"
                             << "";
    QTest::newRow("change") << "ChangeConfiguration"
                            << "; the change may have been made";
}

void ClientRequestsTest::anAnswerIsAwaitedForTheGivenTimeOnly()
{
    QFETCH(QString, unanswered);
    QFETCH(QString, addition);
    m_fixture.service.answerThrough([&](const MethodCall &call) {
        if (call.method() != unanswered)
            call.reply(parseValue(everything));
    });
    // Long enough for the other request on a slow machine.
    const Outcome outcome = run({"--timeout", "2.5", "set", "zoom=1"});
    QVERIFY2(outcome.errors.startsWith("managed-configuration: no reply from the service within "
                                       "2.5 s"
                                       + addition + "\n"),
             qPrintable(outcome.errors));
    QCOMPARE(outcome.status, 69);
    QCOMPARE(m_fixture.service.calls().last().method, unanswered);
}

void ClientRequestsTest::aServiceThatGoesInMidCallIsMissed()
{
    m_fixture.service.answerThrough([this](const MethodCall &) {
        QMetaObject::invokeMethod(
            this, [this] { m_fixture.service.stop(); }, Qt::QueuedConnection);
    });
    const Outcome outcome = run({"get"});
    QVERIFY(m_fixture.service.start());
    QVERIFY2(outcome.errors.startsWith("managed-configuration: no service: "),
             qPrintable(outcome.errors));
    QCOMPARE(outcome.status, 69);
}

void ClientRequestsTest::withoutAServiceThereIsAHint()
{
    m_fixture.service.stop();
    const Outcome reading = run({"get"});
    const Outcome watching = run({"watch"});
    QVERIFY(m_fixture.service.start());
    for (const Outcome &outcome : {reading, watching}) {
        QVERIFY2(outcome.errors.startsWith("managed-configuration: no service: "),
                 qPrintable(outcome.errors));
        QVERIFY(outcome.errors.endsWith("managed-configuration: what to do: start it, or run this "
                                        "in managed-configuration-sandbox\n"));
        QCOMPARE(outcome.output, QString());
        QCOMPARE(outcome.status, 69);
    }
}

void ClientRequestsTest::withoutABusThereIsAHint()
{
    for (const char *command : {"get", "watch"}) {
        Program program(client);
        program.setVariable("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus");
        const Outcome outcome = program.run(clientArguments({command}));
        QVERIFY2(outcome.errors.startsWith("managed-configuration: no bus at "
                                           "unix:path=/nowhere/bus (from DBUS_SYSTEM_BUS_ADDRESS): "
                                           "Failed to connect to socket"),
                 qPrintable(outcome.errors));
        QVERIFY(outcome.errors.contains("managed-configuration: what to do: start the bus, "));
        QCOMPARE(outcome.output, QString());
        QCOMPARE(outcome.status, 69);
    }
}

void ClientRequestsTest::aBusThatHangsIsGivenUp()
{
    const QTemporaryDir directory;
    const QString socket = directory.filePath("bus");
    g_autoptr(GSocketAddress) address = g_unix_socket_address_new(qUtf8Printable(socket));
    g_autoptr(GSocketListener) bus = g_socket_listener_new();
    QVERIFY(g_socket_listener_add_address(bus, address, G_SOCKET_TYPE_STREAM,
                                          G_SOCKET_PROTOCOL_DEFAULT, nullptr, nullptr, nullptr));
    for (const char *command : {"get", "watch", "check"}) {
        Program program(client);
        program.setVariable("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + socket);
        const Outcome outcome = program.run(clientArguments({"--timeout", "0.1", command}));
        QVERIFY2((outcome.errors + outcome.output).contains("no reply within 0.1 s\n"),
                 qPrintable(outcome.errors));
        QCOMPARE(outcome.status, 69);
    }
}

TARNVEL_BUS_TEST_MAIN(ClientRequestsTest)

#include "client_requests_test.moc"
