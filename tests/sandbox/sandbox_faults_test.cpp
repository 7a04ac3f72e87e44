// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "scenario/fault.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <unistd.h>

using Tarnvel::Sandbox::FaultDescription;
using Tarnvel::Sandbox::faultDescriptions;

namespace {

constexpr int timeoutMs = 40000;

const char configuration[] = R"({"proxy": "p:1", "theme": "light", "zoom": 100})";
const QString configurationText = QStringLiteral("got proxy=p:1 theme=light zoom=100");

// The scenario of the viewer, with \a members, which begin with a comma, beside its configuration.
QByteArray scenarioOf(const QByteArray &members)
{
    return QByteArray(R"({"applications": [{"organization": "acme", "application": "viewer",)"
                      R"( "configuration": )")
        + configuration + members + "}]}";
}

QByteArray scenarioWithFaults(const QByteArray &faults)
{
    return scenarioOf(", \"faults\": [" + faults + "]");
}

bool write(const QString &fileName, const QByteArray &text)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

// The example of a fault in the documentation.
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

QString errorText(int code, const QString &message)
{
    return QStringLiteral("error %1: %2").arg(code).arg(message);
}

const QString noOwner = QStringLiteral(
    "The name org.brenvik.ManagedConfiguration was not provided by any .service files");
const QString disconnected = QStringLiteral(
    "Message recipient disconnected from message bus without replying");

} // namespace

class SandboxFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void everyFaultIsListedAndDocumented();
    void aFaultMeetsACall_data();
    void aFaultMeetsACall();
    void anAnswerThatIsTooLargeCostsTheServiceItsConnection();
    void aFaultComesAtItsTime_data();
    void aFaultComesAtItsTime();
    void aFloodIsMoreThanTheBusLetsTheApplicationRead();
    void aFaultThatIsThereFromTheStartComesAtItsTime();
    void aFaultOfTheScenarioBeforeGoesOn();
    void aDelayGoesTogetherWithAnotherFault();
    void aDelayedCallCanBeExpected();
    void everyErrorIsSeen_data();
    void everyErrorIsSeen();
    void anEventIsOneLineOfText();
    void everyRefusalIsSeen_data();
    void everyRefusalIsSeen();

private:
    void start(const QByteArray &scenario, const QStringList &steps);
    bool waitFor(QProcess::ProcessChannel channel, const QString &text);
    void finish();

    QScopedPointer<QTemporaryDir> m_directory;
    QScopedPointer<QProcess> m_sandbox;
    QString m_scenarioFile;
    // What the application has printed, and what the sandbox: process ids are N.
    QStringList m_lines;
    QStringList m_events;
};

void SandboxFaultsTest::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    m_scenarioFile = m_directory->filePath("scenario.json");
    m_sandbox.reset(new QProcess);
    m_lines.clear();
    m_events.clear();
}

void SandboxFaultsTest::cleanup()
{
    if (m_sandbox->state() == QProcess::NotRunning)
        return;
    m_sandbox->terminate();
    QVERIFY(m_sandbox->waitForFinished(timeoutMs));
}

// Starts the application with \a steps to do.
void SandboxFaultsTest::start(const QByteArray &scenario, const QStringList &steps)
{
    QVERIFY(write(m_scenarioFile, scenario));
    m_sandbox->start(SANDBOX,
                     QStringList {"--scenario", m_scenarioFile, "--", APPLICATION} + steps);
    QVERIFY2(m_sandbox->waitForStarted(timeoutMs), qPrintable(m_sandbox->errorString()));
}

// Waits until \a channel has brought a line with \a text.
bool SandboxFaultsTest::waitFor(QProcess::ProcessChannel channel, const QString &text)
{
    m_sandbox->setReadChannel(channel);
    QStringList &lines = channel == QProcess::StandardOutput ? m_lines : m_events;
    for (;;) {
        while (m_sandbox->canReadLine()) {
            lines.append(QString::fromUtf8(m_sandbox->readLine().chopped(1)));
            if (lines.last().contains(text))
                return true;
        }
        if (!m_sandbox->waitForReadyRead(timeoutMs))
            return false;
    }
}

