// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "program.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <unistd.h>

using Tarnvel::Testing::Outcome;
using Tarnvel::Testing::Program;

namespace {

const char configuration[] = R"({"proxy": "p:1", "theme": "light", "zoom": 100})";
const QString configurationText = QStringLiteral("proxy=p:1 theme=light zoom=100");
const QString got = "got " + configurationText;

const QString disconnected = QStringLiteral(
    "error 1: Message recipient disconnected from message bus without replying");
const QString noOwner = QStringLiteral("error 1: The name org.brenvik.ManagedConfiguration was not "
                                       "provided by any .service files");
const QString noReply = QStringLiteral(
    "error 1: Did not receive a reply. Possible causes include: the remote application did not "
    "send a reply, the message bus security policy blocked the reply, the reply timeout expired, "
    "or the network connection was broken.");
const QString notConnected = QStringLiteral("error 1: Not connected to D-Bus server");

// The lines that the sandbox prints for a call that sends nothing, and for one that sends a zoom.
const QString get = QStringLiteral("acme/viewer (pid N): GetConfiguration: ");
const QString set = QStringLiteral("acme/viewer (pid N): ChangeConfiguration {\"zoom\":120}: ");
const QString announced = QStringLiteral("acme/viewer: ConfigurationChanged");

QByteArray scenarioOf(const QByteArray &configuration, const QByteArray &otherMembers = {})
{
    return R"({"applications": [{"organization": "acme", "application": "viewer", )"
           R"("configuration": )"
        + configuration + otherMembers + "}]}";
}

QByteArray scenarioWithFaults(const QByteArray &faults)
{
    return scenarioOf(configuration, ", \"faults\": [" + faults + "]");
}

bool write(const QString &fileName, const QByteArray &text)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

// The documentation's example of a fault.
QByteArray exampleOf(const QString &name)
{
    QFile file(DOCUMENTATION);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QRegularExpression section(QStringLiteral("^### %1\n.*?^```json\n(.*?)^```$").arg(name),
                                     QRegularExpression::MultilineOption
                                         | QRegularExpression::DotMatchesEverythingOption);
    return section.match(QString::fromUtf8(file.readAll())).captured(1).toUtf8();
}

} // namespace

class SandboxFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void aFaultAffectsACall_data();
    void aFaultAffectsACall();
    void aReplyThatIsTooLargeCostsTheServiceItsConnection();
    void aFaultHappensAtItsTime();
    void aFloodIsMoreThanTheBusLetsTheApplicationRead();
    void aRestartedServiceComesBack();
    void aFaultThatStaysInTheScenarioKeepsItsCount();
    void aDelayIsCombinedWithAnotherFault();
    void everyErrorReachesTheApplication();
    void anEventIsOneLineOfText();
    void everyRefusalReachesTheApplication_data();
    void everyRefusalReachesTheApplication();

private:
    bool start(const QByteArray &scenario, const QStringList &steps,
               const QByteArray &expectation = R"({"calls": []})");
    bool waitForLine(const QString &text);
    bool waitForEvent(const QString &text);
    int finish();

    QScopedPointer<QTemporaryDir> m_directory;
    QScopedPointer<Program> m_sandbox;
    QString m_scenarioFile;
    // What the application has printed, and what the sandbox; each process id is N.
    QStringList m_lines;
    QStringList m_events;
};

void SandboxFaultsTest::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    m_scenarioFile = m_directory->filePath("scenario.json");
    m_sandbox.reset(new Program("managed-configuration-sandbox"));
    m_lines.clear();
    m_events.clear();
}

// Starts the application with its \a steps.
bool SandboxFaultsTest::start(const QByteArray &scenario, const QStringList &steps,
                              const QByteArray &expectation)
{
    const QString expectationFile = m_directory->filePath("calls.json");
    if (!write(m_scenarioFile, scenario) || !write(expectationFile, expectation))
        return false;
    m_sandbox->start(
        QStringList {"--scenario", m_scenarioFile, "--expect", expectationFile, "--", APPLICATION}
        + steps);
    return true;
}

