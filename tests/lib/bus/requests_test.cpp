// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_limits.h"
#include "bus_test.h"
#include "configuration_manager_p.h"
#include "message_log.h"

#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusVariant>

#include <csignal>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using Tarnvel::DBus::maximumPendingCalls;

namespace {

const QString forbidden = QStringLiteral("org.brenvik.ManagedConfiguration.Error.Forbidden");

const QLatin1String tooMany("maximum number of pending replies");

/*! \a levels configurations inside one another, the innermost with \a entry if that is valid. */
Configuration nested(int levels, const QVariant &entry)
{
    Configuration configuration = entry.isValid() ? makeConfiguration({{"key", entry}})
                                                  : Configuration();
    for (int level = 1; level < levels; ++level)
        configuration = makeConfiguration({{"a", 1}, {"key", QVariant::fromValue(configuration)}});
    return configuration;
}

QList<QDBusPendingCallWatcher *> watchers(const QObject &parent)
{
    return parent.findChildren<QDBusPendingCallWatcher *>();
}

} // namespace

class RequestsTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void theInstanceIsAlwaysTheSame();
    void aReadRequestCallsTheServiceWithoutArguments();
    void aChangeRequestCallsTheServiceWithTheConfiguration();
    void aSuccessComesFromTheEventLoopWithoutAMessage();
    void extraArgumentsOfAReplyAreIgnored();
    void anErrorReplyBecomesAnError();
    void aReplyOfAnotherTypeIsAnInternalError();
    void aServiceThatNeverAnswersIsATimeout();
    void aBusThatHangsIsATimeout();
    void answersComeInTheOrderOfTheReplies();
    void hundredsOfRequestsAtOnceAreAnsweredOnceEach();
    void unansweredRequestsUseUpWhatTheBusAllows();
    void aSecondReplyToOneCallIsIgnored();
    void anEmptyCallbackThrowsFromTheEventLoop_data();
    void anEmptyCallbackThrowsFromTheEventLoop();
    void aRequestMayBeMadeInsideACallback();
    void everythingIsDoneWithinTheWatchersSignal();
    void aConfigurationIsSentAsLongAsEveryBusCarriesIt();
    void aConfigurationNestedTooDeepIsNotSent();

private:
    ConfigurationManager m_manager;
    ConfigurationManagerPrivate m_requests {&m_manager};
};

void RequestsTest::theInstanceIsAlwaysTheSame()
{
    ConfigurationManager *const first = ConfigurationManager::instance();
    QVERIFY(first);
    QVERIFY(!first->parent());
    QCOMPARE(ConfigurationManager::instance(), first);
    // Not even at the end of the process, when this may still be called.
    QObject::connect(first, &QObject::destroyed, [] { qFatal("the instance was deleted"); });
}

void RequestsTest::aReadRequestCallsTheServiceWithoutArguments()
{
    MessageLog log;
    ConfigurationManager manager;
    QCOMPARE(awaitRead(manager), R"({"key": int 7})");

    // Making the manager called nothing.
    QCOMPARE(m_service.calls().count(), 1);
    QCOMPARE(m_service.calls().first().path, BusFixture::path);
    QCOMPARE(m_service.calls().first().method, "GetConfiguration");
    QCOMPARE(m_service.calls().first().arguments, "()");
    QCOMPARE(log.take(), QStringList());
}

void RequestsTest::aChangeRequestCallsTheServiceWithTheConfiguration()
{
    m_service.replyWith("()");
    const Announcements announcements(m_manager);
    Answers answers;
    Configuration configuration = makeConfiguration({{"key", 7}});
    m_manager.changeConfiguration(configuration, answers.forChanging());
    configuration.set("key", 8);
    QVERIFY(answers.waitFor(1));

    QCOMPARE(answers.texts(), QStringList("{}"));
    QCOMPARE(m_service.calls().first().path, BusFixture::path);
    QCOMPARE(m_service.calls().first().method, "ChangeConfiguration");
    // The configuration itself as it was at the request, not a variant that holds it.
    QCOMPARE(m_service.calls().first().arguments, "({'key': <7>},)");

    // An accepted change announces nothing by itself: the next request leads to the next call.
    QCOMPARE(awaitChange(m_manager, configuration), "{}");
    QCOMPARE(m_service.calls().count(), 2);
    QCOMPARE(announcements.count(), 0);
}

void RequestsTest::aSuccessComesFromTheEventLoopWithoutAMessage()
{
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    m_manager.changeConfiguration(Configuration(), answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(2));

    QCOMPARE(answers.texts(), QStringList({R"({"key": int 7})", "{}"}));
    for (const int index : {0, 1})
        QVERIFY(answers.at(index).error.message().isNull());
}

void RequestsTest::extraArgumentsOfAReplyAreIgnored()
{
    MessageLog log;
    m_service.replyWith("({'key': <7>}, 'more', {'other': <8>})");
    QCOMPARE(awaitRead(m_manager), R"({"key": int 7})");
    // Of the reply to a change, all of them are.
    m_service.replyWith("('more', [1.5], {'other': <8>})");
    QCOMPARE(awaitChange(m_manager, Configuration()), "{}");
    QCOMPARE(log.take(), QStringList());
}