// Waits for the application's end and takes down all that has been printed.
void SandboxFaultsTest::finish()
{
    QVERIFY(m_sandbox->state() == QProcess::NotRunning || m_sandbox->waitForFinished(timeoutMs));
    QCOMPARE(m_sandbox->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_sandbox->exitCode(), 0);
    m_lines += QString::fromUtf8(m_sandbox->readAllStandardOutput()).split('\n');
    m_events += QString::fromUtf8(m_sandbox->readAllStandardError()).split('\n');
    QCOMPARE(m_lines.takeLast(), QString());
    QCOMPARE(m_events.takeLast(), QString());
    m_events.replaceInStrings(QRegularExpression("pid \\d+"), "pid N");
}

void SandboxFaultsTest::everyFaultIsListedAndDocumented()
{
    m_sandbox->start(SANDBOX, {"--list-faults"});
    finish();
    const QVector<FaultDescription> &descriptions = faultDescriptions();
    QCOMPARE(m_lines.size(), descriptions.size());
    for (int index = 0; index < descriptions.size(); ++index) {
        const FaultDescription &description = descriptions.at(index);
        QCOMPARE(description.kind, static_cast<Tarnvel::Sandbox::Fault::Kind>(index));
        const QStringList words = m_lines.at(index).simplified().split(' ');
        QCOMPARE(words.first(), QString(description.name));
        QVERIFY2(m_lines.at(index).endsWith(description.text), qPrintable(m_lines.at(index)));
        QCOMPARE(words.contains("call,") || words.at(1) == "call", description.comesWithCall);
        const QJsonObject example = QJsonDocument::fromJson(exampleOf(words.first())).object();
        QCOMPARE(example.value("fault").toString(), words.first());
    }
}

void SandboxFaultsTest::aFaultMeetsACall_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QStringList>("events");

    const QString get = "acme/viewer (pid N): GetConfiguration: ";
    const QString set = "acme/viewer (pid N): ChangeConfiguration {\"zoom\":120}: ";
    const QString changed = "acme/viewer: ConfigurationChanged";
    const QString answered = get + "answered, 3 entries";

    QTest::newRow("error") << QStringList {"set zoom=120", "set zoom=120", "get"}
                           << QStringList {"set error 5: not today", "set error 5: not today",
                                           configurationText}
                           << QStringList {set + "refused, Forbidden: not today (fault error)",
                                           set + "refused, Forbidden: not today (fault error)",
                                           answered};
    QTest::newRow("delay") << QStringList {"get"} << QStringList {configurationText}
                           << QStringList {get + "delayed by 1.5 s (fault delay)", answered};
    QTest::newRow("no-answer") << QStringList {"get", "get"}
                               << QStringList {"got "
                                                   + errorText(1,
                                                               "Did not receive a reply. Possible "
                                                               "causes include: the remote "
                                                               "application did not send a reply, "
                                                               "the message bus security policy "
                                                               "blocked the reply, the reply "
                                                               "timeout expired, or the network "
                                                               "connection was broken."),
                                               configurationText}
                               << QStringList {get + "unanswered (fault no-answer)", answered};
    QTest::newRow("wrong-signature")
        << QStringList {"get", "set zoom=120", "follow"}
        << QStringList {"got "
                            + errorText(1,
                                        "Unexpected reply signature: got \"si\", expected "
                                        "\"a{sv}\""),
                        "set done", "changed to nothing"}
        << QStringList {get + "answered, 3 entries (fault wrong-signature)", set + "accepted",
                        changed, get + "answered, 3 entries (fault wrong-signature)"};
    QTest::newRow("further-arguments")
        << QStringList {"get"} << QStringList {configurationText}
        << QStringList {get + "answered, 3 entries (fault further-arguments)"};
    QTest::newRow("exit") << QStringList {"get", "get", "set zoom=120"}
                          << QStringList {"got " + errorText(1, disconnected),
                                          "got " + errorText(1, noOwner),
                                          "set " + errorText(1, noOwner)}
                          << QStringList {get + "unanswered (fault exit)",
                                          "the service has ended (fault exit)"};
    QTest::newRow("restart") << QStringList {"get", "set zoom=120", "get"}
                             << QStringList {configurationText, "set " + errorText(1, disconnected),
                                             "got " + errorText(1, noOwner)}
                             << QStringList {answered, set + "unanswered (fault restart)",
                                             "the service has ended (fault restart)"};
    QTest::newRow("bus-death")
        << QStringList {"get", "get", "get"}
        << QStringList {configurationText, "got " + errorText(1, "Not connected to D-Bus server"),
                        "got " + errorText(1, "Not connected to D-Bus server")}
        << QStringList {answered, get + "unanswered (fault bus-death)",
                        "the bus has died (fault bus-death)"};
}

