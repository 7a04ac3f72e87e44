// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "bus_fixture.h"
#include "configuration_manager_p.h"
#include "description.h"
#include "message_log.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <csignal>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using Tarnvel::Testing::MethodCall;

Q_DECLARE_METATYPE(Tarnvel::Application::ManagedConfiguration::Error::Code)

namespace {

const QString errorPrefix = QStringLiteral("org.brenvik.ManagedConfiguration.Error.");

/*! A callback that counts how often it is copied. */
struct CopyCounter
{
    explicit CopyCounter(int &copies) : copies(copies) { }
    CopyCounter(const CopyCounter &other) : copies(other.copies)
    {
        ++copies;
    }
    CopyCounter(CopyCounter &&other) noexcept = default;
    void operator()(const Configuration &, const Error &) const { }
    void operator()(const Error &) const { }

    int &copies;
};

/*! \a levels configurations inside one another, the innermost with \a entry if that is valid. */
Configuration nested(int levels, const QVariant &entry)
{
    Configuration configuration;
    if (entry.isValid())
        configuration.set("key", entry);
    for (int level = 1; level < levels; ++level) {
        Configuration outer;
        outer.set("a", 1);
        outer.set("key", QVariant::fromValue(configuration));
        configuration = outer;
    }
    return configuration;
}

int watcherCount(const QObject &parent)
{
    return parent.findChildren<QDBusPendingCallWatcher *>().count();
}

} // namespace

/*! A service on QtDBus, which unlike GDBus takes all that the bus carries. */
class QtService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.brenvik.ManagedConfiguration.Application1")

public:
    int changes = 0;

public Q_SLOTS:
    void ChangeConfiguration(const QDBusMessage &)
    {
        ++changes;
    }
};

class RequestsTest : public QObject
{
    Q_OBJECT

public:
    explicit RequestsTest(BusFixture &fixture) : m_fixture(fixture), m_service(fixture.service) { }

private Q_SLOTS:
    void theInstanceIsAlwaysTheSame();
    void makingAManagerSendsNothing();
    void aReadRequestCallsTheServiceWithoutArguments();
    void aChangeRequestCallsTheServiceWithTheConfiguration();
    void noCallbackRunsInsideTheRequest();
    void aSuccessHasNoMessage();
    void argumentsBehindTheConfigurationAreIgnored();
    void theArgumentsOfAChangesAnswerAreIgnored();
    void anErrorReplyBecomesAnError_data();
    void anErrorReplyBecomesAnError();
    void anAnswerThatIsNoConfigurationIsAnInternalError_data();
    void anAnswerThatIsNoConfigurationIsAnInternalError();
    void aServiceThatNeverAnswersIsATimeOut();
    void aBusThatHangsIsATimeOut();
    void answersComeInTheOrderOfTheReplies();
    void twoRequestsInARowAreAnsweredOneEach();
    void hundredsOfRequestsAtOnceAreAnsweredOnceEach();
    void unansweredRequestsUseUpWhatTheBusAllows();
    void aSecondReplyToOneCallIsIgnored();
    void theCallbackIsCopiedOnce();
    void anEmptyCallbackThrowsFromTheEventLoop_data();
    void anEmptyCallbackThrowsFromTheEventLoop();
    void aRequestMayBeMadeInsideACallback();
    void theWatcherOfARequestIsReleased();
    void theConfigurationSentIsThatOfTheRequestsTime();
    void aConfigurationIsSentAsLongAsTheBusCarriesIt_data();
    void aConfigurationIsSentAsLongAsTheBusCarriesIt();
    void anEmptyConfigurationMayLieOneLevelDeeper();
    void aConfigurationNestedTooDeepIsNotSent_data();
    void aConfigurationNestedTooDeepIsNotSent();

private:
    BusFixture &m_fixture;
    FakeService &m_service;
    ConfigurationManager m_manager;
};

