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
    void aSeparatorInANameMakesALongerPath();

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

void ClientRequestsTest::aSeparatorInANameMakesALongerPath()
{
    const Outcome outcome = Program(client).run(
        {"--organization", "a/b", "--application", "c", "get", "zoom"});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.output, QString("100\n"));
    QCOMPARE(outcome.status, 0);
    QCOMPARE(m_fixture.service.calls().last().path, QString("/a/b_2ec"));
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
