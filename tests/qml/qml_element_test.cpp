// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "element.h"
#include "message_log.h"

#include <ctime>
#include <functional>

using namespace Tarnvel::Testing;

namespace {

const QString prefix = QStringLiteral("org.brenvik.ManagedConfiguration.Error.");

// A slot for the signals of an element.
class Handler : public QObject
{
    Q_OBJECT

public:
    std::function<void()> run;

public Q_SLOTS:
    void handle()
    {
        run();
    }
};

} // namespace

class QmlElementTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    // The first, before anything has been read.
    void withoutNamesNothingIsReadUntilTheyAreSet();
    void valuesAreAnObjectFromTheStart();
    void elementsOfAllEnginesShareOneRead();
    void handlersFindAllPropertiesUpToDate();
    void aHandlerMayDeleteTheElement_data();
    void aHandlerMayDeleteTheElement();
    void theChangedPathsAreNamed_data();
    void theChangedPathsAreNamed();
    void anAnnouncementOfTheSameContentChangesNothing();
    void valuesAreReplacedAsAWhole();
    void newDefaultsAreMergedAgain();
    void anEmptyConfigurationIsReadOnceMore_data();
    void anEmptyConfigurationIsReadOnceMore();
    void anEmptyConfigurationDuringAReadIsReadAfterIt();
    void aFailureKeepsTheValues();
    void anAnswerThatIsOutOfDateIsIgnored();
    void aValueIsFoundByItsPath_data();
    void aValueIsFoundByItsPath();
    void aChangeWaitsForTheOneBefore();
    void anErrorOfAChangeIsLoggedWithoutACallback();
    void aCallbackIsNotCalledAfterItsElementOrEngine_data();
    void aCallbackIsNotCalledAfterItsElementOrEngine();
    void aThousandSettingsAreConverted();

private:
    void announce(const QString &configuration)
    {
        m_service.replyWith("(" + configuration + ",)");
        m_service.announceChange(BusFixture::path);
    }
};

void QmlElementTest::withoutNamesNothingIsReadUntilTheyAreSet()
{
    const QString name = QCoreApplication::organizationName();
    QCoreApplication::setOrganizationName({});
    Engine engine;
    // A change after the first failure waits for another read.
    const Element element(engine, "({key: 1, nested: {a: 0}})",
                          "property int failures: 0\n"
                          "onStatusChanged: if (status === 2 && ++failures === 1)\n"
                          "    change({key: 2}, error => log.push(status + error.message))");
    QCOMPARE(element.eval("status"), "0");
    TRY_COMPARE(element.eval("status"), "2");
    const QString error = "Internal The organization name or the application name is missing";
    QCOMPARE(element.eval("error.code + error.name + ' ' + error.message"), "\"1" + error + '"');
    QCOMPARE(element.awaitLog(), "[\"2" + error.section(' ', 1) + "\"]");
    QCOMPARE(m_service.calls().count(), 0);

    // Changes wait for the read, because they are completed from that.
    QCoreApplication::setOrganizationName(name);
    m_service.leaveUnanswered();
    element.change("{nested: {a: 1}}");
    QCOMPARE(element.eval("status"), "0");
    TRY_COMPARE(m_service.unanswered(), 1);
    QCOMPARE(m_service.calls().first().method, "GetConfiguration");
    QCOMPARE(m_service.calls().first().path, BusFixture::path);
    element.change("{nested: {c: 3}}");
    m_service.replyTo(0, "({'key': <7>, 'nested': <{'b': <2>}>},)");
    TRY_COMPARE(m_service.unanswered(), 2);
    QCOMPARE(element.eval("[status, error.name, values]"),
             R"([1,"NoError",{"key":7,"nested":{"a":0,"b":2}}])");
    QCOMPARE(m_service.changes(), QStringList("({'nested': <{'a': <1>, 'b': <2>}>},)"));
    QCOMPARE(element.takeLog(), R"(["key,nested/b"])");
    m_service.replyTo(1, "()");
    QCOMPARE(element.awaitLog(), R"(["NoError "])");
    TRY_COMPARE(m_service.unanswered(), 3);
    m_service.replyTo(2, "()");
    QCOMPARE(element.awaitLog(), R"(["NoError "])");
}