void RequestsTest::theInstanceIsAlwaysTheSame()
{
    ConfigurationManager *const first = ConfigurationManager::instance();
    QVERIFY(first);
    QVERIFY(!first->parent());
    QCOMPARE(ConfigurationManager::instance(), first);
}

void RequestsTest::makingAManagerSendsNothing()
{
    const int calls = m_service.calls().count();
    MessageLog log;
    ConfigurationManager manager;
    Answers answers;
    manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));

    // The request is the first call of the manager.
    QCOMPARE(m_service.calls().count(), calls + 1);
    QCOMPARE(log.take(), QStringList());
}

void RequestsTest::aReadRequestCallsTheServiceWithoutArguments()
{
    m_service.answerWith("({'key': <7>},)");
    const int calls = m_service.calls().count();
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));

    QCOMPARE(m_service.calls().count(), calls + 1);
    QCOMPARE(m_service.calls().last().path, BusFixture::path);
    QCOMPARE(m_service.calls().last().method, QStringLiteral("GetConfiguration"));
    QCOMPARE(m_service.calls().last().arguments, QStringLiteral("()"));
    QCOMPARE(describe(answers.at(0).configuration), QStringLiteral("{\"key\": int 7}"));
}

void RequestsTest::aChangeRequestCallsTheServiceWithTheConfiguration()
{
    m_service.answerWith("()");
    const Announcements announcements(m_manager);
    const int calls = m_service.calls().count();
    Configuration configuration;
    configuration.set("key", 7);
    Answers answers;
    m_manager.changeConfiguration(configuration, answers.forChanging());
    QVERIFY(answers.waitFor(1));

    QCOMPARE(m_service.calls().count(), calls + 1);
    QCOMPARE(m_service.calls().last().path, BusFixture::path);
    QCOMPARE(m_service.calls().last().method, QStringLiteral("ChangeConfiguration"));
    // The configuration itself, not a variant that holds it.
    QCOMPARE(m_service.calls().last().arguments, QStringLiteral("({'key': <7>},)"));

    // An accepted change announces nothing by itself: the next request leads to the next call.
    m_manager.changeConfiguration(configuration, answers.forChanging());
    QVERIFY(answers.waitFor(2));
    QCOMPARE(m_service.calls().count(), calls + 2);
    QCOMPARE(announcements.count(), 0);
}

void RequestsTest::noCallbackRunsInsideTheRequest()
{
    m_service.answerWith("(@a{sv} {},)");
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QCOMPARE(answers.count(), 0);
    m_manager.changeConfiguration(Configuration(), answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(2));
}

void RequestsTest::aSuccessHasNoMessage()
{
    m_service.answerWith("(@a{sv} {},)");
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    m_manager.changeConfiguration(Configuration(), answers.forChanging());
    QVERIFY(answers.waitFor(2));

    QVERIFY(answers.at(0).configuration.isEmpty());
    for (int index = 0; index < 2; ++index) {
        QVERIFY(!answers.at(index).error.isError());
        QCOMPARE(answers.at(index).error.code(), Error::NoError);
        QVERIFY(answers.at(index).error.message().isNull());
    }
}

void RequestsTest::argumentsBehindTheConfigurationAreIgnored()
{
    m_service.answerWith("({'key': <7>}, 'more', {'other': <8>})");
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));

    QVERIFY(!answers.at(0).error);
    QCOMPARE(describe(answers.at(0).configuration), QStringLiteral("{\"key\": int 7}"));
}

void RequestsTest::theArgumentsOfAChangesAnswerAreIgnored()
{
    m_service.answerWith("('more', [1.5], {'other': <8>})");
    MessageLog log;
    Answers answers;
    m_manager.changeConfiguration(Configuration(), answers.forChanging());
    QVERIFY(answers.waitFor(1));

    QVERIFY(!answers.at(0).error);
    QCOMPARE(log.take(), QStringList());
}

