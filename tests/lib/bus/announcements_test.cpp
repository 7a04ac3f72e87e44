// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_limits.h"
#include "bus_test.h"
#include "configuration_manager_p.h"
#include "endpoint.h"
#include "message_log.h"

#include <QtCore/QScopeGuard>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtTest/QTestEventLoop>

#include <malloc.h>
#include <memory>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using namespace Tarnvel::DBus;

class AnnouncementsTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void init() override;
    void aChangeIsAnnouncedWithTheConfigurationReadAfterIt();
    void anAnnouncementMayCarryArguments();
    void aFailedReReadAnnouncesAnEmptyConfiguration();
    void eachSignalOfAFloodIsAnnouncedOnce();
    void announcementsComeInTheOrderOfTheReReads();
    void aWatcherIsKeptForEachAnnouncement();
    void theRepliesOfReReadsAreNotKept();
    void aWatcherKeepsLessThanAKibibyte();
    void aSpoofedSignalIsIgnored();
    void otherSignalsOfTheServiceAreIgnored();

private:
    bool announceRepeatedly(int times, int size);

    std::unique_ptr<ConfigurationManager> m_manager;
    std::unique_ptr<Announcements> m_announcements;
};

void AnnouncementsTest::init()
{
    BusTest::init();
    m_manager = std::make_unique<ConfigurationManager>();
    m_announcements = std::make_unique<Announcements>(*m_manager);
    // By the time the service replies, the bus has the subscription too.
    QCOMPARE(awaitRead(*m_manager), R"({"key": int 7})");
}

void AnnouncementsTest::aChangeIsAnnouncedWithTheConfigurationReadAfterIt()
{
    m_service.replyWith("({'key': <8>, 'nested': <{'a': <'x'>}>},)");
    m_service.announceChange(BusFixture::path);
    TRY_COMPARE(m_announcements->texts(),
                QStringList(R"({"key": int 8, "nested": {"a": QString "x"}})"));
    QCOMPARE(m_service.calls().count(), 2);
    QCOMPARE(m_service.calls().last().method, "GetConfiguration");
    QCOMPARE(m_service.calls().last().arguments, "()");
    QCOMPARE(m_service.calls().last().path, BusFixture::path);
}

void AnnouncementsTest::anAnnouncementMayCarryArguments()
{
    MessageLog log;
    QStringList expected;
    for (const char *arguments : {"({'other': <9>},)", "({'a': 'b'}, {1: 2}, <{'x': 'y'}>)",
                                  "(1, 2.5, ['a'], (true, <[<1>]>), @aai [], <<'x'>>)"}) {
        expected.append(R"({"key": int 7})");
        m_service.announceChange(BusFixture::path, arguments);
        TRY_COMPARE(m_announcements->texts(), expected);
    }
    QCOMPARE(log.take(), QStringList());
}

void AnnouncementsTest::aFailedReReadAnnouncesAnEmptyConfiguration()
{
    MessageLog log;
    m_service.replyWithError("org.brenvik.ManagedConfiguration.Error.Internal", "broken");
    m_service.announceChange(BusFixture::path);
    TRY_COMPARE(m_announcements->texts(), QStringList("{}"));
    m_service.replyWith("('no configuration',)");
    m_service.announceChange(BusFixture::path);
    TRY_COMPARE(m_announcements->texts(), QStringList({"{}", "{}"}));
    QCOMPARE(log.take(), QStringList());
}

void AnnouncementsTest::eachSignalOfAFloodIsAnnouncedOnce()
{
    // Of re-reads at the same time, dbus-daemon refuses those beyond its limit.
    const int signalCount = isOnDBusDaemon() ? 1000 : 100;
    const int pending = qMin(signalCount, Tarnvel::DBus::maximumPendingCalls);
    m_service.leaveUnanswered();
    for (int count = 0; count < signalCount; ++count)
        m_service.announceChange(BusFixture::path);
    TRY_COMPARE(m_service.unanswered(), pending);
    TRY_COMPARE(m_announcements->count(), signalCount - pending);
    for (int index = 0; index < pending; ++index)
        m_service.replyTo(index, "({'key': <8>},)");

    TRY_COMPARE(m_announcements->count(), signalCount);
    QCOMPARE(m_announcements->texts().count("{}"), signalCount - pending);
    QCOMPARE(m_announcements->texts().count(R"({"key": int 8})"), pending);
    m_service.replyWith("({'key': <7>},)");
    QCOMPARE(awaitRead(*m_manager), R"({"key": int 7})");
    QCOMPARE(m_announcements->count(), signalCount);
}

void AnnouncementsTest::announcementsComeInTheOrderOfTheReReads()
{
    m_service.leaveUnanswered();
    m_service.announceChange(BusFixture::path);
    m_service.announceChange(BusFixture::path);
    TRY_COMPARE(m_service.unanswered(), 2);
    QCOMPARE(m_announcements->count(), 0);

    m_service.replyTo(1, "({'reread': <1>},)");
    m_service.replyTo(0, "({'reread': <0>},)");
    TRY_COMPARE(m_announcements->texts(),
                QStringList({R"({"reread": int 1})", R"({"reread": int 0})"}));
}

