// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "private_bus.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <memory>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

const QString path = QStringLiteral("/acme_2eown");

} // namespace

/*! A service on the library's own connection: the bus layer delivers such calls by itself, at once.
 */
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
                {"number", 1},
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
    void aReadRequestIsAnsweredFromTheEventLoop();
    void aChangeRequestIsAnsweredFromTheEventLoop();
    void aChangeIsAnnounced();

private:
    Tarnvel::Testing::PrivateBus m_bus;
    OwnService m_service;
    std::unique_ptr<ConfigurationManager> m_manager;
    const QString m_expected = QStringLiteral(
        "{\"list\": QList<int> [1, 2], \"nested\": {\"names\": QStringList [\"a\"]}, "
        "\"number\": int 1}");
};

void ServiceInSameProcessTest::initTestCase()
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8());
    QCOMPARE(m_bus.start(), QString());
    QCoreApplication::setOrganizationName(QStringLiteral("acme"));
    QCoreApplication::setApplicationName(QStringLiteral("own"));
    QDBusConnection bus = QDBusConnection::systemBus();
    QVERIFY(bus.registerService(QStringLiteral("org.brenvik.ManagedConfiguration")));
    QVERIFY(bus.registerObject(path, &m_service, QDBusConnection::ExportAllSlots));
    m_manager = std::make_unique<ConfigurationManager>();
}

void ServiceInSameProcessTest::aReadRequestIsAnsweredFromTheEventLoop()
{
    Answers answers;
    m_manager->getConfiguration(answers.forReading());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.texts(), QStringList(m_expected));
}

void ServiceInSameProcessTest::aChangeRequestIsAnsweredFromTheEventLoop()
{
    Configuration configuration;
    configuration.set("number", 7);
    configuration.set("names", QVariant::fromValue(QList<QString> {"a"}));
    Answers answers;
    m_manager->changeConfiguration(configuration, answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.texts(), QStringList("{}"));
    QCOMPARE(m_service.received, (QVariantMap {{"names", QStringList {"a"}}, {"number", 7}}));
}

void ServiceInSameProcessTest::aChangeIsAnnounced()
{
    const Announcements announcements(*m_manager);
    const QDBusMessage announcement = QDBusMessage::createSignal(
        path, QStringLiteral("org.brenvik.ManagedConfiguration.Application1"),
        QStringLiteral("ConfigurationChanged"));
    QVERIFY(QDBusConnection::systemBus().send(announcement));
    QTRY_COMPARE(announcements.texts(), QStringList(m_expected));
}

QTEST_GUILESS_MAIN(ServiceInSameProcessTest)

#include "service_in_same_process_test.moc"