void RequestsTest::anErrorReplyBecomesAnError_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<Error::Code>("code");

    QTest::newRow("prefix alone") << errorPrefix + QStringLiteral("_") << Error::Internal;
    QTest::newRow("unknown") << errorPrefix + QStringLiteral("Unknown") << Error::Internal;
    QTest::newRow("lower case") << errorPrefix + QStringLiteral("forbidden") << Error::Internal;
    QTest::newRow("prefix twice") << errorPrefix + errorPrefix + QStringLiteral("InvalidValue")
                                  << Error::InvalidValue;
    QTest::newRow("another service's")
        << QStringLiteral("org.brenvik.Other.Error.Forbidden") << Error::Internal;
    QTest::newRow("the bus's") << QStringLiteral("org.freedesktop.DBus.Error.AccessDenied")
                               << Error::Internal;
    QTest::newRow("Internal") << errorPrefix + QStringLiteral("Internal") << Error::Internal;
    QTest::newRow("NotExistingKey")
        << errorPrefix + QStringLiteral("NotExistingKey") << Error::NotExistingKey;
    QTest::newRow("InvalidType") << errorPrefix + QStringLiteral("InvalidType")
                                 << Error::InvalidType;
    QTest::newRow("InvalidValue") << errorPrefix + QStringLiteral("InvalidValue")
                                  << Error::InvalidValue;
    QTest::newRow("Forbidden") << errorPrefix + QStringLiteral("Forbidden") << Error::Forbidden;
    QTest::newRow("NotConfigurable")
        << errorPrefix + QStringLiteral("NotConfigurable") << Error::NotConfigurable;
    QTest::newRow("InvalidUserId")
        << errorPrefix + QStringLiteral("InvalidUserId") << Error::InvalidUserId;
    QTest::newRow("UnsupportedType")
        << errorPrefix + QStringLiteral("UnsupportedType") << Error::UnsupportedType;
}

void RequestsTest::anErrorReplyBecomesAnError()
{
    QFETCH(const QString, name);
    QFETCH(const Error::Code, code);

    const QString message = QStringLiteral("“größe” is not for you");
    m_service.answerWithError(name, message);
    MessageLog log;
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    m_manager.changeConfiguration(Configuration(), answers.forChanging());
    QVERIFY(answers.waitFor(2));

    QVERIFY(answers.at(0).configuration.isEmpty());
    for (int index = 0; index < 2; ++index) {
        QCOMPARE(answers.at(index).error.code(), code);
        QCOMPARE(answers.at(index).error.message(), message);
    }
    QCOMPARE(log.take(), QStringList());
}

void RequestsTest::anAnswerThatIsNoConfigurationIsAnInternalError_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("signature");

    QTest::newRow("nothing") << "()"
                             << "";
    QTest::newRow("string") << "('x',)"
                            << "s";
    QTest::newRow("other dictionary") << "({'a': 'x'},)"
                                      << "a{ss}";
    QTest::newRow("variant") << "(<{'a': <1>}>,)"
                             << "v";
    QTest::newRow("configuration second") << "(1, {'a': <1>})"
                                          << "ia{sv}";
}

void RequestsTest::anAnswerThatIsNoConfigurationIsAnInternalError()
{
    QFETCH(const QString, answer);
    QFETCH(const QString, signature);

    m_service.answerWith(answer);
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));

    QVERIFY(answers.at(0).configuration.isEmpty());
    QCOMPARE(answers.at(0).error.code(), Error::Internal);
    QCOMPARE(answers.at(0).error.message(),
             QStringLiteral("Unexpected reply signature: got \"%1\", expected \"a{sv}\"")
                 .arg(signature));
}

void RequestsTest::aServiceThatNeverAnswersIsATimeOut()
{
    ConfigurationManagerPrivate requests(&m_manager);
    requests.setTimeout(50);
    QList<MethodCall> unanswered;
    m_service.answerThrough([&](const MethodCall &call) { unanswered.append(call); });
    Answers answers;
    requests.getConfiguration(answers.forReading());
    requests.changeConfiguration(Configuration(), answers.forChanging());
    QVERIFY(answers.waitFor(2));

    for (int index = 0; index < 2; ++index) {
        QCOMPARE(answers.at(index).error.code(), Error::Internal);
        QVERIFY(!answers.at(index).error.message().isEmpty());
    }

    // An answer that comes too late changes nothing.
    QCOMPARE(unanswered.count(), 2);
    for (const MethodCall &call : qAsConst(unanswered))
        call.reply(parseValue("({'late': <1>},)"));
    m_service.answerWith("({'key': <7>},)");
    requests.setTimeout(-1);
    requests.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(3));
    QCOMPARE(describe(answers.at(2).configuration), QStringLiteral("{\"key\": int 7}"));
}