void RequestsTest::anErrorReplyBecomesAnError()
{
    MessageLog log;
    m_service.replyWithError(forbidden, "“größe” is not for you");
    const QString error = "{} error 5: “größe” is not for you";
    QCOMPARE(awaitRead(m_manager), error);
    QCOMPARE(awaitChange(m_manager, Configuration()), error);
    QCOMPARE(log.take(), QStringList());
}

void RequestsTest::aReplyOfAnotherTypeIsAnInternalError()
{
    for (const char *values :
         {"()", "('x',)", "({'a': 'x'},)", "(<{'a': <1>}>,)", "(1, {'a': <1>})"}) {
        m_service.replyWith(values);
        const QString error = awaitRead(m_manager);
        QVERIFY2(error.startsWith("{} error 1: Unexpected reply signature: "), qPrintable(error));
    }
}

void RequestsTest::aServiceThatNeverAnswersIsATimeout()
{
    m_service.leaveUnanswered();
    // The default of Qt D-Bus.
    QCOMPARE(m_requests.timeout(), -1);
    const Answers answers;
    m_requests.setTimeout(50);
    m_requests.getConfiguration(answers.forReading());
    m_requests.changeConfiguration(Configuration(), answers.forChanging());
    m_requests.setTimeout(-1);
    QVERIFY(answers.waitFor(2));
    const QStringList texts = answers.texts();
    for (const QString &text : texts)
        QVERIFY2(text.startsWith("{} error 1: Did not receive a reply."), qPrintable(text));

    // A reply that comes too late changes nothing.
    TRY_COMPARE(m_service.unanswered(), 2);
    for (const int call : {0, 1})
        m_service.replyTo(call, "({'late': <1>},)");
    m_service.replyWith("({'key': <7>},)");
    QCOMPARE(awaitRead(m_manager), R"({"key": int 7})");
    QCOMPARE(answers.count(), 2);
}

void RequestsTest::aBusThatHangsIsATimeout()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the process to stop is not the one that was started", __FILE__,
                            __LINE__);
    const auto bus = static_cast<pid_t>(m_fixture.bus.processId());
    QCOMPARE(kill(bus, SIGSTOP), 0);
    m_requests.setTimeout(50);
    const QString read = awaitRead(m_requests);
    const QString change = awaitChange(m_requests, Configuration());
    m_requests.setTimeout(-1);
    QCOMPARE(kill(bus, SIGCONT), 0);
    QVERIFY2(read.startsWith("{} error 1: "), qPrintable(read));
    QVERIFY2(change.startsWith("{} error 1: "), qPrintable(change));

    QCOMPARE(awaitRead(m_requests), R"({"key": int 7})");
}

void RequestsTest::answersComeInTheOrderOfTheReplies()
{
    m_service.leaveUnanswered();
    Answers answers;
    for (int request = 0; request < 3; ++request)
        m_manager.getConfiguration(answers.forReading());
    TRY_COMPARE(m_service.unanswered(), 3);
    QCOMPARE(answers.count(), 0);

    for (const int call : {2, 0, 1})
        m_service.replyTo(call, QString("({'call': <%1>},)").arg(call));
    QVERIFY(answers.waitFor(3));
    QCOMPARE(answers.texts(),
             QStringList({R"({"call": int 2})", R"({"call": int 0})", R"({"call": int 1})"}));
}

void RequestsTest::hundredsOfRequestsAtOnceAreAnsweredOnceEach()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the number is dbus-daemon's", __FILE__, __LINE__);
    constexpr int requests = 500;
    m_service.leaveUnanswered();
    const Answers answers;
    for (int request = 0; request < requests; ++request)
        m_manager.getConfiguration(answers.forReading());
    TRY_COMPARE(m_service.unanswered(), maximumPendingCalls);
    TRY_COMPARE(answers.texts().filter(tooMany).count(), requests - maximumPendingCalls);
    for (int call = 0; call < maximumPendingCalls; ++call)
        m_service.replyTo(call, QString("({'call': <%1>},)").arg(call));
    QVERIFY(answers.waitFor(requests));
    for (int call = 0; call < maximumPendingCalls; ++call)
        QCOMPARE(answers.texts().count(QString(R"({"call": int %1})").arg(call)), 1);

    // The connection is as good as new.
    m_service.replyWith("({'key': <7>},)");
    QCOMPARE(awaitRead(m_manager), R"({"key": int 7})");
    QCOMPARE(answers.count(), requests);
}

void RequestsTest::unansweredRequestsUseUpWhatTheBusAllows()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the number is dbus-daemon's", __FILE__, __LINE__);
    m_service.leaveUnanswered();
    Answers answers;
    m_requests.setTimeout(200);
    for (int request = 0; request < maximumPendingCalls; ++request)
        m_requests.getConfiguration(answers.forReading());
    m_requests.setTimeout(-1);
    QVERIFY(answers.waitFor(maximumPendingCalls));

    const QString refusal = awaitRead(m_manager);
    QVERIFY2(refusal.startsWith("{} error 1: ") && refusal.contains(tooMany), qPrintable(refusal));

    m_service.stop();
    m_service.replyWith("({'key': <7>},)");
    QVERIFY(m_service.start());
    QCOMPARE(awaitRead(m_manager), R"({"key": int 7})");
}

