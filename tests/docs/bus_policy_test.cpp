// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "endpoint.h"
#include "fake_service.h"
#include "waiting.h"

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <unistd.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using namespace Tarnvel::DBus;

namespace {

// The configuration of a system bus, without the policies of services.
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
    <allow receive_sender="*"/>
    <allow send_destination="org.freedesktop.DBus" send_interface="org.freedesktop.DBus"/>
  </policy>
  <include>%1/policy.conf</include>
</busconfig>
)";

const QString busName = QStringLiteral("org.freedesktop.DBus");
const QString accessDenied = QStringLiteral("org.freedesktop.DBus.Error.AccessDenied");

// The documented policy with ids instead of names: accounts in \a ownAccounts get the ids of this
// process, the others get ids that it does not have.
QByteArray policyFor(const QStringList &ownAccounts)
{
    QFile page(QStringLiteral(DOCS_DIR "/bus-policy.md"));
    if (!page.open(QIODevice::ReadOnly))
        qFatal("%s", qUtf8Printable(page.errorString()));
    QByteArray policy = page.readAll();
    policy = policy.mid(policy.indexOf("```xml\n") + 7);
    policy.truncate(policy.indexOf("```"));
    for (const char *account : {"managed-configuration", "kiosk", "archivist"}) {
        const QByteArray name = '"' + QByteArray(account) + '"';
        if (policy.count(name) != 1)
            qFatal("the policy does not have %s once", name.constData());
        const unsigned own = name == "\"kiosk\"" ? getegid() : geteuid();
        const unsigned id = ownAccounts.contains(account) ? own : own + 1;
        policy.replace(name, '"' + QByteArray::number(id) + '"');
    }
    return policy;
}

// A system bus with the documented policy, on which this process has some of its accounts.
class RestrictedBus
{
public:
    explicit RestrictedBus(const QStringList &ownAccounts)
    {
        write("bus.conf", QString(busConfiguration).arg(m_directory.path()).toUtf8());
        write("policy.conf", policyFor(ownAccounts));
        m_daemon.start("setpriv",
                       {"--pdeathsig=KILL", "dbus-daemon", "--nofork", "--nopidfile", "--nosyslog",
                        "--print-address=1", "--config-file=" + m_directory.filePath("bus.conf")});
        // It prints its address once it listens.
        if (!m_daemon.waitForReadyRead(waitTimeoutMs))
            qFatal("dbus-daemon did not start");
        // It reports each refusal there.
        m_daemon.closeReadChannel(QProcess::StandardError);
    }

    ~RestrictedBus()
    {
        QDBusConnection::disconnectFromBus(m_directory.path());
        m_daemon.kill();
        m_daemon.waitForFinished(-1);
    }

    QString address() const
    {
        return QStringLiteral("unix:path=%1/socket").arg(m_directory.path());
    }

    // The name of the error; none if the call succeeds.
    QString errorOf(const QDBusMessage &message) const
    {
        QDBusConnection client = QDBusConnection::connectToBus(address(), m_directory.path());
        return client.call(message, QDBus::BlockWithGui, waitTimeoutMs).errorName();
    }

private:
    void write(const QString &name, const QByteArray &text)
    {
        QFile file(m_directory.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) < 0)
            qFatal("%s", qUtf8Printable(file.errorString()));
    }

    QTemporaryDir m_directory;
    QProcess m_daemon;
};

} // namespace

class BusPolicyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePolicyDecides_data()
    {
        QTest::addColumn<QStringList>("accounts");
        QTest::addColumn<QDBusMessage>("message");
        QTest::addColumn<QString>("error");

        const auto call = &QDBusMessage::createMethodCall;
        const auto own = [call](const QString &name) {
            return call(busName, "/org/freedesktop/DBus", busName, "RequestName")
                << name << uint(0);
        };
        const auto send = [call](const QString &application, const QString &method,
                                 const QString &interface = applicationInterface) {
            return call(serviceName, applicationPath("acme", application), interface, method);
        };
        const QString get = getConfigurationMethod;
        const QString change = changeConfigurationMethod;
        const QStringList service {"managed-configuration"};
        const QStringList kiosk {service + QStringList("kiosk")};
        const QStringList archivist {service + QStringList("archivist")};

        QTest::newRow("other account") << QStringList() << own(serviceName) << accessDenied;
        QTest::newRow("service") << service << own(serviceName) << "";
        QTest::newRow("service, other name") << service << own("org.brenvik.Other") << accessDenied;
        QTest::newRow("service, name below")
            << service << own(QString(serviceName) + ".Other") << accessDenied;

        QTest::newRow("no interface") << service << send("viewer", get, "") << accessDenied;
        QTest::newRow("other interface") << service << send("viewer", get, "a.b") << accessDenied;
        QTest::newRow("reading") << service << send("viewer", get) << "";
        QTest::newRow("changing") << service << send("viewer", change) << "";
        QTest::newRow("kiosk, reading") << kiosk << send("viewer", get) << "";
        QTest::newRow("kiosk, changing") << kiosk << send("viewer", change) << accessDenied;
        QTest::newRow("archive") << service << send("archive", get) << accessDenied;
        QTest::newRow("archivist, archive") << archivist << send("archive", get) << "";
        QTest::newRow("archivist in kiosk, archive")
            << archivist + kiosk << send("archive", change) << "";
        QTest::newRow("archivist in kiosk, changing")
            << archivist + kiosk << send("viewer", change) << accessDenied;
    }

    void thePolicyDecides()
    {
        QFETCH(const QStringList, accounts);
        QFETCH(const QDBusMessage, message);
        QFETCH(const QString, error);

        const RestrictedBus bus(accounts);
        FakeService service(bus.address());
        if (message.service() == serviceName)
            QVERIFY(service.start());
        QCOMPARE(bus.errorOf(message), error);
    }

    void theLibraryWorksUnderThePolicy()
    {
        FakeService service(qEnvironmentVariable(busAddressVariable));
        QVERIFY(service.start());
        service.replyWith("({'key': <7>},)");
        QCoreApplication::setApplicationName("viewer");
        ConfigurationManager manager;
        const Announcements announcements(manager);
        QCOMPARE(awaitRead(manager), "{\"key\": int 7}");
        QCOMPARE(awaitChange(manager, Configuration()), "{}");
        service.announceChange(applicationPath("acme", "viewer"));
        TRY_COMPARE(announcements.texts(), QStringList("{\"key\": int 7}"));
    }

    void theLibraryReportsARefusal()
    {
        FakeService service(qEnvironmentVariable(busAddressVariable));
        QVERIFY(service.start());
        QCoreApplication::setApplicationName("archive");
        ConfigurationManager manager;
        const QString refusal = "{} error 1: Rejected send message";
        QVERIFY(awaitRead(manager).startsWith(refusal));
        QVERIFY(awaitChange(manager, Configuration()).startsWith(refusal));
        QCOMPARE(service.calls().count(), 0);
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName("acme");
    const RestrictedBus bus({"managed-configuration"});
    qputenv(busAddressVariable, bus.address().toUtf8());
    BusPolicyTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "bus_policy_test.moc"
