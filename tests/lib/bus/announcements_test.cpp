// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "bus_fixture.h"
#include "configuration_manager_p.h"
#include "description.h"
#include "message_log.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtTest/QTestEventLoop>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <malloc.h>
#include <memory>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using Tarnvel::Testing::MethodCall;

namespace {

/*! In seconds. */
constexpr int answerTimeout = 10;

/*! Another process on the bus, as far as the bus can tell. */
class SpoofedSender
{
public:
    explicit SpoofedSender(const QString &address)
    {
        const auto flags = static_cast<GDBusConnectionFlags>(
            G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
            | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        m_connection = g_dbus_connection_new_for_address_sync(qUtf8Printable(address), flags,
                                                              nullptr, nullptr, nullptr);
    }
    ~SpoofedSender()
    {
        g_object_unref(m_connection);
    }
    SpoofedSender(const SpoofedSender &) = delete;
    SpoofedSender &operator=(const SpoofedSender &) = delete;

    /*! Sends the signal and waits until the bus has taken it. */
    bool emitSignal(const char *interface, const char *member, const char *receiver)
    {
        return g_dbus_connection_emit_signal(m_connection, receiver,
                                             qUtf8Printable(BusFixture::path), interface, member,
                                             nullptr, nullptr)
            && g_dbus_connection_flush_sync(m_connection, nullptr, nullptr) && waitForBus();
    }

private:
    bool waitForBus()
    {
        // The bus handles the messages of one connection in their order.
        g_autoptr(GVariant) answer = g_dbus_connection_call_sync(
            m_connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "GetId", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        return answer;
    }

    GDBusConnection *m_connection;
};

} // namespace

class AnnouncementsTest : public QObject
{
    Q_OBJECT

public:
    explicit AnnouncementsTest(BusFixture &fixture) : m_fixture(fixture), m_service(fixture.service)
    {
    }

private Q_SLOTS:
    void init();
    void aChangeIsAnnouncedWithTheConfigurationReadAfterIt();
    void anAnnouncementMayCarryArguments_data();
    void anAnnouncementMayCarryArguments();
    void aFailedReReadAnnouncesAnEmptyConfiguration_data();
    void aFailedReReadAnnouncesAnEmptyConfiguration();
    void eachNotificationIsReReadAndAnnouncedOnce();
    void eachSignalOfAFloodIsAnnouncedOnce();
    void announcementsComeInTheOrderOfTheReReads();
    void aWatcherIsKeptForEachNotification();
    void theRepliesOfReReadsAreNotKept();
    void aWatcherKeepsLessThanAKibibyte();
    void aSpoofedSignalIsIgnored();
    void signalsOfOtherObjectsAreIgnored();
    void aQueuedConnectionReceivesTheConfiguration();
    void aSignalSpyKnowsTheShortName();
    void eachManagerAnnouncesForItself();
    void aRestartedServiceIsFollowed();

private:
    BusFixture &m_fixture;
    FakeService &m_service;
    std::unique_ptr<ConfigurationManager> m_manager;
    std::unique_ptr<Announcements> m_announcements;
};

void AnnouncementsTest::init()
{
    m_service.answerWith("({'key': <7>},)");
    m_manager = std::make_unique<ConfigurationManager>();
    m_announcements = std::make_unique<Announcements>(*m_manager);
    // By the time the service answers, the bus has the subscription too.
    Answers answers;
    m_manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
}

void AnnouncementsTest::aChangeIsAnnouncedWithTheConfigurationReadAfterIt()
{
    const int calls = m_service.calls().count();
    m_service.answerWith("({'key': <8>, 'nested': <{'a': <'x'>}>},)");
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(m_announcements->texts(),
                 QStringList("{\"key\": int 8, \"nested\": {\"a\": QString \"x\"}}"));
    QCOMPARE(m_service.calls().count(), calls + 1);
    QCOMPARE(m_service.calls().last().method, QStringLiteral("GetConfiguration"));
    QCOMPARE(m_service.calls().last().arguments, QStringLiteral("()"));
    QCOMPARE(m_service.calls().last().path, BusFixture::path);
}

void AnnouncementsTest::anAnnouncementMayCarryArguments_data()
{
    QTest::addColumn<QString>("arguments");

    QTest::newRow("string") << "('x',)";
    QTest::newRow("configuration") << "({'other': <9>},)";
    QTest::newRow("foreign dictionaries") << "({'a': 'b'}, {1: 2}, <{'x': 'y'}>)";
    QTest::newRow("many") << "(1, 2.5, ['a'], (true, <[<1>]>), @aai [], <<'x'>>)";
}

void AnnouncementsTest::anAnnouncementMayCarryArguments()
{
    QFETCH(const QString, arguments);

    MessageLog log;
    m_service.announceChange(BusFixture::path, arguments);
    QTRY_COMPARE(m_announcements->texts(), QStringList("{\"key\": int 7}"));
    QCOMPARE(log.take(), QStringList());
}

void AnnouncementsTest::aFailedReReadAnnouncesAnEmptyConfiguration_data()
{
    QTest::addColumn<bool>("isError");

    QTest::newRow("error reply") << true;
    QTest::newRow("no configuration") << false;
}

void AnnouncementsTest::aFailedReReadAnnouncesAnEmptyConfiguration()
{
    QFETCH(const bool, isError);

    if (isError)
        m_service.answerWithError("org.brenvik.ManagedConfiguration.Error.Internal", "broken");
    else
        m_service.answerWith("('x',)");
    MessageLog log;
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(m_announcements->texts(), QStringList("{}"));

    m_service.answerWith("({'key': <8>},)");
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(m_announcements->texts(), QStringList({"{}", "{\"key\": int 8}"}));
    QCOMPARE(log.take(), QStringList());
}

void AnnouncementsTest::eachNotificationIsReReadAndAnnouncedOnce()
{
    constexpr int notifications = 20;
    const int calls = m_service.calls().count();
    for (int count = 0; count < notifications; ++count)
        m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(m_announcements->count(), notifications);

    // A request is answered after everything that the notifications have led to.
    Answers answers;
    m_manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(m_announcements->count(), notifications);
    QCOMPARE(m_service.calls().count(), calls + notifications + 1);
    const QStringList texts = m_announcements->texts();
    for (const QString &text : texts)
        QCOMPARE(text, QStringLiteral("{\"key\": int 7}"));
}

void AnnouncementsTest::eachSignalOfAFloodIsAnnouncedOnce()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the number is dbus-daemon's", __FILE__, __LINE__);
    // Of re-reads at the same time, a system bus lets 128 be outstanding and refuses the others.
    constexpr int notifications = 1000;
    constexpr int outstanding = 128;
    QList<MethodCall> reReads;
    m_service.answerThrough([&](const MethodCall &call) { reReads.append(call); });
    for (int count = 0; count < notifications; ++count)
        m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(m_announcements->count(), notifications - outstanding);
    QCOMPARE(reReads.count(), outstanding);
    for (const MethodCall &call : qAsConst(reReads))
        call.reply(parseValue("({'key': <8>},)"));

