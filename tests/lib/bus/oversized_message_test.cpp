// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_limits.h"
#include "bus_test.h"
#include "configuration_manager_p.h"

#include <QtDBus/QDBusConnection>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

constexpr int mebibyte = 1024 * 1024;
constexpr int largeSize = Tarnvel::DBus::maximumMessageSize - mebibyte;
constexpr int tooLargeSize = Tarnvel::DBus::maximumMessageSize + mebibyte;

QString text(int size)
{
    return QString(size, QLatin1Char('x'));
}

} // namespace

/*! A bus drops the connection that sends too large a message, so these come in this order. */
class OversizedMessageTest : public BusTest
{
    Q_OBJECT

public:
    explicit OversizedMessageTest(BusFixture &fixture) : BusTest(fixture)
    {
        // A busy machine may need more than the default for as much as this.
        m_requests.setTimeout(waitTimeoutMs);
    }

private Q_SLOTS:
    void aLargeConfigurationGoesBothWays();
    void aReplyThatIsTooLargeCostsTheServiceItsConnection();
    void aConfigurationThatIsTooLargeCostsTheApplicationItsConnection();

private:
    ConfigurationManager m_manager;
    ConfigurationManagerPrivate m_requests {&m_manager};
};

void OversizedMessageTest::aLargeConfigurationGoesBothWays()
{
    QCOMPARE(awaitChange(m_requests, makeConfiguration({{"key", text(largeSize)}})), "{}");
    QVERIFY(m_service.calls().first().arguments.size() > largeSize);

    m_service.replyWith(QStringLiteral("({'key': <'%1'>},)").arg(text(largeSize)));
    const Answers answers;
    m_requests.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QVERIFY(answers.at(0).configuration.get("key") == text(largeSize));
}

void OversizedMessageTest::aReplyThatIsTooLargeCostsTheServiceItsConnection()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the size is dbus-daemon's", __FILE__, __LINE__);
    m_service.replyWith(QStringLiteral("({'key': <'%1'>},)").arg(text(tooLargeSize)));
    QCOMPARE(awaitRead(m_requests),
             "{} error 1: Message recipient disconnected from message bus without replying");

    m_service.stop();
    m_service.replyWith("({'key': <7>},)");
    QVERIFY(m_service.start());
    QCOMPARE(awaitRead(m_requests), R"({"key": int 7})");
}

void OversizedMessageTest::aConfigurationThatIsTooLargeCostsTheApplicationItsConnection()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the size is dbus-daemon's", __FILE__, __LINE__);
    const QString error = awaitChange(m_requests, makeConfiguration({{"key", text(tooLargeSize)}}));
    QVERIFY2(error.startsWith("{} error 1: "), qPrintable(error));

    TRY_VERIFY(!QDBusConnection::systemBus().isConnected());
    QCOMPARE(awaitRead(m_requests), "{} error 1: Not connected to D-Bus server");
}

TARNVEL_BUS_TEST_MAIN(OversizedMessageTest)

#include "oversized_message_test.moc"