void SandboxFaultsTest::aFaultMeetsACall()
{
    QFETCH(QStringList, steps);
    start(scenarioWithFaults(exampleOf(QTest::currentDataTag())), steps);
    finish();
    QTEST(m_lines, "lines");
    QTEST(m_events, "events");
}

void SandboxFaultsTest::anAnswerThatIsTooLargeCostsTheServiceItsConnection()
{
    start(scenarioWithFaults(exampleOf("too-large")), {"get", "follow", "get"});
    QVERIFY(waitFor(QProcess::StandardError, "the service has come back"));
    QVERIFY(write(m_scenarioFile,
                  R"({"applications": [{"organization": "acme",)"
                  R"( "application": "viewer", "configuration": {"last": 1}}]})"));
    finish();
    QCOMPARE(m_lines,
             QStringList({"got " + errorText(1, disconnected), "changed to last=1", "got last=1"}));
    QCOMPARE(
        m_events.at(0),
        QString("acme/viewer (pid N): GetConfiguration: answered, 3 entries (fault too-large)"));
    QCOMPARE(m_events.at(1), QString("the bus has closed the service's connection"));
}

void SandboxFaultsTest::aFaultComesAtItsTime_data()
{
    QTest::addColumn<int>("changes");
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("event");

    const QString same = "changed to proxy=p:1 theme=light zoom=100";
    const QString changed = "acme/viewer: ConfigurationChanged";
    QTest::newRow("spoofed-signal") << 0 << "" << changed + " (fault spoofed-signal)";
    QTest::newRow("announce") << 1 << same << changed + " (fault announce)";
    QTest::newRow("announce-twice") << 2 << same << changed + " (fault announce-twice)";
    QTest::newRow("push") << 1 << "changed to theme=dark zoom=150" << changed + " (fault push)";
}

void SandboxFaultsTest::aFaultComesAtItsTime()
{
    QFETCH(int, changes);
    QFETCH(QString, change);
    QFETCH(QString, event);
    QStringList steps {"get"};
    for (int step = 0; step <= changes; ++step)
        steps.append("follow");
    start(scenarioOf({}), steps);
    QVERIFY(waitFor(QProcess::StandardOutput, configurationText));
    QVERIFY(write(m_scenarioFile, scenarioWithFaults(exampleOf(QTest::currentDataTag()))));
    QVERIFY(waitFor(QProcess::StandardError, "(fault "));
    QCOMPARE(m_events.last(), event);
    QStringList lines {configurationText};
    for (int step = 0; step < changes; ++step) {
        lines.append(change);
        QVERIFY(waitFor(QProcess::StandardOutput, "changed to "));
    }

    // Behind all that the fault has brought, the change that ends the application.
    QVERIFY(write(m_scenarioFile,
                  R"({"applications": [{"organization": "acme",)"
                  R"( "application": "viewer", "configuration": {"last": 1}}]})"));
    finish();
    lines.append("changed to last=1");
    QCOMPARE(m_lines, lines);
}