void RequestsTest::aSecondReplyToOneCallIsIgnored()
{
    m_service.leaveUnanswered();
    const Answers answers;
    m_manager.getConfiguration(answers.forReading());
    TRY_COMPARE(m_service.unanswered(), 1);
    m_service.replyTo(0, "({'reply': <1>},)");
    m_service.replyTo(0, "({'reply': <2>},)");

    // The answer to a later request comes after anything that the second reply could cause.
    m_service.replyWith("({'key': <7>},)");
    QCOMPARE(awaitRead(m_manager), R"({"key": int 7})");
    QCOMPARE(answers.texts(), QStringList(R"({"reply": int 1})"));
}

void RequestsTest::anEmptyCallbackThrowsFromTheEventLoop_data()
{
    addRequestRows();
}

void RequestsTest::anEmptyCallbackThrowsFromTheEventLoop()
{
    QFETCH(const bool, isChange);
    QFETCH(const bool, isRefused);

    if (isRefused)
        m_service.replyWithError(forbidden, "no");
    ConfigurationManagerPrivate requests(&m_manager);
    if (isChange)
        requests.changeConfiguration(Configuration(), {});
    else
        requests.getConfiguration({});
    const int exceptions = m_fixture.application.caughtExceptions;
    TRY_COMPARE(m_fixture.application.caughtExceptions, exceptions + 1);

    // The exception skips the release of the watcher, and other requests go on.
    QVERIFY(awaitRead(requests) != "no answer");
    TRY_COMPARE(watchers(requests).count(), 1);
}

void RequestsTest::aRequestMayBeMadeInsideACallback()
{
    Answers answers;
    m_manager.getConfiguration(
        [manager = &m_manager, answers](const Configuration &configuration, const Error &) {
            manager->changeConfiguration(configuration, [manager, answers](const Error &) {
                manager->getConfiguration(answers.forReading());
            });
        });
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.texts(), QStringList(R"({"key": int 7})"));
}

void RequestsTest::everythingIsDoneWithinTheWatchersSignal()
{
    const Announcements announcements(m_manager);
    Answers answers;
    ConfigurationManagerPrivate requests(&m_manager);
    requests.getConfiguration(answers.forReading());
    requests.changeConfiguration(Configuration(), answers.forChanging());
    requests.onConfigurationChanged();
    QCOMPARE(watchers(requests).count(), 3);
    // Connected later, these slots run after those of the library within the same signal, which
    // the watcher outlives.
    QVector<int> doneBefore;
    const auto record = [&] { doneBefore.append(answers.count() + announcements.count()); };
    const auto allWatchers = watchers(requests);
    for (const QDBusPendingCallWatcher *watcher : allWatchers) {
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, record);
        // The library's slot goes with the watcher, not only with the object that made it.
        QVERIFY(!QObject::disconnect(watcher, nullptr, &requests, nullptr));
    }
    TRY_COMPARE(doneBefore, QVector<int>({1, 2, 3}));
    // Of the three, only that of the re-read is kept.
    TRY_COMPARE(watchers(requests).count(), 1);
}

void RequestsTest::aConfigurationIsSentAsLongAsEveryBusCarriesIt()
{
    constexpr int levels = 21;
    const QVariantList entries {1, true, QStringLiteral("x"), QVariant()};
    for (const QVariant &entry : entries) {
        QCOMPARE(awaitChange(m_manager, nested(levels, entry)), "{}");
        QCOMPARE(m_service.calls().last().arguments.count("'key'"),
                 entry.isValid() ? levels : levels - 1);
    }
    QCOMPARE(awaitChange(m_manager, nested(levels - 1, QStringList())), "{}");
    QCOMPARE(m_service.calls().count(), 5);
}

void RequestsTest::aConfigurationNestedTooDeepIsNotSent()
{
    // What follows "key" is the 64th container, which dbus-broker does not carry.
    const QList<Configuration> tooDeep {nested(21, QStringList()),
                                        nested(21, QVariant::fromValue(QList<int> {1})),
                                        nested(21, QVariant::fromValue(QList<bool>())),
                                        nested(21, QVariant::fromValue(QList<QString> {"x"})),
                                        nested(21, QVariant::fromValue(QDBusVariant(1))),
                                        nested(22, QVariant()),
                                        nested(22, 1),
                                        nested(10000, 1)};
    const Answers answers;
    for (const Configuration &configuration : tooDeep)
        m_manager.changeConfiguration(configuration, answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(tooDeep.count()));
    QCOMPARE(answers.texts().count("{} error 1: The configuration is nested too deep to be sent: "
                                   "D-Bus carries 21 levels"),
             tooDeep.count());

    // The next request is the first call.
    QCOMPARE(awaitChange(m_manager, nested(1, 1)), "{}");
    QCOMPARE(m_service.calls().count(), 1);
}

TARNVEL_BUS_TEST_MAIN(RequestsTest)

#include "requests_test.moc"