void QmlElementTest::valuesAreAnObjectFromTheStart()
{
    Engine engine;
    QQmlComponent component(&engine);
    component.setData("import Tarnvel.ManagedConfiguration 1.0; ManagedConfiguration {}", QUrl());
    const std::unique_ptr<QObject> element(component.beginCreate(engine.rootContext()));
    QVERIFY(element->property("values").value<QJSValue>().isObject());
    component.completeCreate();
}

void QmlElementTest::elementsOfAllEnginesShareOneRead()
{
    Engine engine;
    const Element first(engine, "({key: 1})");
    for (const char *const value : {"{'key': <8>}", "{'key': <9>}"}) {
        QVERIFY(first.reload());
        const int calls = m_service.calls().count();
        Engine other;
        const Element second(other, "({key: 1, other: 2})");
        QCOMPARE(second.eval("[status, values.other, log]"), R"([1,2,["key"]])");
        second.takeLog();
        announce(value);
        QCOMPARE(first.awaitLog(), R"(["key"])");
        QCOMPARE(second.takeLog(), R"(["key"])");
        QCOMPARE(m_service.calls().count(), calls + 1);
        // Its engine dies before the answer.
        second.eval("reload()");
        QCOMPARE(first.eval("status"), "0");
    }
}

void QmlElementTest::handlersFindAllPropertiesUpToDate()
{
    Engine engine;
    const Element element(engine, "({key: 1})",
                          "onStatusChanged: if (status > 0) log.push('status ' + values.key)\n"
                          "onErrorChanged: log.push('error ' + values.key + status)\n"
                          "onDefaultsChanged: log.push('defaults ' + values.key)\n"
                          "onValuesChanged: log.push('values ' + values.key + error.name)");
    QVERIFY(element.reload());
    announce("{'key': <9>}");
    QCOMPARE(element.awaitLog(), R"(["values 9NoError","key"])");
    m_service.replyWithError(prefix + "Forbidden", "no");
    element.eval("reload()");
    QCOMPARE(element.awaitLog(), R"(["status 9","error 92"])");
    m_service.replyWith("({'key': <8>},)");
    element.eval("reload()");
    QCOMPARE(element.awaitLog(), R"(["status 8","error 81","values 8NoError","key"])");
    element.eval("(defaults = {key: 1, more: 2}, 0)");
    QCOMPARE(element.takeLog(), R"(["defaults 8","values 8NoError","more"])");
}

void QmlElementTest::aHandlerMayDeleteTheElement_data()
{
    QTest::addColumn<QByteArray>("emitted");
    for (const char *const emitted :
         {SIGNAL(defaultsChanged()), SIGNAL(statusChanged()), SIGNAL(errorChanged()),
          SIGNAL(valuesChanged()), SIGNAL(changed(QJSValue))})
        QTest::newRow(emitted + 1) << QByteArray(emitted);
}

void QmlElementTest::aHandlerMayDeleteTheElement()
{
    QFETCH(const QByteArray, emitted);

    Engine engine;
    auto element = std::make_unique<Element>(engine);
    QVERIFY(element->reload());
    m_service.replyWithError(prefix + "Forbidden", "no");
    QVERIFY(!element->reload());
    Handler handler;
    handler.run = [&element] { element.reset(); };
    QVERIFY(connect(element->object(), emitted.constData(), &handler, SLOT(handle())));
    m_service.replyWith("({'key': <9>},)");
    if (emitted.contains("defaults"))
        element->eval("(defaults = {}, 0)");
    else
        element->eval("reload()");
    TRY_VERIFY(!element);
}