bool SandboxFaultsTest::waitForLine(const QString &text)
{
    do
        m_lines.append(m_sandbox->readLine());
    while (!m_lines.last().contains(text) && !m_lines.last().startsWith("no line: "));
    return m_lines.last().contains(text);
}

bool SandboxFaultsTest::waitForEvent(const QString &text)
{
    do
        m_events.append(m_sandbox->readErrorLine());
    while (!m_events.last().contains(text) && !m_events.last().startsWith("no line: "));
    return m_events.last().contains(text);
}

// Waits for the end, adds all that has been printed, and returns the exit status.
int SandboxFaultsTest::finish()
{
    const Outcome outcome = m_sandbox->finish();
    m_lines += outcome.output.split('\n', Qt::SkipEmptyParts);
    m_events += outcome.errors.split('\n', Qt::SkipEmptyParts);
    m_events.replaceInStrings(QRegularExpression("pid \\d+"), "pid N");
    return outcome.status;
}

void SandboxFaultsTest::aFaultAffectsACall_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QStringList>("events");

    const auto row = [](const char *name, const QStringList &steps, const QStringList &lines,
                        const QStringList &events) {
        QTest::newRow(name) << steps << lines << events;
    };
    const QString answered = get + "answered, 3 entries";
    const QString refused = set + "refused, Forbidden: not today (fault error)";
    row("error", {"set zoom=120", "set zoom=120", "get"},
        {"set error 5: not today", "set error 5: not today", got}, {refused, refused, answered});
    row("delay", {"get"}, {got}, {get + "delayed by 1.5 s (fault delay)", answered});
    row("no-reply", {"get", "get"}, {"got " + noReply, got},
        {get + "unanswered (fault no-reply)", answered});
    row("wrong-signature", {"get", "set zoom=120", "follow"},
        {R"(got error 1: Unexpected reply signature: got "si", expected "a{sv}")", "set done",
         "changed to nothing"},
        {answered + " (fault wrong-signature)", set + "accepted", announced,
         answered + " (fault wrong-signature)"});
    row("extra-arguments", {"get"}, {got}, {answered + " (fault extra-arguments)"});
    row("exit", {"get", "get", "set zoom=120"},
        {"got " + disconnected, "got " + noOwner, "set " + noOwner},
        {get + "unanswered (fault exit)", "the service has ended (fault exit)"});
    row("restart", {"get", "set zoom=120", "get"}, {got, "set " + disconnected, "got " + noOwner},
        {answered, set + "unanswered (fault restart)", "the service has ended (fault restart)"});
    row("bus-death", {"get", "get", "get"}, {got, "got " + notConnected, "got " + notConnected},
        {answered, get + "unanswered (fault bus-death)", "the bus has died (fault bus-death)"});
}

void SandboxFaultsTest::aFaultAffectsACall()
{
    QFETCH(QStringList, steps);
    // So that a restarted service is not back before the application is done.
    const QByteArray fault = exampleOf(QTest::currentDataTag())
                                 .replace("\"seconds\": 0.5", "\"seconds\": 86400");
    QVERIFY(start(scenarioWithFaults(fault), steps));
    QCOMPARE(finish(), 0);
    QTEST(m_lines, "lines");
    QTEST(m_events, "events");
}

void SandboxFaultsTest::aReplyThatIsTooLargeCostsTheServiceItsConnection()
{
    QVERIFY(start(scenarioWithFaults(exampleOf("too-large")), {"get", "follow", "get"}));
    QVERIFY(waitForEvent("the service has come back"));
    QVERIFY(write(m_scenarioFile, scenarioOf(R"({"last": 1})")));
    QCOMPARE(finish(), 0);
    QCOMPARE(m_lines, QStringList({"got " + disconnected, "changed to last=1", "got last=1"}));
    QCOMPARE(m_events.mid(0, 2),
             QStringList({get + "answered, 3 entries (fault too-large)",
                          "the bus has closed the service's connection"}));
}

