// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_fixture.h"
#include "program.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <gio/gunixsocketaddress.h>

using namespace Tarnvel::Testing;

namespace {

bool writeFile(const QString &name, const QByteArray &content)
{
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

// A bus that can start the service, which then fails.
bool writeBusConfiguration(const QString &directory)
{
    const QString bus = QStringLiteral(
        "<busconfig><type>session</type><listen>unix:path=%1/bus</listen>"
        "<auth>EXTERNAL</auth><servicedir>%1</servicedir><policy context=\"default\">"
        "<allow send_destination=\"*\"/><allow receive_sender=\"*\"/><allow own=\"*\"/></policy>"
        "</busconfig>");
    return writeFile(directory + "/bus.conf", bus.arg(directory).toUtf8())
        && writeFile(directory + "/org.brenvik.ManagedConfiguration.service",
                     "[D-BUS Service]\nName=org.brenvik.ManagedConfiguration\nExec=/bin/false\n");
}

Outcome runClient(const QStringList &arguments, const QString &busAddress = QString())
{
    Program client("managed-configuration");
    if (!busAddress.isNull())
        client.setVariable("DBUS_SYSTEM_BUS_ADDRESS", busAddress);
    return client.run(clientArguments(arguments));
}

} // namespace

class ClientRequestsTest : public QObject
{
    Q_OBJECT

public:
    explicit ClientRequestsTest(BusFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void init();
    void helpAndVersionArePrinted();
    void separatorInANameMakesALongerObjectPath();
    void errorHasItsStatusReasonAndHint_data();
    void errorHasItsStatusReasonAndHint();
    void replyIsAwaitedForTheTimeoutOnly();
    void serviceThatGoesDuringAChangeLeavesItUnknown();
    void missingServiceIsReported();
    void missingBusIsReported();
    void busThatNeverAnswersIsGivenUp();
    void checkReportsEachPrerequisite();
    void checkEndsWithTheStatusOfTheFirstProblem();
    void checkKnowsAServiceThatTheBusStarts();

private:
    BusFixture &m_fixture;
};

void ClientRequestsTest::init()
{
    m_fixture.service.stop();
    QVERIFY(m_fixture.service.start());
    m_fixture.service.replyWith("({'zoom': <100>, 'n': <@a{sv} {'x': <1>, 'y': <[1, 2]>}>},)");
}

void ClientRequestsTest::helpAndVersionArePrinted()
{
    const Outcome help = runClient({"--help"});
    QVERIFY2(help.output.contains("get [PATH]"), qPrintable(help.output));
    QCOMPARE(help.errors, QString());
    QCOMPARE(help.status, 0);
    const Outcome version = Program("managed-configuration").run({"--version"});
    QCOMPARE(version.output, QString("managed-configuration " CLIENT_VERSION "\n"));
    QCOMPARE(version.status, 0);
}

void ClientRequestsTest::separatorInANameMakesALongerObjectPath()
{
    const Outcome outcome = runClient({"--organization=a/b", "--application=c", "get", "zoom"});
    QCOMPARE(outcome.output, QString("100\n"));
    QCOMPARE(m_fixture.service.calls().last().path, QString("/a/b_2ec"));
}

void ClientRequestsTest::errorHasItsStatusReasonAndHint_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("hint");