void QmlElementTest::theChangedPathsAreNamed_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("now");
    QTest::addColumn<QString>("paths");

    const auto row = [](const char *name, const QString &before, const QString &now,
                        const QString &paths) { QTest::newRow(name) << before << now << paths; };
    row("no default", "{'k': <1>}", "{'k': <1>, 'm': <{'a': <1>}>}", "m/a");
    row("a value", "{'k': <1>}", "{'k': <2>}", "k");
    row("a type", "{'k': <1>}", "{'k': <true>}", "k");
    row("a text", "{'k': <1>}", "{'k': <'1'>}", "k");
    row("an item", "{'k': <[1, 2]>}", "{'k': <[1, 3]>}", "k");
    row("items of another type", "{'k': <[1]>}", "{'k': <['1']>}", "k");
    row("a list", "{'k': <1>}", "{'k': <[1]>}", "k");
    row("appeared", "{'l': <1>}", "{'l': <1>, 'k': <1>}", "k");
    row("as the default", "{'l': <1>}", "{'l': <1>, 'k': <0>}", "");
    row("nested", "{'n': <{'a': <1>, 'b': <1>}>}", "{'n': <{'a': <1>, 'b': <2>}>}", "n/b");
    QTest::newRow("several") << "{'n': <{'a': <1>}>, 'l': <1>}"
                             << "{'k': <5>}"
                             << "k,l,n/a";
}

void QmlElementTest::theChangedPathsAreNamed()
{
    QFETCH(const QString, before);
    QFETCH(const QString, now);
    QFETCH(const QString, paths);

    Engine engine;
    const Element element(engine, "({k: 0, l: 0, fence: 0, n: {a: 0, b: 0}})");
    m_service.replyWith("(" + before + ",)");
    QVERIFY(element.reload());
    announce(now);
    TRY_COMPARE(m_service.calls().count(), 2);
    announce(QString(now).insert(1, "'fence': <1>, "));
    TRY_VERIFY(element.eval("log").contains("fence"));
    QCOMPARE(element.takeLog(), paths.isEmpty() ? R"(["fence"])" : "[\"" + paths + "\",\"fence\"]");
}

void QmlElementTest::anAnnouncementOfTheSameContentChangesNothing()
{
    Engine engine;
    const Element element(engine, "({key: 1, l: [1], n: {a: 1}})",
                          "onValuesChanged: log.push('values')\n"
                          "onStatusChanged: log.push('status')");
    const QString same = "{'key': <7>, 'l': <[1, 2]>, 'n': <{'a': <'x'>}>}";
    m_service.replyWith("(" + same + ",)");
    QVERIFY(element.reload());
    element.eval("(log.old = values, 0)");
    announce(same);
    TRY_COMPARE(m_service.calls().count(), 2);
    // It has been handled when this answer comes.
    awaitRead(*ConfigurationManager::instance());
    QCOMPARE(element.eval("[log, log.old === values]"), "[[],true]");
    announce("{'key': <8>}");
    QCOMPARE(element.awaitLog(), R"(["values","key,l,n/a"])");
}

void QmlElementTest::valuesAreReplacedAsAWhole()
{
    Engine engine;
    const Element element(engine, "({key: 1, keys: 2, list: [5], n: {list: [6]}})");
    m_service.replyWith("({'key': <7>, 'n': <{'list': <[1, 2]>}>},)");
    QVERIFY(element.reload());
    QCOMPARE(element.eval("[values.n.list, values.list].every(Array.isArray)"), "true");
    QCOMPARE(element.eval("Object.keys(values)"), R"(["key","keys","list","n"])");
    // Objects are read-only. In both Qts, arrays cannot be, but the defaults have others.
    QCOMPARE(element.eval("(values.key = 5, values.n.more = 5, delete values.n, values)"),
             R"({"key":7,"keys":2,"list":[5],"n":{"list":[1,2]}})");
    QCOMPARE(element.eval("(function() { 'use strict'; values.n.list = 5 })()"),
             "TypeError: Type error");
    QCOMPARE(element.eval("(values.list.push(9), defaults.list)"), "[5]");

    element.eval("(log.old = values, 0)");
    announce("{'key': <8>}");
    QCOMPARE(element.awaitLog(), R"(["key,n/list"])");
    QCOMPARE(element.eval("[values.key, values.list]"), "[8,[5]]");
}