void RequestsTest::aBusThatHangsIsATimeOut()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the process to stop is not the one that was started", __FILE__,
                            __LINE__);
    m_service.answerWith("({'key': <7>},)");
    ConfigurationManagerPrivate requests(&m_manager);
    requests.setTimeout(50);
    const auto bus = static_cast<pid_t>(m_fixture.bus.processId());
    QCOMPARE(kill(bus, SIGSTOP), 0);
    Answers answers;
    requests.getConfiguration(answers.forReading());
    requests.changeConfiguration(Configuration(), answers.forChanging());
    const bool isAnswered = answers.waitFor(2);
    QCOMPARE(kill(bus, SIGCONT), 0);
    QVERIFY(isAnswered);
    QCOMPARE(answers.at(0).error.code(), Error::Internal);
    QCOMPARE(answers.at(1).error.code(), Error::Internal);

    requests.setTimeout(-1);
    requests.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(3));
    QCOMPARE(answers.texts().constLast(), QStringLiteral("{\"key\": int 7}"));
}

void RequestsTest::answersComeInTheOrderOfTheReplies()
{
    QList<MethodCall> calls;
    m_service.answerThrough([&](const MethodCall &call) { calls.append(call); });
    Answers answers;
    for (int request = 0; request < 3; ++request)
        m_manager.getConfiguration(answers.forReading());
    QTRY_COMPARE(calls.count(), 3);
    QCOMPARE(answers.count(), 0);

    calls.at(2).reply(parseValue("({'call': <2>},)"));
    calls.at(0).reply(parseValue("({'call': <0>},)"));
    calls.at(1).reply(parseValue("({'call': <1>},)"));
    QVERIFY(answers.waitFor(3));
    QCOMPARE(answers.at(0).configuration.get("call"), QVariant(2));
    QCOMPARE(answers.at(1).configuration.get("call"), QVariant(0));
    QCOMPARE(answers.at(2).configuration.get("call"), QVariant(1));
}

void RequestsTest::twoRequestsInARowAreAnsweredOneEach()
{
    m_service.answerWith("({'key': <7>},)");
    Answers first;
    Answers second;
    m_manager.getConfiguration(first.forReading());
    m_manager.getConfiguration(second.forReading());
    QVERIFY(first.waitFor(1));
    QVERIFY(second.waitFor(1));
}

void RequestsTest::hundredsOfRequestsAtOnceAreAnsweredOnceEach()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the number is dbus-daemon's", __FILE__, __LINE__);
    // A system bus lets 128 calls of one connection be outstanding and refuses further ones.
    constexpr int requests = 500;
    constexpr int outstanding = 128;
    QList<MethodCall> calls;
    m_service.answerThrough([&](const MethodCall &call) { calls.append(call); });
    QVector<int> answered(requests, 0);
    int refused = 0;
    for (int request = 0; request < requests; ++request)
        m_manager.getConfiguration([&, request](const Configuration &, const Error &error) {
            ++answered[request];
            if (error
                && error.message().contains(QLatin1String("maximum number of pending replies")))
                ++refused;
        });
    QTRY_COMPARE(calls.count(), outstanding);
    QTRY_COMPARE(refused, requests - outstanding);
    for (const MethodCall &call : qAsConst(calls))
        call.reply(parseValue("(@a{sv} {},)"));

    QTRY_COMPARE(answered.count(1), requests);
    // The connection is as good as new.
    m_service.answerWith("(@a{sv} {},)");
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QVERIFY(!answers.at(0).error);
    QCOMPARE(answered.count(1), requests);
}