void SandboxFaultsTest::aFloodIsMoreThanTheBusLetsTheApplicationRead()
{
    constexpr int changes = 1000;
    QStringList steps {"get"};
    for (int step = 0; step < changes; ++step)
        steps.append("follow");
    start(scenarioOf({}), steps);
    QVERIFY(waitFor(QProcess::StandardOutput, configurationText));
    QVERIFY(write(m_scenarioFile, scenarioWithFaults(exampleOf("flood"))));
    finish();
    QVERIFY(m_events.contains("acme/viewer: ConfigurationChanged, 1000 times (fault flood)"));
    QCOMPARE(m_lines.size(), changes + 1);
    const int read = m_lines.count("changed to proxy=p:1 theme=light zoom=100");
    QVERIFY2(read >= 1, qPrintable(m_lines.join('\n')));
    QCOMPARE(read + m_lines.count("changed to nothing"), changes);
}

void SandboxFaultsTest::aFaultThatIsThereFromTheStartComesAtItsTime()
{
    QVERIFY(write(
        m_scenarioFile,
        scenarioWithFaults(R"({"fault": "restart", "time": 0},)"
                           R"({"fault": "push", "time": 0.1, "configuration": {"zoom": 7}})")));
    m_sandbox->start(SANDBOX, {"--scenario", m_scenarioFile});
    QVERIFY(waitFor(QProcess::StandardError, "acme/viewer: ConfigurationChanged (fault push)"));
    const int ended = m_events.indexOf("the service has ended (fault restart)");
    const int back = m_events.indexOf("the service has come back");
    QVERIFY2(ended >= 0 && back > ended, qPrintable(m_events.join('\n')));
}

void SandboxFaultsTest::aFaultOfTheScenarioBeforeGoesOn()
{
    const QByteArray second =
        R"({"fault": "error", "method": "GetConfiguration", "call": 2, "error": "Internal"})";
    const QByteArray push = R"({"fault": "push", "time": 0, "configuration": {"zoom": 1}})";
    start(scenarioWithFaults(second), {"get", "follow", "get"});
    QVERIFY(waitFor(QProcess::StandardOutput, configurationText));
    // The call that follows this change is the second.
    QVERIFY(write(m_scenarioFile, scenarioWithFaults(second + "," + push)));
    finish();
    QCOMPARE(m_lines, QStringList({configurationText, "changed to nothing", "got zoom=1"}));
    QVERIFY2(m_events.contains("acme/viewer (pid N): GetConfiguration: refused, Internal: error "
                               "injected by the sandbox (fault error)"),
             qPrintable(m_events.join('\n')));
}

void SandboxFaultsTest::aDelayGoesTogetherWithAnotherFault()
{
    start(scenarioWithFaults(R"({"fault": "error", "method": "GetConfiguration", "error": "a.b"},)"
                             R"({"fault": "delay", "method": "GetConfiguration", "seconds": 0.1},)"
                             R"({"fault": "exit", "method": "GetConfiguration"})"),
          {"get"});
    finish();
    QCOMPARE(m_lines, QStringList("got error 1: error injected by the sandbox"));
    const QString get = "acme/viewer (pid N): GetConfiguration: ";
    QCOMPARE(m_events,
             QStringList({get + "delayed by 0.1 s (fault delay)",
                          get + "refused, a.b: error injected by the sandbox (fault error)"}));
}

void SandboxFaultsTest::aDelayedCallCanBeExpected()
{
    QVERIFY(write(
        m_scenarioFile,
        scenarioWithFaults(R"({"fault": "delay", "method": "GetConfiguration", "seconds": 0.1})")));
    const QString expectation = m_directory->filePath("calls.json");
    QVERIFY(write(expectation, R"({"calls": [{"fault": "delay", "outcome": "answered"}]})"));
    m_sandbox->start(
        SANDBOX, {"--scenario", m_scenarioFile, "--expect", expectation, "--", APPLICATION, "get"});
    finish();
    QCOMPARE(m_lines, QStringList(configurationText));
}