void QmlElementTest::newDefaultsAreMergedAgain()
{
    MessageLog log;
    Engine engine;
    const Element element(engine, "{ key: 1 }");
    QCOMPARE(log.take(),
             QStringList("<Unknown File>:2:1: QML ManagedConfiguration: defaults must be an "
                         "object: put its braces into parentheses"));
    QVERIFY(element.reload());
    QCOMPARE(element.eval("values"), R"({"key":7})");
    QCOMPARE(element.eval("(defaults = {key: 1, n: {}, other: 2}, values)"),
             R"({"key":7,"n":{},"other":2})");
    QCOMPARE(element.takeLog(), R"(["other"])");
    // No value differs.
    QCOMPARE(element.eval("(defaults = {key: 1, n: {m: {}}, other: 2}, values.n)"), R"({"m":{}})");
    QCOMPARE(element.takeLog(), "[]");
    QCOMPARE(element.eval("(defaults = [1], values)"), R"({"key":7})");
    QCOMPARE(log.take().count(), 1);

    // As many levels as a configuration has, one more, and no end.
    const QString levels =
        "(function() { let o = {}; for (let n = 1; n < %1; ++n) o = {n: o}; return o })()";
    QVERIFY(!element.eval("(defaults = " + levels.arg(21) + ", values)").isEmpty());
    QCOMPARE(log.take(), QStringList());
    for (const QString &deep :
         {levels.arg(22), QString("(log.o = {}, log.o.a = log.o.b = log.o)")}) {
        QCOMPARE(element.eval("(defaults = " + deep + ", values)"), QString());
        QCOMPARE(log.take().join(' ').section(": ", -1), "defaults has too many levels");
    }
}

void QmlElementTest::anEmptyConfigurationIsReadOnceMore_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("state");

    QTest::newRow("emptied") << "(@a{sv} {},)"
                             << R"([1,"NoError",1,["key"]])";
    QTest::newRow("could not be read") << QString() << R"([2,"Forbidden",7,[]])";
    QTest::newRow("could be read again") << "({'key': <8>},)"
                                         << R"([1,"NoError",8,["key"]])";
}

void QmlElementTest::anEmptyConfigurationIsReadOnceMore()
{
    QFETCH(const QString, reply);
    QFETCH(const QString, state);

    Engine engine;
    const Element element(engine, "({key: 1})");
    QVERIFY(element.reload());
    m_service.replyThrough([&](const Tarnvel::Testing::MethodCall &call) {
        if (reply.isNull())
            m_service.replyWithError(prefix + "Forbidden", "again");
        else
            m_service.replyWith(reply);
        call.replyError(prefix + "Internal", "at first");
    });
    m_service.announceChange(BusFixture::path);
    TRY_COMPARE(m_service.calls().count(), 3);
    awaitRead(*ConfigurationManager::instance());
    QCOMPARE(element.eval("[status, error.name, values.key, log]"), state);
}

void QmlElementTest::anEmptyConfigurationDuringAReadIsReadAfterIt()
{
    Engine engine;
    const Element element(engine, "({key: 1})");
    QVERIFY(element.reload());
    m_service.leaveUnanswered();
    element.eval("reload()");
    TRY_COMPARE(m_service.unanswered(), 1);
    for (int announcement = 1; announcement <= 2; ++announcement) {
        m_service.announceChange(BusFixture::path);
        TRY_COMPARE(m_service.unanswered(), announcement + 1);
        m_service.replyTo(announcement, "(@a{sv} {},)");
    }
    // They have been handled when this call comes, and have not called.
    ConfigurationManager::instance()->getConfiguration([](const auto &, const auto &) {});
    TRY_COMPARE(m_service.unanswered(), 4);
    m_service.replyTo(0, "({'key': <8>},)");
    TRY_COMPARE(m_service.unanswered(), 5);
    QCOMPARE(element.eval("[status, values.key]"), "[0,7]");
    m_service.replyTo(4, "({'key': <9>},)");
    QCOMPARE(element.awaitLog(), R"(["key"])");
    QCOMPARE(element.eval("[status, values.key]"), "[1,9]");
}