void RequestsTest::unansweredRequestsUseUpWhatTheBusAllows()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("the number is dbus-daemon's", __FILE__, __LINE__);
    constexpr int outstanding = 128;
    ConfigurationManagerPrivate requests(&m_manager);
    requests.setTimeout(200);
    m_service.answerThrough([](const MethodCall &) {});
    Answers answers;
    for (int request = 0; request < outstanding; ++request)
        requests.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(outstanding));

    m_service.answerWith("({'key': <7>},)");
    requests.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(outstanding + 1));
    const Error refusal = answers.at(outstanding).error;
    QCOMPARE(refusal.code(), Error::Internal);
    QVERIFY2(refusal.message().contains(QLatin1String("maximum number of pending replies")),
             qPrintable(refusal.message()));

    m_service.stop();
    QVERIFY(m_service.start());
    requests.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(outstanding + 2));
    QVERIFY(!answers.at(outstanding + 1).error);
}

void RequestsTest::aSecondReplyToOneCallIsIgnored()
{
    m_service.answerThrough([](const MethodCall &call) {
        call.reply(parseValue("({'reply': <1>},)"));
        call.reply(parseValue("({'reply': <2>},)"));
        call.replyError(errorPrefix + QStringLiteral("Forbidden"), QStringLiteral("no"));
    });
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.at(0).configuration.get("reply"), QVariant(1));

    // The answer to a later request comes after anything that the further replies could cause.
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(2));
}

void RequestsTest::theCallbackIsCopiedOnce()
{
    m_service.answerWith("(@a{sv} {},)");
    int copies = 0;
    const std::function<void(const Configuration &, const Error &)> reading {CopyCounter(copies)};
    const std::function<void(const Error &)> changing {CopyCounter(copies)};
    copies = 0;
    m_manager.getConfiguration(reading);
    QCOMPARE(copies, 1);
    m_manager.changeConfiguration(Configuration(), changing);
    QCOMPARE(copies, 2);
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(copies, 2);
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
        m_service.answerWithError(errorPrefix + QStringLiteral("Forbidden"), QStringLiteral("no"));
    else
        m_service.answerWith("(@a{sv} {},)");
    ConfigurationManagerPrivate requests(&m_manager);
    if (isChange)
        requests.changeConfiguration(Configuration(), {});
    else
        requests.getConfiguration({});
    const int exceptions = m_fixture.application.caughtExceptions;
    QTRY_COMPARE(m_fixture.application.caughtExceptions, exceptions + 1);

    // The exception passes by the release of the watcher, and other requests go on.
    Answers answers;
    requests.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QTRY_COMPARE(watcherCount(requests), 1);
}

void RequestsTest::aRequestMayBeMadeInsideACallback()
{
    m_service.answerWith("({'key': <7>},)");
    Answers answers;
    m_manager.getConfiguration([&](const Configuration &configuration, const Error &) {
        m_manager.changeConfiguration(configuration, [&](const Error &) {
            m_manager.getConfiguration(answers.forReading());
        });
    });
    QVERIFY(answers.waitFor(1));
    QCOMPARE(describe(answers.at(0).configuration), QStringLiteral("{\"key\": int 7}"));
}

void RequestsTest::theWatcherOfARequestIsReleased()
{
    m_service.answerWith("(@a{sv} {},)");
    ConfigurationManagerPrivate requests(&m_manager);
    Answers answers;
    requests.getConfiguration(answers.forReading());
    requests.changeConfiguration(Configuration(), answers.forChanging());
    QCOMPARE(watcherCount(requests), 2);
    QVERIFY(answers.waitFor(2));
    QTRY_COMPARE(watcherCount(requests), 0);
}