void SandboxFaultsTest::everyErrorIsSeen_data()
{
    QTest::addColumn<QString>("error");
    QTest::addColumn<int>("code");

    QTest::newRow("not the service's") << "org.example.Failed" << 1;
    int code = 1;
    for (const char *error : {"Internal", "NotExistingKey", "InvalidType", "InvalidValue",
                              "Forbidden", "NotConfigurable", "InvalidUserId", "UnsupportedType"})
        QTest::newRow(error) << QString(error) << code++;
}

void SandboxFaultsTest::everyErrorIsSeen()
{
    QFETCH(QString, error);
    QFETCH(int, code);
    const QString fault =
        R"({"fault": "error", "method": "%1", "error": "%2", "message": "ä \"%2\""})";
    const QString get = fault.arg("GetConfiguration", error);
    const QString change = fault.arg("ChangeConfiguration", error);
    start(scenarioWithFaults((get + "," + change).toUtf8()), {"get", "set zoom=1"});
    finish();
    const QString seen = errorText(code, QString::fromUtf8("ä \"%1\"").arg(error));
    QCOMPARE(m_lines, QStringList({"got " + seen, "set " + seen}));
}

void SandboxFaultsTest::anEventIsOneLineOfText()
{
    start(scenarioWithFaults(R"({"fault": "error", "method": "GetConfiguration",)"
                             R"( "error": "a.b", "message": "one\ntwo\u001b[31m\u2028"})"),
          {"get"});
    finish();
    QCOMPARE(m_events,
             QStringList(QString::fromUtf8("acme/viewer (pid N): GetConfiguration: refused, a.b: "
                                           "one�two�[31m� (fault error)")));
}

void SandboxFaultsTest::everyRefusalIsSeen_data()
{
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("lines");

    const QByteArray otherUser = QByteArray::number(getuid() + 1);
    const QString notAdmitted = QString("error 7: user %1 is not admitted to \"/acme_2eviewer\"")
                                    .arg(getuid());
    const QString notConfigurable = "error 6: \"/acme_2eviewer\" is not configurable";
    QTest::newRow("NotExistingKey") << QByteArray() << QStringList {"set zom=1"}
                                    << QStringList {"set error 2: \"zom\" does not exist"};
    QTest::newRow("InvalidType") << QByteArray() << QStringList {"set zoom=x"}
                                 << QStringList {
                                        "set error 3: \"zoom\" is an integer, not a string"};
    QTest::newRow("InvalidValue")
        << QByteArray(R"(, "allowed": {"zoom": {"maximum": 400}})") << QStringList {"set zoom=500"}
        << QStringList {"set error 4: \"zoom\" may not be 500, only -2147483648 to 400"};
    QTest::newRow("Forbidden") << QByteArray(R"(, "locked": ["proxy"])")
                               << QStringList {"set proxy=q", "set proxy=p:1"}
                               << QStringList {"set error 5: \"proxy\" is locked", "set done"};
    QTest::newRow("NotConfigurable")
        << QByteArray(R"(, "configurable": false)") << QStringList {"get", "set zoom=1"}
        << QStringList {"got " + notConfigurable, "set " + notConfigurable};
    QTest::newRow("InvalidUserId")
        << QByteArray(R"(, "users": [)" + otherUser + "]") << QStringList {"get", "set zoom=1"}
        << QStringList {"got " + notAdmitted, "set " + notAdmitted};
    QTest::newRow("admitted user")
        << QByteArray(R"(, "users": [)" + QByteArray::number(getuid()) + "]") << QStringList {"get"}
        << QStringList {configurationText};
}

void SandboxFaultsTest::everyRefusalIsSeen()
{
    QFETCH(QByteArray, members);
    QFETCH(QStringList, steps);
    start(scenarioOf(members), steps);
    finish();
    QTEST(m_lines, "lines");
}

QTEST_GUILESS_MAIN(SandboxFaultsTest)

#include "sandbox_faults_test.moc"