void QmlElementTest::aFailureKeepsTheValues()
{
    Engine engine;
    const Element element(engine, "({key: 1})");
    const QStringList names {"Internal",  "NotExistingKey",  "InvalidType",   "InvalidValue",
                             "Forbidden", "NotConfigurable", "InvalidUserId", "UnsupportedType"};
    for (int index = 0; index < names.size(); ++index) {
        m_service.replyWith("({'key': <7>},)");
        QVERIFY(element.reload());
        m_service.replyWithError(prefix + names.at(index), "no");
        QVERIFY(!element.reload());
        QCOMPARE(element.eval("[status, error.code, error.name, error.message, values.key]"),
                 QString(R"([2,%1,"%2","no",7])").arg(index + 1).arg(names.at(index)));
    }
    // An announcement helps, too.
    announce("{'key': <8>}");
    QCOMPARE(element.awaitLog(), R"(["key"])");
    QCOMPARE(element.eval("[status, error.name]"), R"([1,"NoError"])");
}

void QmlElementTest::anAnswerThatIsOutOfDateIsIgnored()
{
    Engine engine;
    const Element element(engine, "({key: 1})");
    QVERIFY(element.reload());
    m_service.leaveUnanswered();
    element.eval("[reload(), reload()]");
    TRY_COMPARE(m_service.unanswered(), 2);
    m_service.replyTo(1, "({'key': <9>},)");
    QCOMPARE(element.awaitLog(), R"(["key"])");
    m_service.replyTo(0, "({'key': <8>},)");

    element.eval("reload()");
    m_service.announceChange(BusFixture::path);
    TRY_COMPARE(m_service.unanswered(), 4);
    m_service.replyTo(3, "({'key': <10>},)");
    QCOMPARE(element.awaitLog(), R"(["key"])");
    m_service.replyTo(2, "({'key': <11>},)");
    m_service.replyWith("({'key': <12>},)");
    awaitRead(*ConfigurationManager::instance());
    QCOMPARE(element.eval("[status, values.key, log]"), "[1,10,[]]");
}

void QmlElementTest::aValueIsFoundByItsPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("warning");

    const auto row = [](const char *name, const QString &path, const QString &value,
                        const QString &warning) {
        QTest::newRow(name) << path << value << warning;
    };
    row("kept", "key", "7", "");
    row("default", "n/a", "0", "");
    row("item", "n/list[1]", "6", "");
    row("object", "/n", R"({"a":0,"list":[5,6],"flags":[true],"more":"x"})", "");
    row("without a default", "n/more", R"("x")", "");
    row("list without a default", "n/flags", "[true]", "");
    row("nowhere", "n/b", "", "does not contain the \"b\" key");
    row("hidden", "hidden/a", "", "the defaults have no object for");
    row("no item", "n/list[2]", "", "[2]");
    row("of JavaScript", "n/toString", "", "\"toString\" key");
    row("length", "n/list/length", "", "length");
    row("an item of an object", "n[0]", "", "n");
    QTest::newRow("invalid") << "n["
                             << ""
                             << "invalid index format";
}

void QmlElementTest::aValueIsFoundByItsPath()
{
    QFETCH(const QString, path);
    QFETCH(const QString, value);
    QFETCH(const QString, warning);

    Engine engine;
    const Element element(engine, "({key: 1, hidden: 3, n: {a: 0, list: [1]}})");
    m_service.replyWith("({'key': <7>, 'hidden': <{'a': <1>}>,"
                        " 'n': <{'list': <[5, 6]>, 'more': <'x'>, 'flags': <[true]>}>},)");
    QVERIFY(element.reload());
    MessageLog log;
    QCOMPARE(element.eval("value('" + path + "')"), value);
    const QStringList warnings = log.take();
    QCOMPARE(warnings.count(), warning.isEmpty() ? 0 : 1);
    QVERIFY2(warnings.join("").contains(warning), qUtf8Printable(warnings.join("")));
}

