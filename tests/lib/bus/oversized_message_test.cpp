// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "answers.h"
#include "bus_fixture.h"
#include "description.h"

#include <QtDBus/QDBusConnection>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using Tarnvel::Testing::MethodCall;

namespace {

// A system bus takes messages of up to 32 MiB and drops the connection that sends a larger one.
constexpr int mebibyte = 1024 * 1024;

QString text(int size)
{
    return QString(size, QLatin1Char('x'));
}

Configuration configurationOf(int size)
{
    Configuration configuration;
    configuration.set("key", text(size));
    return configuration;
}

} // namespace

class OversizedMessageTest : public QObject
{
    Q_OBJECT

public:
    explicit OversizedMessageTest(BusFixture &fixture) : m_service(fixture.service) { }

private Q_SLOTS:
    // In this order: the last costs the process its bus.
    void aLargeConfigurationGoesBothWays();
    void anAnswerThatIsTooLargeCostsTheServiceItsConnection();
    void aConfigurationThatIsTooLargeCostsTheApplicationItsConnection();

private:
    FakeService &m_service;
    ConfigurationManager m_manager;
};

void OversizedMessageTest::aLargeConfigurationGoesBothWays()
{
    constexpr int size = 31 * mebibyte;
    m_service.answerThrough([](const MethodCall &call) {
        GVariant *const configuration = g_variant_get_child_value(call.arguments(), 0);
        call.reply(g_variant_new_tuple(&configuration, 1));
        g_variant_unref(configuration);
    });
    Answers answers;
    m_manager.changeConfiguration(configurationOf(size), answers.forChanging());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.at(0).error.message(), QString());

    m_service.answerWith(QStringLiteral("({'key': <'%1'>},)").arg(text(size)));
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(2));
    QCOMPARE(answers.at(1).configuration.get("key").toString().size(), size);
}

void OversizedMessageTest::anAnswerThatIsTooLargeCostsTheServiceItsConnection()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the size is dbus-daemon's", __FILE__, __LINE__);
    m_service.answerWith(QStringLiteral("({'key': <'%1'>},)").arg(text(33 * mebibyte)));
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QVERIFY(answers.at(0).configuration.isEmpty());
    QCOMPARE(answers.at(0).error.code(), Error::Internal);
    QCOMPARE(answers.at(0).error.message(),
             QStringLiteral("Message recipient disconnected from message bus without replying"));

    m_service.stop();
    QVERIFY(m_service.start());
    m_service.answerWith("({'key': <7>},)");
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(2));
    QCOMPARE(describe(answers.at(1).configuration), QStringLiteral("{\"key\": int 7}"));
}

void OversizedMessageTest::aConfigurationThatIsTooLargeCostsTheApplicationItsConnection()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the size is dbus-daemon's", __FILE__, __LINE__);
    Answers answers;
    m_manager.changeConfiguration(configurationOf(33 * mebibyte), answers.forChanging());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.at(0).error.code(), Error::Internal);
    QVERIFY(!answers.at(0).error.message().isEmpty());

    QTRY_VERIFY(!QDBusConnection::systemBus().isConnected());
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(2));
    QCOMPARE(answers.at(1).error.message(), QStringLiteral("Not connected to D-Bus server"));
}

TARNVEL_BUS_TEST_MAIN(OversizedMessageTest)

#include "oversized_message_test.moc"
