// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "configuration_manager_p.h"
#include "message_log.h"

#include <QtDBus/QDBusMetaType>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <memory>

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
    void everyRequestFailsOnceFromTheEventLoop();
    void everyReReadAnnouncesAnEmptyConfiguration();
    void aManagerMayBeDestroyedWithRequestsUnderWay();

private:
    std::unique_ptr<ConfigurationManager> m_manager;
    std::unique_ptr<ConfigurationManagerPrivate> m_requests;
};

void BusAbsenceTest::initTestCase()
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    QCoreApplication::setOrganizationName(QStringLiteral("acme"));

    // The first manager of the process makes configurations known to the bus layer.
    const int type = qMetaTypeId<Configuration>();
    QCOMPARE(QDBusMetaType::typeToSignature(type), static_cast<const char *>(nullptr));
    MessageLog log;
    ConfigurationManager::instance();
    QCOMPARE(QDBusMetaType::typeToSignature(type), "a{sv}");
    m_manager = std::make_unique<ConfigurationManager>();
    m_requests = std::make_unique<ConfigurationManagerPrivate>(m_manager.get());
    QCOMPARE(log.take(), QStringList());
}

void BusAbsenceTest::everyRequestFailsOnceFromTheEventLoop()
{
    MessageLog log;
    Answers answers;
    for (int round = 0; round < 3; ++round) {
        m_manager->getConfiguration(answers.forReading());
        m_manager->changeConfiguration(Configuration(), answers.forChanging());
    }
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(6));
    QCOMPARE(answers.texts().count(notConnected), 6);

    // Nothing follows that was still to come when these answers came.
    m_manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(7));
    QCOMPARE(log.take(), QStringList());
}

void BusAbsenceTest::everyReReadAnnouncesAnEmptyConfiguration()
{
    const Announcements announcements(*m_manager);
    m_requests->onConfigurationChanged();
    m_requests->onConfigurationChanged();
    QCOMPARE(announcements.count(), 0);
    QTRY_COMPARE(announcements.texts(), QStringList({"{}", "{}"}));
}

void BusAbsenceTest::aManagerMayBeDestroyedWithRequestsUnderWay()
{
    Answers dropped;
    Answers answers;
    {
        ConfigurationManager manager;
        manager.getConfiguration(dropped.forReading());
        manager.changeConfiguration(Configuration(), dropped.forChanging());
    }
    m_manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(dropped.count(), 0);
}

QTEST_GUILESS_MAIN(BusAbsenceTest)

#include "bus_absence_test.moc"