    m_service.answerWith("({'key': <7>},)");
    Answers answers;
    m_manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(m_announcements->count(), notifications);
    QCOMPARE(m_announcements->texts().count("{}"), notifications - outstanding);
    QCOMPARE(m_announcements->texts().count("{\"key\": int 8}"), outstanding);
}

void AnnouncementsTest::announcementsComeInTheOrderOfTheReReads()
{
    QList<MethodCall> reReads;
    m_service.answerThrough([&](const MethodCall &call) { reReads.append(call); });
    m_service.announceChange(BusFixture::path);
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(reReads.count(), 2);
    QCOMPARE(m_announcements->count(), 0);

    reReads.at(1).reply(parseValue("({'reread': <1>},)"));
    reReads.at(0).reply(parseValue("({'reread': <0>},)"));
    QTRY_COMPARE(m_announcements->texts(),
                 QStringList({"{\"reread\": int 1}", "{\"reread\": int 0}"}));
}

void AnnouncementsTest::aWatcherIsKeptForEachNotification()
{
    ConfigurationManagerPrivate requests(m_manager.get());
    const auto watchers = [&] {
        return requests.findChildren<QDBusPendingCallWatcher *>().count();
    };
    constexpr int notifications = 10;
    for (int count = 1; count <= notifications; ++count) {
        requests.onConfigurationChanged();
        QTRY_COMPARE(m_announcements->count(), count);
        QCOMPARE(watchers(), count);
    }

    // Requests come and go; the watchers of the re-reads stay.
    Answers answers;
    requests.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QTRY_COMPARE(watchers(), notifications);
}

void AnnouncementsTest::theRepliesOfReReadsAreNotKept()
{
    // libdbus stops reading once it keeps 63 MiB of received messages. The soak asks for more.
    const int notifications = qMax(100, qEnvironmentVariableIntValue("LARGE_NOTIFICATIONS"));
    const QString mebibyte(1024 * 1024, QLatin1Char('x'));
    m_service.answerWith(QStringLiteral("({'key': <'%1'>},)").arg(mebibyte));
    m_announcements.reset();
    QTestEventLoop loop;
    QObject::connect(m_manager.get(), &ConfigurationManager::configurationChanged, &loop,
                     [&loop, size = mebibyte.size()](const Configuration &configuration) {
                         QCOMPARE(configuration.get("key").toString().size(), size);
                         loop.exitLoop();
                     });
    for (int count = 0; count < notifications; ++count) {
        m_service.announceChange(BusFixture::path);
        loop.enterLoop(answerTimeout);
        QVERIFY(!loop.timeout());
    }
    m_service.answerWith("({'key': <8>},)");
    Answers answers;
    m_manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(describe(answers.at(0).configuration), QStringLiteral("{\"key\": int 8}"));
}

void AnnouncementsTest::aWatcherKeepsLessThanAKibibyte()
{
    constexpr int notifications = 500;
    m_service.answerWith(
        QStringLiteral("({'key': <'%1'>},)").arg(QString(10000, QLatin1Char('x'))));
    ConfigurationManagerPrivate requests(m_manager.get());
    m_announcements.reset();
    QTestEventLoop loop;
    QObject::connect(m_manager.get(), &ConfigurationManager::configurationChanged, &loop,
                     &QTestEventLoop::exitLoop);
    const auto notify = [&](int count) {
        for (int done = 0; done < count; ++done) {
            requests.onConfigurationChanged();
            loop.enterLoop(answerTimeout);
            QVERIFY(!loop.timeout());
        }
    };
    notify(notifications);
    if (mallinfo2().uordblks == 0) {
        QTest::qSkip("a sanitizer's allocator does not count", __FILE__, __LINE__);
        return;
    }
    const std::size_t before = mallinfo2().uordblks;
    notify(notifications);
    const std::size_t after = mallinfo2().uordblks;
    QCOMPARE(requests.findChildren<QDBusPendingCallWatcher *>().count(), 2 * notifications);
    const std::size_t kept = after > before ? (after - before) / notifications : 0;
    qInfo("%zu bytes for each notification", kept);
    QVERIFY(kept > 0);
    QVERIFY(kept < 1024);
}

void AnnouncementsTest::aSpoofedSignalIsIgnored()
{
    const int calls = m_service.calls().count();
    SpoofedSender spoofedSender(m_fixture.bus.address());
    const QByteArray receiver = QDBusConnection::systemBus().baseService().toUtf8();
    QVERIFY(spoofedSender.emitSignal("org.brenvik.ManagedConfiguration.Application1",
                                     "ConfigurationChanged", nullptr));
    QVERIFY(spoofedSender.emitSignal("org.brenvik.ManagedConfiguration.Application1",
                                     "ConfigurationChanged", receiver.constData()));

    // What the spoofedSender sent was on the bus before the service's own.
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(m_announcements->count(), 1);
    Answers answers;
    m_manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(m_announcements->count(), 1);
    QCOMPARE(m_service.calls().count(), calls + 2);
}

void AnnouncementsTest::signalsOfOtherObjectsAreIgnored()
{
    const int calls = m_service.calls().count();
    m_service.announceChange("/acme_2elabs_2eeditor");
    m_service.announceChange(BusFixture::path + QStringLiteral("/x"));
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(m_announcements->count(), 1);
    Answers answers;
    m_manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(m_announcements->count(), 1);
    QCOMPARE(m_service.calls().count(), calls + 2);
}

void AnnouncementsTest::aQueuedConnectionReceivesTheConfiguration()
{
    QString received;
    QObject::connect(
        m_manager.get(), &ConfigurationManager::configurationChanged, this,
        [&](const Configuration &configuration) {
            received = describe(configuration); // clazy:exclude=lambda-in-connect
        },
        Qt::QueuedConnection);
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(received, QStringLiteral("{\"key\": int 7}"));
    QObject::disconnect(m_manager.get(), nullptr, this, nullptr);
}

void AnnouncementsTest::aSignalSpyKnowsTheShortName()
{
    qRegisterMetaType<Configuration>("Configuration");
    QSignalSpy spy(m_manager.get(), &ConfigurationManager::configurationChanged);
    m_service.announceChange(BusFixture::path);
    QVERIFY(spy.wait());
    QCOMPARE(spy.count(), 1);
    QCOMPARE(describe(spy.first().first()), QStringLiteral("{\"key\": int 7}"));
}

void AnnouncementsTest::eachManagerAnnouncesForItself()
{
    ConfigurationManager second;
    Announcements secondAnnouncements(second);
    Answers answers;
    second.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));

    const int calls = m_service.calls().count();
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(m_announcements->count(), 1);
    QTRY_COMPARE(secondAnnouncements.count(), 1);
    QCOMPARE(m_service.calls().count(), calls + 2);
}

void AnnouncementsTest::aRestartedServiceIsFollowed()
{
    m_service.stop();
    QVERIFY(m_service.start());
    m_service.answerWith("({'restarted': <true>},)");
    // The answer tells that the bus layer knows of the new owner of the name.
    Answers answers;
    m_manager->getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QVERIFY(!answers.at(0).error);
    m_service.announceChange(BusFixture::path);
    QTRY_COMPARE(m_announcements->texts(), QStringList("{\"restarted\": bool true}"));
}

TARNVEL_BUS_TEST_MAIN(AnnouncementsTest)

#include "announcements_test.moc"
