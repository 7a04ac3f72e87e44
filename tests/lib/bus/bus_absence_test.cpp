// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "configuration_manager_p.h"
#include "message_log.h"
#include "qt_version.h"
#include "waiting.h"

#include <QtDBus/QDBusMetaType>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

const QString notConnected = QStringLiteral("{} error 1: Not connected to D-Bus server");

} // namespace

class BusAbsenceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theFirstManagerAloneRegistersTheType();
    void everyRequestFailsOnceFromTheEventLoop();
    void everyReReadAnnouncesAnEmptyConfiguration();
};

void BusAbsenceTest::initTestCase()
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    QCoreApplication::setOrganizationName("acme");
}

void BusAbsenceTest::theFirstManagerAloneRegistersTheType()
{
    const QtType type(qMetaTypeId<Configuration>());
    QCOMPARE(QDBusMetaType::typeToSignature(type), static_cast<const char *>(nullptr));
    MessageLog log;
    const ConfigurationManager first;
    QCOMPARE(QDBusMetaType::typeToSignature(type), "a{sv}");
    QCOMPARE(log.take(), QStringList());

    static int readings = 0;
    QDBusMetaType::registerMarshallOperators(
        type, [](QDBusArgument &, const void *) {},
        [](const QDBusArgument &, void *) { ++readings; });
    const ConfigurationManager second;
    Configuration configuration;
    QDBusMetaType::demarshall(QDBusArgument(), type, &configuration);
    QCOMPARE(readings, 1);
    qDBusRegisterMetaType<Configuration>();
}

void BusAbsenceTest::everyRequestFailsOnceFromTheEventLoop()
{
    MessageLog log;
    ConfigurationManager manager;
    Answers answers;
    for (int round = 0; round < 3; ++round) {
        manager.getConfiguration(answers.forReading());
        manager.changeConfiguration(Configuration(), answers.forChanging());
    }
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(6));
    QCOMPARE(answers.texts().count(notConnected), 6);

    // Nothing follows that was still to come when these answers came.
    QCOMPARE(awaitRead(manager), notConnected);
    QCOMPARE(answers.count(), 6);
    QCOMPARE(log.take(), QStringList());
}

void BusAbsenceTest::everyReReadAnnouncesAnEmptyConfiguration()
{
    ConfigurationManager manager;
    ConfigurationManagerPrivate requests(&manager);
    const Announcements announcements(manager);
    requests.onConfigurationChanged();
    requests.onConfigurationChanged();
    QCOMPARE(announcements.count(), 0);
    TRY_COMPARE(announcements.texts(), QStringList({"{}", "{}"}));
}

QTEST_GUILESS_MAIN(BusAbsenceTest)

#include "bus_absence_test.moc"
