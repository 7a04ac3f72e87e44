// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "answers.h"
#include "endpoint.h"
#include "fake_service.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingReply>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using namespace Tarnvel::DBus;

namespace {

constexpr int startTimeoutMs = 10000;

// What a system bus says before it reads the policies of the services.
const char busConfiguration[] = R"(<busconfig>
  <type>system</type>
  <listen>unix:path=%1/socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <deny own="*"/>
    <deny send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
    <allow send_destination="org.freedesktop.DBus" send_interface="org.freedesktop.DBus"/>
  </policy>
  <include>%1/policy.conf</include>
</busconfig>
)";

const QString accessDenied = QStringLiteral("org.freedesktop.DBus.Error.AccessDenied");

// Which of the accounts in the policy are those of this process.
struct Accounts
{
    bool isService = true;
    bool isKiosk = false;
    bool isArchivist = false;
};

// The bus takes numbers for names, and there need be nobody of this number.
QString account(unsigned id, bool isOwn)
{
    return QString::number(isOwn ? id : id + 1);
}

QString documentedPolicy()
{
    QFile page(QStringLiteral(DOCS_DIR "/bus-policy.md"));
    if (!page.open(QIODevice::ReadOnly))
        qFatal("%s", qUtf8Printable(page.errorString()));
    return QString::fromUtf8(page.readAll()).section("```xml\n", 1).section("```", 0, 0);
}

void replaceOnce(QString *text, const QString &before, const QString &after)
{
    if (text->count(before) != 1)
        qFatal("%s", qUtf8Printable(before));
    text->replace(before, after);
}

QString policyFor(const Accounts &accounts)
{
    QString policy = documentedPolicy();
    replaceOnce(&policy, "user=\"managed-configuration\"",
                QStringLiteral("user=\"%1\"").arg(account(geteuid(), accounts.isService)));
    replaceOnce(&policy, "group=\"kiosk\"",
                QStringLiteral("group=\"%1\"").arg(account(getegid(), accounts.isKiosk)));
    replaceOnce(&policy, "user=\"archivist\"",
                QStringLiteral("user=\"%1\"").arg(account(geteuid(), accounts.isArchivist)));
    return policy;
}

class Daemon : public QProcess
{
protected:
    void setupChildProcess() override
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
    }
};

// A system bus with the documented policy, where this process has some of its accounts.
class PolicedBus
{
public:
    explicit PolicedBus(const Accounts &accounts)
    {
        write("bus.conf", QString(busConfiguration).arg(m_directory.path()));
        write("policy.conf", policyFor(accounts));
        m_daemon.start("dbus-daemon",
                       {"--nofork", "--nopidfile", "--nosyslog", "--print-address=1",
                        "--config-file=" + m_directory.filePath("bus.conf")});
        while (!m_daemon.canReadLine()) {
            if (!m_daemon.waitForReadyRead(startTimeoutMs))
                qFatal("dbus-daemon did not start");
        }
        // What it reports from here on, refusals above all, nobody reads.
        m_daemon.closeReadChannel(QProcess::StandardError);
    }

    ~PolicedBus()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    QString address() const
    {
        return QStringLiteral("unix:path=%1/socket").arg(m_directory.path());
    }

private:
    void write(const QString &name, const QString &text)
    {
        QFile file(m_directory.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
            qFatal("%s", qUtf8Printable(file.errorString()));
    }

    QTemporaryDir m_directory;
    Daemon m_daemon;
};

// A connection to that bus, as an application has one.
class Client
{
public:
    explicit Client(const PolicedBus &bus)
        : m_connection(QDBusConnection::connectToBus(bus.address(), "client"))
    {
    }

    ~Client()
    {
        QDBusConnection::disconnectFromBus("client");
    }

    // The name of the error; none if the call is answered.
    QString call(const QDBusMessage &message)
    {
        const QDBusPendingReply<> reply = m_connection.asyncCall(message);
        if (!QTest::qWaitFor([&reply] { return reply.isFinished(); }))
            qFatal("no answer");
        return reply.isError() ? reply.error().name() : QString();
    }

    QString requestName(const QString &name)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName");
        message.setArguments({name, uint(0)});
        return call(message);
    }

private:
    QDBusConnection m_connection;
};

} // namespace

class BusPolicyTest : public QObject
{
    Q_OBJECT

public:
    explicit BusPolicyTest(const PolicedBus &bus) : m_bus(bus) { }

private Q_SLOTS:
    void onlyTheServicesAccountTakesTheName_data();
    void onlyTheServicesAccountTakesTheName();
    void aCallIsForThoseWhomThePolicyAdmits_data();
    void aCallIsForThoseWhomThePolicyAdmits();
    void theLibraryWorksUnderThePolicy();
    void theLibraryReportsWhatThePolicyRefuses();

private:
    const PolicedBus &m_bus;
};