    QTest::newRow("Internal") << 1 << "log";
    QTest::newRow("NotExistingKey") << 2 << "path";
    QTest::newRow("InvalidType") << 3 << "get --type";
    QTest::newRow("InvalidValue") << 4 << "accepts";
    QTest::newRow("Forbidden") << 5 << "unlock";
    QTest::newRow("NotConfigurable") << 6 << "--organization and --application";
    QTest::newRow("InvalidUserId") << 7 << "as a user";
    QTest::newRow("UnsupportedType") << 8 << "another type";
}

void ClientRequestsTest::errorHasItsStatusReasonAndHint()
{
    QFETCH(int, status);
    QFETCH(QString, hint);
    const QString name = QTest::currentDataTag();
    const QString error = "org.brenvik.ManagedConfiguration.Error." + name;
    const QString message = QString("managed-configuration: %1 with error %2, %3: ")
                                .arg(status == 1 ? "the service or the bus failed"
                                                 : "the service refused",
                                     QString::number(status), name);
    m_fixture.service.replyWithError(error, "");
    const Outcome reading = runClient({"get"});
    QVERIFY2(reading.errors.startsWith(message + "no reason given\n"), qPrintable(reading.errors));
    QCOMPARE(reading.status, status);

    m_fixture.service.replyThrough([error](const auto &call) {
        if (call.method() == "GetConfiguration")
            call.reply(parseValue("({'zoom': <100>},)"));
        else
            call.replyError(error, "the reason");
    });
    const Outcome changing = runClient({"set", "zoom=1"});
    const QStringList lines = changing.errors.split('\n');
    QCOMPARE(lines.first(), message + "the reason");
    QVERIFY2(lines.value(1).startsWith("managed-configuration: what to do: "), qPrintable(hint));
    QVERIFY2(lines.value(1).contains(hint), qPrintable(lines.value(1)));
    QCOMPARE(changing.output, QString());
    QCOMPARE(changing.status, status);
}

void ClientRequestsTest::replyIsAwaitedForTheTimeoutOnly()
{
    m_fixture.service.replyThrough([](const auto &) {});
    Outcome outcome;
    // A busy machine needs more time to open the bus.
    for (double timeout = 0.5; timeout < 20; timeout *= 2) {
        const QString seconds = QString::number(timeout);
        outcome = runClient({"--timeout", seconds, "get"});
        QCOMPARE(outcome.status, 69);
        if (outcome.errors.contains(": no reply from the service within " + seconds + " s\n"))
            return;
    }
    QFAIL(qPrintable(outcome.errors));
}

void ClientRequestsTest::serviceThatGoesDuringAChangeLeavesItUnknown()
{
    m_fixture.service.replyThrough([this](const auto &call) {
        if (call.method() == "GetConfiguration")
            call.reply(parseValue("({'zoom': <100>},)"));
        else
            QMetaObject::invokeMethod(
                this, [this] { m_fixture.service.stop(); }, Qt::QueuedConnection);
    });
    const Outcome outcome = runClient({"set", "zoom=1"});
    QVERIFY2(outcome.errors.startsWith("managed-configuration: no service: "),
             qPrintable(outcome.errors));
    QVERIFY2(outcome.errors.contains("; the change may have been made\n"),
             qPrintable(outcome.errors));
    QCOMPARE(outcome.status, 69);
}

void ClientRequestsTest::missingServiceIsReported()
{
    m_fixture.service.stop();
    for (const char *command : {"get", "watch", "check"}) {
        const Outcome outcome = runClient({command});
        const QString text = outcome.errors + outcome.output;
        QVERIFY2(text.contains(": no service: org.brenvik.ManagedConfiguration is not running, and "
                               "the bus cannot start it\n"),
                 qPrintable(text));
        QVERIFY(text.contains(": start it, or run this in managed-configuration-sandbox\n"));
        QCOMPARE(outcome.status, 69);
    }
}

void ClientRequestsTest::missingBusIsReported()
{
    for (const char *command : {"get", "watch", "check"}) {
        const Outcome outcome = runClient({command}, "unix:path=/nowhere/bus");
        const QString text = outcome.errors + outcome.output;
        QVERIFY2(text.contains(": no bus at unix:path=/nowhere/bus (from "
                               "DBUS_SYSTEM_BUS_ADDRESS): Failed to connect to socket"),
                 qPrintable(text));
        QVERIFY(text.contains(": start the bus, correct DBUS_SYSTEM_BUS_ADDRESS, or run this in "
                              "managed-configuration-sandbox\n"));
        QCOMPARE(outcome.status, 69);
    }
}

void ClientRequestsTest::busThatNeverAnswersIsGivenUp()
{
    const QTemporaryDir directory;
    const QString socket = directory.filePath("bus");
    g_autoptr(GSocketAddress) address = g_unix_socket_address_new(qUtf8Printable(socket));
    g_autoptr(GSocketListener) bus = g_socket_listener_new();
    QVERIFY(g_socket_listener_add_address(bus, address, G_SOCKET_TYPE_STREAM,
                                          G_SOCKET_PROTOCOL_DEFAULT, nullptr, nullptr, nullptr));
    const QStringList commands[] {{"get"}, {"set", "a:int=1"}, {"watch"}, {"check"}};
    for (const QStringList &command : commands) {
        const Outcome outcome = runClient(QStringList {"--timeout", "0.1"} + command,
                                          "unix:path=" + socket);
        QVERIFY2((outcome.errors + outcome.output).contains(": no reply within 0.1 s\n"),
                 qPrintable(outcome.errors));
        QCOMPARE(outcome.status, 69);
    }
}

void ClientRequestsTest::checkReportsEachPrerequisite()
{
    const Outcome outcome = runClient({"check"});
    QCOMPARE(outcome.output,
             QString("bus: connected to %1 (from DBUS_SYSTEM_BUS_ADDRESS)\n"
                     "service: org.brenvik.ManagedConfiguration is running as process %2\n"
                     "identity: organization \"acme.labs\", application \"viewer\"\n"
                     "object path: /acme_2elabs_2eviewer\n"
                     "configuration: read, settings: 3\n")
                 .arg(m_fixture.bus.address())
                 .arg(QCoreApplication::applicationPid()));
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 0);
}

void ClientRequestsTest::checkEndsWithTheStatusOfTheFirstProblem()
{
    const Outcome outcome = runClient({"--application", "vié", "check"}, "unix:path=/nowhere/bus");
    QCOMPARE(outcome.output.section('\n', 2),
             QString("service: cannot be checked without a bus\n"
                     "  what to do: fix the problem above first\n"
                     "identity: organization \"acme.labs\", application \"vié\"\n"
                     "object path: /acme_2elabs_2evié: \"é\" is not allowed in an object path\n"
                     "  what to do: use the names by which the service knows the application; they "
                     "consist of letters, digits, \"_\" and \".\"\n"
                     "configuration: not read\n"
                     "  what to do: fix the problem above first\n"));
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 69);
    QCOMPARE(runClient({"--application", "vié", "check"}).status, 64);
}

void ClientRequestsTest::checkKnowsAServiceThatTheBusStarts()
{
    const QTemporaryDir directory;
    QVERIFY(writeBusConfiguration(directory.path()));
    QProcess bus;
    bus.start("dbus-daemon",
              {"--nofork", "--print-address", "--config-file", directory.filePath("bus.conf")});
    QVERIFY(bus.waitForReadyRead(60000));
    const Outcome outcome = runClient({"check"}, "unix:path=" + directory.filePath("bus"));
    bus.kill();
    QVERIFY(bus.waitForFinished(60000));
    QVERIFY2(outcome.output.contains("service: org.brenvik.ManagedConfiguration is not running; "
                                     "the bus starts it when it is called\n"),
             qPrintable(outcome.output));
    QVERIFY2(outcome.output.contains("configuration: the service or the bus failed with error 1, "),
             qPrintable(outcome.output));
    QCOMPARE(outcome.status, 1);
}

TARNVEL_BUS_TEST_MAIN(ClientRequestsTest)

#include "client_requests_test.moc"