void AnnouncementsTest::aWatcherIsKeptForEachAnnouncement()
{
    ConfigurationManagerPrivate requests(m_manager.get());
    const auto watchers = [&] {
        return requests.findChildren<QDBusPendingCallWatcher *>().count();
    };
    constexpr int announcements = 10;
    for (int count = 0; count < announcements; ++count)
        requests.onConfigurationChanged();
    TRY_COMPARE(m_announcements->count(), announcements);

    // Requests come and go; the watchers of the re-reads stay.
    QCOMPARE(awaitRead(requests), R"({"key": int 7})");
    TRY_COMPARE(watchers(), announcements);
}

void AnnouncementsTest::theRepliesOfReReadsAreNotKept()
{
    // libdbus stops reading once it keeps 63 MiB of received messages. The soak asks for more.
    const int times = qMax(100, qEnvironmentVariableIntValue("LARGE_ANNOUNCEMENTS"));
    QVERIFY(announceRepeatedly(times, 1024 * 1024));
    m_service.replyWith("({'key': <8>},)");
    QCOMPARE(awaitRead(*m_manager), R"({"key": int 8})");
}

void AnnouncementsTest::aWatcherKeepsLessThanAKibibyte()
{
    if (mallinfo2().uordblks == 0)
        return QTest::qSkip("a sanitizer's allocator does not count", __FILE__, __LINE__);
    // What the fake keeps of each call lies in the same heap, and within the same bound.
    constexpr int times = 500;
    constexpr int size = 10000;
    QVERIFY(announceRepeatedly(times, size));
    const std::size_t before = mallinfo2().uordblks;
    QVERIFY(announceRepeatedly(times, size));
    const std::size_t after = mallinfo2().uordblks;
    QVERIFY2(after < before + 1024UL * times,
             qPrintable(QString("from %1 to %2 bytes").arg(before).arg(after)));
}

void AnnouncementsTest::aSpoofedSignalIsIgnored()
{
    QDBusConnection spoofer = QDBusConnection::connectToBus(m_fixture.bus.address(), "spoofer");
    const auto disconnect = qScopeGuard([] { QDBusConnection::disconnectFromBus("spoofer"); });
    QVERIFY(spoofer.send(QDBusMessage::createSignal(BusFixture::path, applicationInterface,
                                                    configurationChangedSignal)));
    QVERIFY(spoofer.send(QDBusMessage::createTargetedSignal(
        QDBusConnection::systemBus().baseService(), BusFixture::path, applicationInterface,
        configurationChangedSignal)));
    // The bus handles the messages of one connection in their order.
    QVERIFY(spoofer.interface()->isServiceRegistered(spoofer.baseService()).value());

    m_service.announceChange(BusFixture::path);
    TRY_COMPARE(m_announcements->count(), 1);
    QCOMPARE(awaitRead(*m_manager), R"({"key": int 7})");
    QCOMPARE(m_announcements->count(), 1);
    QCOMPARE(m_service.calls().count(), 3);
}

void AnnouncementsTest::otherSignalsOfTheServiceAreIgnored()
{
    m_service.stop();
    QDBusConnection service = QDBusConnection::connectToBus(m_fixture.bus.address(), "service");
    const auto disconnect = qScopeGuard([] { QDBusConnection::disconnectFromBus("service"); });
    QVERIFY(service.registerService(serviceName));
    // Once a call has reached this service, Qt D-Bus knows that it owns the name.
    const QString unknownObject = awaitRead(*m_manager);

    const auto send = [&](const QString &path, const QString &interface, const QString &name) {
        return service.send(QDBusMessage::createSignal(path, interface, name));
    };
    QVERIFY(send("/acme_2elabs_2eeditor", applicationInterface, configurationChangedSignal));
    QVERIFY(send(BusFixture::path + "/x", applicationInterface, configurationChangedSignal));
    QVERIFY(send(BusFixture::path, "org.brenvik.ManagedConfiguration.Application2",
                 configurationChangedSignal));
    QVERIFY(send(BusFixture::path, applicationInterface, "ConfigurationAdded"));
    QVERIFY(send(BusFixture::path, applicationInterface, configurationChangedSignal));
    TRY_COMPARE(m_announcements->count(), 1);
    QCOMPARE(awaitRead(*m_manager), unknownObject);
    QCOMPARE(m_announcements->count(), 1);
}

bool AnnouncementsTest::announceRepeatedly(int times, int size)
{
    m_service.replyWith(QStringLiteral("({'key': <'%1'>},)").arg(QString(size, QLatin1Char('x'))));
    m_announcements.reset();
    QTestEventLoop loop;
    QObject::connect(m_manager.get(), &ConfigurationManager::configurationChanged, &loop,
                     [&](const Configuration &configuration) {
                         if (configuration.get("key").toString().size() == size)
                             loop.exitLoop();
                     });
    for (int count = 0; count < times && !loop.timeout(); ++count) {
        m_service.announceChange(BusFixture::path);
        loop.enterLoopMSecs(waitTimeoutMs);
    }
    return !loop.timeout();
}

TARNVEL_BUS_TEST_MAIN(AnnouncementsTest)

#include "announcements_test.moc"