void BusPolicyTest::onlyTheServicesAccountTakesTheName_data()
{
    QTest::addColumn<bool>("isService");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("error");

    QTest::newRow("another account") << false << QString(serviceName) << accessDenied;
    QTest::newRow("the service's account") << true << QString(serviceName) << QString();
    QTest::newRow("another name") << true << "org.brenvik.Other" << accessDenied;
    QTest::newRow("a name below") << true << QString(serviceName) + ".Other" << accessDenied;
}

void BusPolicyTest::onlyTheServicesAccountTakesTheName()
{
    QFETCH(const bool, isService);
    QFETCH(const QString, name);
    QFETCH(const QString, error);

    Accounts accounts;
    accounts.isService = isService;
    const PolicedBus bus(accounts);
    QCOMPARE(Client(bus).requestName(name), error);
}

void BusPolicyTest::aCallIsForThoseWhomThePolicyAdmits_data()
{
    QTest::addColumn<bool>("isKiosk");
    QTest::addColumn<bool>("isArchivist");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("error");

    const QString viewer = applicationPath("acme", "viewer");
    const QString archive = applicationPath("acme", "archive");
    const QString interface = applicationInterface;
    const QString get = getConfigurationMethod;
    const QString change = changeConfigurationMethod;
    const QString granted;
    QTest::newRow("no interface") << false << false << viewer << "" << get << accessDenied;
    QTest::newRow("another interface")
        << false << false << viewer << "org.brenvik.Other" << get << accessDenied;
    QTest::newRow("anybody reads") << false << false << viewer << interface << get << granted;
    QTest::newRow("anybody changes") << false << false << viewer << interface << change << granted;
    QTest::newRow("the group reads") << true << false << viewer << interface << get << granted;
    QTest::newRow("the group changes")
        << true << false << viewer << interface << change << accessDenied;
    QTest::newRow("anybody reads the archive's")
        << false << false << archive << interface << get << accessDenied;
    QTest::newRow("the archivist reads the archive's")
        << false << true << archive << interface << get << granted;
    QTest::newRow("the archivist, in the group, changes the archive's")
        << true << true << archive << interface << change << granted;
    QTest::newRow("the archivist, in the group, changes another's")
        << true << true << viewer << interface << change << accessDenied;
}

void BusPolicyTest::aCallIsForThoseWhomThePolicyAdmits()
{
    QFETCH(const bool, isKiosk);
    QFETCH(const bool, isArchivist);
    QFETCH(const QString, path);
    QFETCH(const QString, interface);
    QFETCH(const QString, method);
    QFETCH(const QString, error);

    Accounts accounts;
    accounts.isKiosk = isKiosk;
    accounts.isArchivist = isArchivist;
    const PolicedBus bus(accounts);
    FakeService service(bus.address());
    QVERIFY(service.start());
    const QString found = Client(bus).call(
        QDBusMessage::createMethodCall(serviceName, path, interface, method));
    QCOMPARE(found, error);
    QCOMPARE(service.calls().count(), error.isEmpty() ? 1 : 0);
}

void BusPolicyTest::theLibraryWorksUnderThePolicy()
{
    FakeService service(m_bus.address());
    QVERIFY(service.start());
    service.answerWith("({'key': <7>},)");
    QCoreApplication::setApplicationName("viewer");
    ConfigurationManager manager;
    int announced = 0;
    connect(&manager, &ConfigurationManager::configurationChanged, this,
            [&announced](const Configuration &configuration) {
                QCOMPARE(configuration.get("key"), QVariant(7));
                ++announced;
            });
    Answers answers;
    manager.getConfiguration(answers.forReading());
    manager.changeConfiguration(Configuration(), answers.forChanging());
    QVERIFY(answers.waitFor(2));
    QCOMPARE(answers.texts(), QStringList({"{\"key\": int 7}", "{}"}));
    service.announceChange(applicationPath("acme", "viewer"));
    QTRY_COMPARE(announced, 1);
}

void BusPolicyTest::theLibraryReportsWhatThePolicyRefuses()
{
    FakeService service(m_bus.address());
    QVERIFY(service.start());
    QCoreApplication::setApplicationName("archive");
    ConfigurationManager manager;
    Answers answers;
    manager.getConfiguration(answers.forReading());
    manager.changeConfiguration(Configuration(), answers.forChanging());
    QVERIFY(answers.waitFor(2));
    const QStringList texts = answers.texts();
    for (const QString &text : texts)
        QVERIFY2(text.startsWith("{} error 1: Rejected send message"), qPrintable(text));
    QCOMPARE(service.calls().count(), 0);
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName("acme");
    const PolicedBus bus(Accounts {});
    qputenv(busAddressVariable, bus.address().toUtf8());
    BusPolicyTest test(bus);
    return QTest::qExec(&test, argc, argv);
}

#include "bus_policy_test.moc"