void SandboxFaultsTest::aFaultHappensAtItsTime()
{
    QVERIFY(start(scenarioOf(configuration),
                  {"get", "follow", "follow", "follow", "follow", "follow"}));
    QVERIFY(waitForLine(got));
    for (const char *name : {"announce", "announce-twice", "spoofed-signal", "replace"}) {
        QVERIFY(write(m_scenarioFile, scenarioWithFaults(exampleOf(name))));
        QVERIFY(waitForEvent(QString("%1 (fault %2)").arg(announced, name)));
    }
    QVERIFY(waitForLine("changed to theme=dark zoom=150"));
    QVERIFY(write(m_scenarioFile, scenarioOf(R"({"last": 1})")));
    QCOMPARE(finish(), 0);
    const QString same = "changed to " + configurationText;
    QCOMPARE(m_lines,
             QStringList(
                 {got, same, same, same, "changed to theme=dark zoom=150", "changed to last=1"}));
}

void SandboxFaultsTest::aFloodIsMoreThanTheBusLetsTheApplicationRead()
{
    constexpr int changes = 1000;
    QStringList steps {"get"};
    for (int step = 0; step < changes; ++step)
        steps.append("follow");
    QVERIFY(start(scenarioOf(configuration), steps));
    QVERIFY(waitForLine(got));
    QVERIFY(write(m_scenarioFile, scenarioWithFaults(exampleOf("flood"))));
    QCOMPARE(finish(), 0);
    QVERIFY(m_events.contains(announced + ", 1000 times (fault flood)"));
    QCOMPARE(m_lines.size(), changes + 1);
    const int read = m_lines.count("changed to " + configurationText);
    QVERIFY(read >= 1 && read < changes);
    QCOMPARE(read + m_lines.count("changed to nothing"), changes);
}

void SandboxFaultsTest::aRestartedServiceComesBack()
{
    QVERIFY(start(scenarioWithFaults(R"({"fault": "restart", "time": 0})"), {"get", "follow"}));
    QVERIFY(waitForEvent("the service has ended (fault restart)"));
    QVERIFY(waitForEvent("the service has come back"));
    QVERIFY(waitForLine("got "));
    QVERIFY(write(m_scenarioFile, scenarioOf(R"({"last": 1})")));
    QVERIFY(waitForLine("changed to last=1"));
    QCOMPARE(finish(), 0);
}

void SandboxFaultsTest::aFaultThatStaysInTheScenarioKeepsItsCount()
{
    const QByteArray second =
        R"({"fault": "error", "method": "GetConfiguration", "call": 2, "error": "Internal"})";
    const QByteArray replace = R"({"fault": "replace", "time": 0, "configuration": {"zoom": 1}})";
    QVERIFY(start(scenarioWithFaults(second), {"get", "follow", "get"}));
    QVERIFY(waitForLine(got));
    // The call that follows this announcement is the second.
    QVERIFY(write(m_scenarioFile, scenarioWithFaults(second + ", " + replace)));
    QCOMPARE(finish(), 0);
    QCOMPARE(m_lines, QStringList({got, "changed to nothing", "got zoom=1"}));
    QVERIFY(
        m_events.contains(get + "refused, Internal: error injected by the sandbox (fault error)"));
}

void SandboxFaultsTest::aDelayIsCombinedWithAnotherFault()
{
    QVERIFY(
        start(scenarioWithFaults(
                  R"({"fault": "error", "method": "GetConfiguration", "call": 2, "error": "a.b"},)"
                  R"({"fault": "delay", "method": "GetConfiguration", "seconds": 0.125},)"
                  R"({"fault": "exit", "method": "GetConfiguration", "call": 2})"),
              {"get", "get"},
              R"({"calls": [{"fault": "delay", "outcome": "answered"}, {"fault": "error"}]})"));
    QCOMPARE(finish(), 0);
    QCOMPARE(m_lines, QStringList({got, "got error 1: error injected by the sandbox"}));
    const QString delayed = get + "delayed by 0.125 s (fault delay)";
    QCOMPARE(m_events,
             QStringList({delayed, get + "answered, 3 entries", delayed,
                          get + "refused, a.b: error injected by the sandbox (fault error)"}));
}

