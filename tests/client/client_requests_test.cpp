// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "program.h"

#include <QtCore/QTemporaryDir>

#include <gio/gunixsocketaddress.h>

using namespace Tarnvel::Testing;

namespace {

Outcome runClient(const QStringList &arguments, const QString &busAddress = QString())
{
    Program client("managed-configuration");
    if (!busAddress.isNull())
        client.setVariable("DBUS_SYSTEM_BUS_ADDRESS", busAddress);
    return client.run(clientArguments(arguments));
}

} // namespace

class ClientRequestsTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void helpAndVersionArePrinted()
    {
        const Outcome help = runClient({"--help"});
        QVERIFY2(help.output.contains("get [PATH]"), qPrintable(help.output));
        QCOMPARE(help.errors, QString());
        QCOMPARE(help.status, 0);
        const Outcome version = Program("managed-configuration").run({"--version"});
        QCOMPARE(version.output, "managed-configuration " CLIENT_VERSION "\n");
        QCOMPARE(version.status, 0);
    }

    void separatorInANameMakesALongerObjectPath()
    {
        const Outcome outcome = runClient({"--organization=a/b", "--application=c", "get", "key"});
        QCOMPARE(outcome.output, "7\n");
        QCOMPARE(m_service.calls().last().path, "/a/b_2ec");
    }

    void errorHasItsStatusReasonAndHint_data()
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

    void errorHasItsStatusReasonAndHint()
    {
        QFETCH(int, status);
        QFETCH(QString, hint);
        const QString name = QTest::currentDataTag();
        const QString error = "org.brenvik.ManagedConfiguration.Error." + name;
        const QString message = QString("managed-configuration: %1 with error %2, %3: ")
                                    .arg(status == 1 ? "the service or the bus failed"
                                                     : "the service refused",
                                         QString::number(status), name);
        m_service.replyWithError(error, "");
        const Outcome reading = runClient({"get"});
        QVERIFY2(reading.errors.startsWith(message + "no reason given\n"),
                 qPrintable(reading.errors));
        QCOMPARE(reading.status, status);

        m_service.replyThrough([error](const auto &call) {
            if (call.method() == "GetConfiguration")
                call.reply(parseValue("({'key': <7>},)"));
            else
                call.replyError(error, "the reason");
        });
        const Outcome changing = runClient({"set", "key=1"});
        const QStringList lines = changing.errors.split('\n');
        QCOMPARE(lines.first(), message + "the reason");
        const QString toDo = lines.value(1);
        QVERIFY2(toDo.startsWith("managed-configuration: what to do: ") && toDo.contains(hint),
                 qPrintable(toDo));
        QCOMPARE(changing.output, QString());
        QCOMPARE(changing.status, status);
    }

    void replyIsAwaitedForTheTimeoutOnly()
    {
        m_service.leaveUnanswered();
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

    void serviceThatGoesDuringAChangeLeavesItUnknown()
    {
        m_service.replyThrough([this](const auto &call) {
            if (call.method() == "GetConfiguration")
                call.reply(parseValue("({'key': <7>},)"));
            else
                QMetaObject::invokeMethod(
                    this, [this] { m_service.stop(); }, Qt::QueuedConnection);
        });
        const Outcome outcome = runClient({"set", "key=1"});
        QVERIFY2(outcome.errors.startsWith("managed-configuration: no service: ")
                     && outcome.errors.contains("; the change may have been made\n"),
                 qPrintable(outcome.errors));
        QCOMPARE(outcome.status, 69);
    }

    void syntaxIsCheckedWithoutABus()
    {
        const QStringList commands[] {{"get", "//"}, {"set", "a"}, {"watch", "//"}, {"check", "a"}};
        for (const QStringList &command : commands)
            QCOMPARE(runClient(command, "unix:path=/nowhere/bus").status, 64);
    }

    void missingServiceOrBusIsReported()
    {
        m_service.stop();
        const QTemporaryDir directory;
        const QString socket = directory.filePath("bus");
        g_autoptr(GSocketAddress) address = g_unix_socket_address_new(qUtf8Printable(socket));
        g_autoptr(GSocketListener) silentBus = g_socket_listener_new();
        QVERIFY(g_socket_listener_add_address(silentBus, address, G_SOCKET_TYPE_STREAM,
                                              G_SOCKET_PROTOCOL_DEFAULT, nullptr, nullptr,
                                              nullptr));
        const QStringList rows[] {
            {m_fixture.bus.address(), "20",
             ": no service: org.brenvik.ManagedConfiguration is not running, and the bus cannot "
             "start it\n",
             ": start it, or run this in managed-configuration-sandbox\n"},
            {"unix:path=/nowhere/bus", "20",
             ": no bus at unix:path=/nowhere/bus (from DBUS_SYSTEM_BUS_ADDRESS): Failed to connect "
             "to socket",
             ": start the bus, correct DBUS_SYSTEM_BUS_ADDRESS, or run this in "
             "managed-configuration-sandbox\n"},
            {"unix:path=" + socket, "0.1", ": no reply within 0.1 s\n", ""},
        };
        const QStringList commands[] {{"get"}, {"set", "a:int=1"}, {"watch"}, {"check"}};
        for (const QStringList &row : rows) {
            for (const QStringList &command : commands) {
                const QStringList arguments {"--timeout", row.at(1)};
                const Outcome outcome = runClient(arguments + command, row.at(0));
                const QString text = outcome.errors + outcome.output;
                QVERIFY2(text.contains(row.at(2)) && text.contains(row.at(3)), qPrintable(text));
                QCOMPARE(outcome.status, 69);
            }
        }
    }

    void checkReportsEachPrerequisite()
    {
        m_service.replyWith("({'zoom': <100>, 'n': <@a{sv} {'x': <1>, 'y': <[1, 2]>}>},)");
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

    void checkEndsWithTheStatusOfTheFirstProblem()
    {
        const Outcome outcome = runClient({"--application", "vié", "check"},
                                          "unix:path=/nowhere/bus");
        QCOMPARE(outcome.output.section('\n', 2),
                 ("service: cannot be checked without a bus\n"
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

    void checkKnowsAServiceThatTheBusStarts()
    {
        const QTemporaryDir directory;
        Program shell("/bin/sh");
        shell.setVariable("XDG_DATA_HOME", directory.path());
        const QString client = INSTALLED_PROGRAMS "/managed-configuration";
        // A session bus that can start the service, which then fails.
        const Outcome outcome = shell.run({"-ec", R"(
services=$XDG_DATA_HOME/dbus-1/services
mkdir -p "$services"
printf '[D-BUS Service]\nName=%s\nExec=/bin/false\n' org.brenvik.ManagedConfiguration \
    >"$services/failing.service"
exec dbus-run-session sh -c 'DBUS_SYSTEM_BUS_ADDRESS=$DBUS_SESSION_BUS_ADDRESS "$@"' sh "$@")",
                                           "sh", client, "--organization=acme",
                                           "--application=viewer", "check"});
        QVERIFY2(
            outcome.output.contains("service: org.brenvik.ManagedConfiguration is not running; "
                                    "the bus starts it when it is called\n"),
            qPrintable(outcome.output + outcome.errors));
        QVERIFY2(
            outcome.output.contains("configuration: the service or the bus failed with error 1, "),
            qPrintable(outcome.output));
        QCOMPARE(outcome.status, 1);
    }
};

TARNVEL_BUS_TEST_MAIN(ClientRequestsTest)

#include "client_requests_test.moc"
