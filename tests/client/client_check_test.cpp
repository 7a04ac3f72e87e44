// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_fixture.h"
#include "program.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Tarnvel::Testing;

namespace {

const QString startHint = QStringLiteral("  what to do: start it, or run this in "
                                         "managed-configuration-sandbox\n");
const QString path = QStringLiteral("identity: organization \"acme.labs\", application \"viewer\"\n"
                                    "object path: /acme_2elabs_2eviewer\n");
const QString notAsked = QStringLiteral("configuration: not read\n"
                                        "  what to do: fix the problem above first\n");

// A bus that knows how to start the service, which then fails.
bool writeConfiguration(const QString &directory)
{
    QFile bus(directory + "/bus.conf");
    QFile service(directory + "/org.brenvik.ManagedConfiguration.service");
    const QString text = QStringLiteral(
        "<busconfig><type>session</type><listen>unix:path=%1/bus</listen>"
        "<auth>EXTERNAL</auth><servicedir>%1</servicedir><policy context=\"default\">"
        "<allow send_destination=\"*\"/><allow receive_sender=\"*\"/><allow "
        "own=\"*\"/></policy></busconfig>");
    return bus.open(QIODevice::WriteOnly) && bus.write(text.arg(directory).toUtf8()) > 0
        && service.open(QIODevice::WriteOnly)
        && service.write("[D-BUS Service]\nName=org.brenvik.ManagedConfiguration\n"
                         "Exec=/bin/false\n")
        > 0;
}

} // namespace

class ClientCheckTest : public QObject
{
    Q_OBJECT

public:
    explicit ClientCheckTest(BusFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void init();
    void allIsWell();
    void aMissingBusIsFound();
    void aMissingServiceIsFound();
    void aServiceThatTheBusStartsIsFound();
    void anIdentityWithoutAnObjectPathIsFound();
    void aRefusalIsFound();
    void aServiceThatDoesNotAnswerIsFound();

private:
    QString busLine() const;

    BusFixture &m_fixture;
    QString m_service;
    QScopedPointer<Program> m_program;
};

void ClientCheckTest::init()
{
    m_program.reset(new Program("managed-configuration"));
    m_fixture.service.answerWith("({'a': <1>, 'n': <@a{sv} {'x': <1>, 'y': <[1, 2]>}>},)");
    m_service = QStringLiteral("service: org.brenvik.ManagedConfiguration is running as process "
                               "%1\n")
                    .arg(QCoreApplication::applicationPid());
}

QString ClientCheckTest::busLine() const
{
    return QStringLiteral("bus: connected to %1 (from DBUS_SYSTEM_BUS_ADDRESS)\n")
        .arg(m_fixture.bus.address());
}

void ClientCheckTest::allIsWell()
{
    const Outcome outcome = m_program->run(clientArguments({"check"}));
    QCOMPARE(outcome.output, busLine() + m_service + path + "configuration: read, settings: 3\n");
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 0);
}

void ClientCheckTest::aMissingBusIsFound()
{
    m_program->setVariable("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus");
    const Outcome outcome = m_program->run(clientArguments({"check"}));
    const QString bus = outcome.output.section('\n', 0, 1, QString::SectionIncludeTrailingSep);
    QVERIFY2(bus.startsWith("bus: no bus at unix:path=/nowhere/bus (from "
                            "DBUS_SYSTEM_BUS_ADDRESS): Failed to connect to socket"),
             qPrintable(bus));
    QVERIFY2(bus.contains("\n  what to do: start the bus, correct DBUS_SYSTEM_BUS_ADDRESS, "),
             qPrintable(bus));
    QCOMPARE(outcome.output.mid(bus.size()),
             "service: cannot be checked without a bus\n  what to do: fix the problem above first\n"
                 + path + notAsked);
    QCOMPARE(outcome.status, 69);
}

void ClientCheckTest::aMissingServiceIsFound()
{
    m_fixture.service.stop();
    const Outcome outcome = m_program->run(clientArguments({"check"}));
    QVERIFY(m_fixture.service.start());
    QCOMPARE(outcome.output,
             busLine()
                 + "service: no service: org.brenvik.ManagedConfiguration is not running, and the "
                   "bus cannot start it\n"
                 + startHint + path + notAsked);
    QCOMPARE(outcome.status, 69);
}

void ClientCheckTest::aServiceThatTheBusStartsIsFound()
{
    const QTemporaryDir directory;
    QVERIFY(writeConfiguration(directory.path()));
    QProcess bus;
    bus.start("dbus-daemon",
              {"--nofork", "--print-address", "--config-file", directory.filePath("bus.conf")});
    QVERIFY(bus.waitForReadyRead());
    m_program->setVariable("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + directory.filePath("bus"));
    const Outcome outcome = m_program->run(clientArguments({"check"}));
    bus.terminate();
    QVERIFY(bus.waitForFinished());
    QVERIFY2(outcome.output.contains("service: org.brenvik.ManagedConfiguration is not running; "
                                     "the bus starts it when it is called\n"),
             qPrintable(outcome.output));
    QVERIFY2(outcome.output.contains("configuration: the service or the bus failed with error 1, "),
             qPrintable(outcome.output));
    QCOMPARE(outcome.status, 1);
}

void ClientCheckTest::anIdentityWithoutAnObjectPathIsFound()
{
    const Outcome outcome = m_program->run(
        {"--organization", "acme", "--application", "vié", "check"});
    QCOMPARE(outcome.output,
             busLine() + m_service
                 + "identity: organization \"acme\", application \"vié\"\n"
                   "object path: /acme_2evié: \"é\" is not allowed in an object path\n"
                   "  what to do: use the names by which the service knows the application; they "
                   "consist of letters, digits, \"_\" and \".\"\n"
                 + notAsked);
    QCOMPARE(outcome.status, 64);
}

void ClientCheckTest::aRefusalIsFound()
{
    m_fixture.service.answerWithError("org.brenvik.ManagedConfiguration.Error.NotConfigurable",
                                      "unknown");
    const Outcome outcome = m_program->run(clientArguments({"check"}));
    QCOMPARE(outcome.output,
             busLine() + m_service + path
                 + "configuration: the service refused with error 6, NotConfigurable: unknown\n"
                   "  what to do: correct --organization and --application, or ask an "
                   "administrator to set up a configuration for the application\n");
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 6);
}

void ClientCheckTest::aServiceThatDoesNotAnswerIsFound()
{
    m_fixture.service.answerThrough([](const Tarnvel::Sandbox::MethodCall &) {});
    const Outcome outcome = m_program->run(clientArguments({"check", "--timeout", "1"}));
    QVERIFY2(outcome.output.contains("configuration: no reply from the service within 1 s\n"
                                     "  what to do: "),
             qPrintable(outcome.output));
    QCOMPARE(outcome.status, 69);
}

TARNVEL_BUS_TEST_MAIN(ClientCheckTest)

#include "client_check_test.moc"