void RequestsTest::theConfigurationSentIsThatOfTheRequestsTime()
{
    m_service.answerWith("()");
    Configuration configuration;
    configuration.set("key", 7);
    Answers answers;
    m_manager.changeConfiguration(configuration, answers.forChanging());
    configuration.set("key", 8);
    QVERIFY(answers.waitFor(1));
    QCOMPARE(m_service.calls().last().arguments, QStringLiteral("({'key': <7>},)"));
}

void RequestsTest::aConfigurationIsSentAsLongAsTheBusCarriesIt_data()
{
    QTest::addColumn<int>("levels");
    QTest::addColumn<QVariant>("entry");

    QTest::newRow("value on the deepest level") << 21 << QVariant(1);
    // What follows is the last of 64 containers, which not every bus carries.
    if (!isOnDBusDaemon())
        return;
    QTest::newRow("empty list on the deepest level") << 21 << QVariant(QStringList());
    QTest::newRow("list on the deepest level") << 21 << QVariant::fromValue(QList<int> {1, 2});
    QTest::newRow("empty configuration on the deepest level") << 21 << QVariant();
}

void RequestsTest::aConfigurationIsSentAsLongAsTheBusCarriesIt()
{
    QFETCH(const int, levels);
    QFETCH(const QVariant, entry);

    m_service.answerWith("()");
    const int calls = m_service.calls().count();
    Answers answers;
    m_manager.changeConfiguration(nested(levels, entry), answers.forChanging());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.at(0).error.message(), QString());
    QVERIFY(!answers.at(0).error);
    QCOMPARE(m_service.calls().count(), calls + 1);
    QCOMPARE(m_service.calls().last().arguments.count("'key'"), levels - (entry.isValid() ? 0 : 1));
}

void RequestsTest::anEmptyConfigurationMayLieOneLevelDeeper()
{
    if (!isOnDBusDaemon())
        return QTest::qSkip("not every bus carries the last of 64 containers", __FILE__, __LINE__);
    m_service.stop();
    QtService service;
    QDBusConnection connection = QDBusConnection::connectToBus(m_fixture.bus.address(),
                                                               QStringLiteral("service"));
    QVERIFY(connection.registerObject(BusFixture::path, &service, QDBusConnection::ExportAllSlots));
    QVERIFY(connection.registerService(QStringLiteral("org.brenvik.ManagedConfiguration")));

    Answers answers;
    m_manager.changeConfiguration(nested(22, QVariant()), answers.forChanging());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.texts(), QStringList("{}"));
    QCOMPARE(service.changes, 1);

    connection.unregisterService(QStringLiteral("org.brenvik.ManagedConfiguration"));
    QDBusConnection::disconnectFromBus(QStringLiteral("service"));
    QVERIFY(m_service.start());
}

void RequestsTest::aConfigurationNestedTooDeepIsNotSent_data()
{
    QTest::addColumn<int>("levels");
    QTest::addColumn<QVariant>("entry");

    QTest::newRow("value one level too deep") << 22 << QVariant(1);
    QTest::newRow("empty configuration two levels too deep") << 23 << QVariant();
    QTest::newRow("thousands of levels") << 10000 << QVariant(1);
}

void RequestsTest::aConfigurationNestedTooDeepIsNotSent()
{
    QFETCH(const int, levels);
    QFETCH(const QVariant, entry);

    m_service.answerWith("()");
    const int calls = m_service.calls().count();
    Answers answers;
    m_manager.changeConfiguration(nested(levels, entry), answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.at(0).error.code(), Error::Internal);
    QCOMPARE(answers.at(0).error.message(),
             QStringLiteral("The configuration is nested too deep to be sent: D-Bus carries 21 "
                            "levels"));

    // The next request is the next call.
    m_manager.changeConfiguration(nested(1, 1), answers.forChanging());
    QVERIFY(answers.waitFor(2));
    QVERIFY(!answers.at(1).error);
    QCOMPARE(m_service.calls().count(), calls + 1);
    QCOMPARE(m_service.calls().last().arguments, QStringLiteral("({'key': <1>},)"));
}

TARNVEL_BUS_TEST_MAIN(RequestsTest)

#include "requests_test.moc"