void QmlElementTest::aChangeWaitsForTheOneBefore()
{
    Engine engine;
    const Element element(engine);
    m_service.replyWith("({'n': <{'a': <1>, 'b': <2>, 'c': <3>}>},)");
    QVERIFY(element.reload());
    m_service.leaveUnanswered();
    element.change("{n: {a: 10}, m: {x: 1}}");
    element.change("{n: {b: 20}, m: {y: 2}}");
    element.change("{n: {c: 30}}");
    TRY_COMPARE(m_service.unanswered(), 1);
    m_service.replyTo(0, "()");
    QCOMPARE(element.awaitLog(), R"(["NoError "])");
    // It has not been announced.
    QCOMPARE(element.eval("(defaults = {}, values.n)"), R"({"a":1,"b":2,"c":3})");
    TRY_COMPARE(m_service.unanswered(), 2);
    m_service.replyWithError(prefix + "Forbidden", "no");
    m_service.stop();
    QVERIFY(m_service.start());
    QVERIFY(element.awaitLog().startsWith("[\"Internal "));
    // What was refused is not sent again.
    QCOMPARE(element.awaitLog(), R"(["Forbidden no"])");
    QCOMPARE(
        m_service.changes(),
        QStringList({"({'m': <{'x': <1>}>, 'n': <{'a': <10>, 'b': <2>, 'c': <3>}>},)",
                     "({'m': <{'x': <1>, 'y': <2>}>, 'n': <{'a': <10>, 'b': <20>, 'c': <3>}>},)",
                     "({'n': <{'a': <10>, 'b': <2>, 'c': <30>}>},)"}));
}

void QmlElementTest::anErrorOfAChangeIsLoggedWithoutACallback()
{
    Engine engine;
    const Element element(engine);
    QVERIFY(element.reload());
    MessageLog log;
    m_service.replyWithError(prefix + "Forbidden", "no");
    element.eval("change({key: 1})");
    element.eval("change({key: 1}, error => { throw new Error('oops') })");
    element.eval("change({key: 1}, error => log.push(error.name))");
    QCOMPARE(element.awaitLog(), R"(["Forbidden"])");
    const QString warning = "<Unknown File>:2:1: QML ManagedConfiguration: ";
    // The script is in no file.
    QCOMPARE(log.take(), QStringList({warning + "Forbidden: no", warning + ":0: Error: oops"}));
}

void QmlElementTest::aCallbackIsNotCalledAfterItsElementOrEngine_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<bool>("isEngine");

    for (const bool isEngine : {false, true}) {
        const char *const what = isEngine ? "engine" : "element";
        QTest::addRow("%s, sent", what) << "{key: 1}" << isEngine;
        QTest::addRow("%s, refused at once", what) << "{key: 0.5}" << isEngine;
    }
}

void QmlElementTest::aCallbackIsNotCalledAfterItsElementOrEngine()
{
    QFETCH(const QString, change);
    QFETCH(const bool, isEngine);

    auto engine = std::make_unique<Engine>();
    auto element = std::make_unique<Element>(*engine);
    QVERIFY(element->reload());
    // Of the element and its engine, this outlives both.
    Engine others;
    Element other(others);
    other.takeLog();
    MessageLog log;
    element->eval("change(" + change + ", error => console.warn('called'))");
    QCOMPARE(log.take(), QStringList());
    if (!isEngine)
        element.reset();
    engine.reset();
    announce("{'key': <8>}");
    QCOMPARE(other.awaitLog(), R"(["key"])");
    other.change("{key: 2}");
    QCOMPARE(other.awaitLog(), R"(["NoError "])");
    QCOMPARE(log.take(), QStringList());
}

void QmlElementTest::aThousandSettingsAreConverted()
{
    QStringList defaults;
    QStringList entries;
    for (int number = 0; number < 1000; ++number) {
        defaults.append(QString("k%1: 0").arg(number));
        entries.append(QString("'k%1': <%1>").arg(number));
    }
    Engine engine;
    const Element element(engine, "({" + defaults.join(", ") + "})");
    element.takeLog();
    announce('{' + entries.join(", ") + '}');
    QCOMPARE(element.awaitLog().count(','), 999);
    // Usually 1 % of it. The time of the processor does not depend on other programs.
    const std::clock_t start = std::clock();
    element.eval("(defaults = defaults, 0)");
    QVERIFY(std::clock() - start < CLOCKS_PER_SEC);
}

TARNVEL_BUS_TEST_MAIN(QmlElementTest)

#include "qml_element_test.moc"