void SandboxFaultsTest::everyErrorReachesTheApplication()
{
    const QStringList errors {"org.example.Failed", "Internal",      "NotExistingKey",
                              "InvalidType",        "InvalidValue",  "Forbidden",
                              "NotConfigurable",    "InvalidUserId", "UnsupportedType"};
    QStringList faults;
    QStringList steps;
    QStringList lines;
    for (int index = 0; index < errors.size(); ++index) {
        for (const char *const method : {"GetConfiguration", "ChangeConfiguration"})
            faults.append(QString::fromUtf8(R"({"fault": "error", "method": "%1", "call": %2, )"
                                            R"("error": "%3", "message": "ä \"%3\""})")
                              .arg(method, QString::number(index + 1), errors.at(index)));
        steps << "get"
              << "set zoom=1";
        const QString error =
            QString::fromUtf8("error %1: ä \"%2\"").arg(qMax(index, 1)).arg(errors.at(index));
        lines << "got " + error << "set " + error;
    }
    QVERIFY(start(scenarioWithFaults(faults.join(',').toUtf8()), steps));
    QCOMPARE(finish(), 0);
    QCOMPARE(m_lines, lines);
}

void SandboxFaultsTest::anEventIsOneLineOfText()
{
    QVERIFY(start(scenarioWithFaults(R"({"fault": "error", "method": "GetConfiguration",)"
                                     R"( "error": "a.b", "message": "one\ntwo\u001b[31m\u2028"})"),
                  {"get"}));
    QCOMPARE(finish(), 0);
    const QString text = QStringLiteral(
        R"(refused, a.b: one\u000atwo\u001b[31m\u2028 (fault error))");
    QCOMPARE(m_events, QStringList(get + text));
}

void SandboxFaultsTest::everyRefusalReachesTheApplication_data()
{
    QTest::addColumn<QString>("members");
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("lines");

    const auto row = [](const char *name, const QString &members, const QStringList &steps,
                        const QStringList &lines) {
        QTest::newRow(name) << members << steps << lines;
    };
    const QString notConfigurable = "error 6: \"/acme_2eviewer\" is not configurable";
    row("not configurable", R"(, "configurable": false)", {"get", "set zoom=1"},
        {"got " + notConfigurable, "set " + notConfigurable});
    const QString users = R"(, "users": [%1])";
    const QString notAUser = QString("error 7: user %1 may not use \"/acme_2eviewer\"")
                                 .arg(getuid());
    row("another user", users.arg(getuid() + 1), {"get", "set zoom=1"},
        {"got " + notAUser, "set " + notAUser});
    row("changes by the user",
        users.arg(getuid()) + R"(, "allowed": {"zoom": {"maximum": 400}}, "locked": ["proxy"])",
        {"set zom=1", "set zoom=x", "set zoom=500", "set proxy=q", "set proxy=p:1"},
        {"set error 2: \"zom\" does not exist", "set error 3: \"zoom\" is an integer, not a string",
         "set error 4: \"zoom\" may not be 500, only -2147483648 to 400",
         "set error 5: \"proxy\" is locked", "set done"});
}

void SandboxFaultsTest::everyRefusalReachesTheApplication()
{
    QFETCH(QString, members);
    QFETCH(QStringList, steps);
    QVERIFY(start(scenarioOf(configuration, members.toUtf8()), steps));
    QCOMPARE(finish(), 0);
    QTEST(m_lines, "lines");
}

QTEST_GUILESS_MAIN(SandboxFaultsTest)

#include "sandbox_faults_test.moc"
