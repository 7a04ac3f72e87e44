// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "endpoint.h"
#include "private_bus.h"
#include "waiting.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <memory>

using namespace Tarnvel;
using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

/*! A service on the library's own connection, which replies before the request has returned. */
class OwnService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.brenvik.ManagedConfiguration.Application1")

public:
    QVariantMap received;

public Q_SLOTS:
    QVariantMap GetConfiguration() const // clazy:exclude=const-signal-or-slot
    {
        return {{"list", QVariant::fromValue(QList<int> {1, 2})},
                {"nested", QVariantMap {{"names", QStringList {"a"}}}},
                {"refused", 1.5}};
    }
    void ChangeConfiguration(const QVariantMap &configuration)
    {
        received = configuration;
    }
};

class ServiceInSameProcessTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void requestsAreAnsweredFromTheEventLoop();
    void aChangeIsAnnounced();

private:
    PrivateBus m_bus;
    OwnService m_service;
    std::unique_ptr<ConfigurationManager> m_manager;
    const QString m_path = QStringLiteral("/acme_2eown");
    const QString m_expected = QStringLiteral(
        R"({"list": QList<int> [1, 2], "nested": {"names": QStringList ["a"]}})");
};

void ServiceInSameProcessTest::initTestCase()
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8());
    QCOMPARE(m_bus.start(), QString());
    QCoreApplication::setOrganizationName("acme");
    QCoreApplication::setApplicationName("own");
    QDBusConnection bus = QDBusConnection::systemBus();
    QVERIFY(bus.registerService(DBus::serviceName));
    QVERIFY(bus.registerObject(m_path, &m_service, QDBusConnection::ExportAllSlots));
    m_manager = std::make_unique<ConfigurationManager>();
}

void ServiceInSameProcessTest::requestsAreAnsweredFromTheEventLoop()
{
    const Answers answers;
    m_manager->getConfiguration(answers.forReading());
    m_manager->changeConfiguration(
        makeConfiguration({{"number", 7}, {"names", makeList<QString>({"a"})}}),
        answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(2));
    QCOMPARE(answers.texts(), QStringList({m_expected, "{}"}));
    QCOMPARE(m_service.received, (QVariantMap {{"names", QStringList {"a"}}, {"number", 7}}));
}

void ServiceInSameProcessTest::aChangeIsAnnounced()
{
    const Announcements announcements(*m_manager);
    QVERIFY(QDBusConnection::systemBus().send(QDBusMessage::createSignal(
        m_path, DBus::applicationInterface, DBus::configurationChangedSignal)));
    TRY_COMPARE(announcements.texts(), QStringList(m_expected));
}

QTEST_GUILESS_MAIN(ServiceInSameProcessTest)

#include "service_in_same_process_test.moc"
