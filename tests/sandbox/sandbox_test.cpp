// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <csignal>
#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int timeoutMs = 20000;

const QString viewerPath = QStringLiteral("/acme_2eviewer");
const QString editorPath = QStringLiteral("/acme_2eeditor");
const QString playerPath = QStringLiteral("/acme_2eplayer");

QByteArray applicationOf(const QByteArray &name, const QByteArray &configuration,
                         const QByteArray &locked = "[]")
{
    return R"({"organization": "acme", "application": ")" + name + R"(", "configuration": )"
        + configuration + R"(, "locked": )" + locked + "}";
}

QByteArray scenarioOf(const QByteArrayList &applications)
{
    return R"({"applications": [)" + applications.join(", ") + "]}";
}

bool write(const QString &fileName, const QByteArray &text)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

// What a program on the bus sees that shares no code with the sandbox or the library.
class Client
{
public:
    ~Client()
    {
        if (!m_connection)
            return;
        g_dbus_connection_signal_unsubscribe(m_connection, m_subscription);
        g_dbus_connection_close_sync(m_connection, nullptr, nullptr);
        g_object_unref(m_connection);
    }

    bool open(const QString &address)
    {
        m_connection = g_dbus_connection_new_for_address_sync(
            address.toUtf8().constData(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
                                              | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr);
        if (!m_connection)
            return false;
        m_subscription = g_dbus_connection_signal_subscribe(
            m_connection, "org.brenvik.ManagedConfiguration",
            "org.brenvik.ManagedConfiguration.Application1", nullptr, nullptr, nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, receive, &m_signals, nullptr);
        return waitForBus();
    }

    // The answer in GVariant's text form, or the error's name and message.
    QString call(const QString &path, const char *method, const char *arguments = "()")
    {
        g_autoptr(GError) error = nullptr;
        g_autoptr(GVariant) values = g_dbus_connection_call_sync(
            m_connection, "org.brenvik.ManagedConfiguration", path.toUtf8().constData(),
            "org.brenvik.ManagedConfiguration.Application1", method,
            g_variant_new_parsed(arguments), nullptr, G_DBUS_CALL_FLAGS_NONE, timeoutMs, nullptr,
            &error);
        if (values) {
            g_autofree gchar *text = g_variant_print(values, TRUE);
            return QString::fromUtf8(text);
        }
        g_autofree gchar *name = g_dbus_error_get_remote_error(error);
        g_dbus_error_strip_remote_error(error);
        return QStringLiteral("%1: %2").arg(QString::fromUtf8(name),
                                            QString::fromUtf8(error->message));
    }

    QString read(const QString &path = viewerPath)
    {
        return call(path, "GetConfiguration");
    }

    QString change(const char *arguments)
    {
        return call(viewerPath, "ChangeConfiguration", arguments);
    }

    // The signals so far: "path member arguments".
    const QStringList &signalsSeen() const
    {
        return m_signals;
    }

private:
    // The bus handles the messages of one connection in their order, the subscription included.
    bool waitForBus()
    {
        g_autoptr(GVariant) answer = g_dbus_connection_call_sync(
            m_connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "GetId", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, timeoutMs, nullptr, nullptr);
        return answer;
    }

    static void receive(GDBusConnection *, const gchar *, const gchar *path, const gchar *,
                        const gchar *member, GVariant *arguments, gpointer list)
    {
        g_autofree gchar *text = g_variant_print(arguments, TRUE);
        static_cast<QStringList *>(list)->append(
            QStringLiteral("%1 %2 %3")
                .arg(QString::fromUtf8(path), QString::fromUtf8(member), QString::fromUtf8(text)));
    }

    GDBusConnection *m_connection = nullptr;
    guint m_subscription = 0;
    QStringList m_signals;
};

QVector<QJsonObject> readRecords(const QString &fileName)
{
    QVector<QJsonObject> records;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return records;
    while (!file.atEnd())
        records.append(QJsonDocument::fromJson(file.readLine()).object());
    return records;
}

QString changed(const QString &path)
{
    return path + QStringLiteral(" ConfigurationChanged ()");
}

} // namespace

class SandboxTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theExitStatusIsThatOfTheCommand_data();
    void theExitStatusIsThatOfTheCommand();
    void aMistakeOfUseIsNamed_data();
    void aMistakeOfUseIsNamed();
    void helpAndVersionAreShown();
    void aReaderThatHasSeenEnoughIsNoFailure();
    void aScenarioIsCheckedAndNothingElseDone();
    void aLogReplacesNoFileThatIsRead_data();
    void aLogReplacesNoFileThatIsRead();
    void aLogThatTakesNoMoreIsTold();
    void closedChannelsDoNoHarm();
    void allScenariosAreChecked_data();
    void allScenariosAreChecked();
    void theCommandGetsItsWordsItsChannelsAndItsEnvironment();
    void theCommandFindsTheServiceRunning();
    void theBusIsOutOfOthersReach();
    void anotherShellCanUseThePrintedLine();
    void theTemporaryDirectoryMayHaveAnyName();

    void everyKindOfValueIsServed();
    void anUnknownApplicationIsRefused_data();
    void anUnknownApplicationIsRefused();
    void aMalformedCallIsRefused_data();
    void aMalformedCallIsRefused();
    void aChangeIsMergedByTopLevelKey();
    void aChangeThatAltersNothingIsNotAnnounced();
    void aLockedSettingStaysAndWithItAllOthers_data();
    void aLockedSettingStaysAndWithItAllOthers();
    void aLockedSettingMayBeSentAsItIs();
    void everyEventIsPrintedAndRecorded();
    void aRecordHoldsAllThatIsKnown();
    void theExitStatusTellsWhetherExpectedCallsCame_data();
    void theExitStatusTellsWhetherExpectedCallsCame();
    void aSandboxWithoutACommandTellsAtItsEndWhatHasNotCome();

    void aNewScenarioIsPushedToThoseWhomItConcerns_data();
    void aNewScenarioIsPushedToThoseWhomItConcerns();
    void aNewScenarioReplacesWhatTheApplicationChanged();
    void locksComeAndGoWithTheFile();
    void aBadScenarioChangesNothing();
    void aFileThatVanishesAndReturnsIsFollowed();

private:
    void start(const QStringList &arguments);
    void finish();
    void serve(const QByteArray &scenario, const QStringList &options = {});
    bool waitForLine(const QByteArray &part);
    QByteArray readLine();
    QByteArrayList eventLines();

    QScopedPointer<QTemporaryDir> m_directory;
    QScopedPointer<QProcess> m_sandbox;
    QScopedPointer<Client> m_client;
    QString m_scenarioFile;
    QString m_temporaryFiles;
};

void SandboxTest::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    m_scenarioFile = m_directory->filePath("scenario.json");
    m_temporaryFiles = m_directory->filePath("tmp");
    QVERIFY(QDir().mkdir(m_temporaryFiles));
    m_client.reset(new Client);
    m_sandbox.reset(new QProcess);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TMPDIR", m_temporaryFiles);
    environment.insert("QT_NO_GLIB", "1");
    m_sandbox->setProcessEnvironment(environment);
}

void SandboxTest::cleanup()
{
    m_client.reset();
    if (m_sandbox->state() != QProcess::NotRunning) {
        m_sandbox->terminate();
        QVERIFY(m_sandbox->waitForFinished(timeoutMs));
    }
}

void SandboxTest::start(const QStringList &arguments)
{
    m_sandbox->start(SANDBOX, arguments);
    QVERIFY2(m_sandbox->waitForStarted(timeoutMs), qPrintable(m_sandbox->errorString()));
}

void SandboxTest::finish()
{
    QVERIFY(m_sandbox->state() == QProcess::NotRunning || m_sandbox->waitForFinished(timeoutMs));
    QCOMPARE(m_sandbox->exitStatus(), QProcess::NormalExit);
}

// Starts the sandbox without a command and connects the client to its bus.
void SandboxTest::serve(const QByteArray &scenario, const QStringList &options)
{
    QVERIFY(write(m_scenarioFile, scenario));
    start(QStringList {"--scenario", m_scenarioFile} + options);
    const QByteArray line = readLine();
    const QByteArray before = "export DBUS_SYSTEM_BUS_ADDRESS='";
    QVERIFY2(line.startsWith(before) && line.endsWith('\''), line.constData());
    const QByteArray address = line.mid(before.size(), line.size() - before.size() - 1);
    QVERIFY(m_client->open(QString::fromUtf8(address)));
}

QByteArray SandboxTest::readLine()
{
    while (!m_sandbox->canReadLine()) {
        if (!m_sandbox->waitForReadyRead(timeoutMs))
            return "no line: " + m_sandbox->readAllStandardError();
    }
    return m_sandbox->readLine().chopped(1);
}

// Waits for a line with \a part in it.
bool SandboxTest::waitForLine(const QByteArray &part)
{
    for (;;) {
        const QByteArray line = readLine();
        if (line.contains(part) || line.startsWith("no line: "))
            return line.contains(part);
    }
}

// All that a sandbox that runs no command has printed when it ended.
QByteArrayList SandboxTest::eventLines()
{
    m_sandbox->terminate();
    m_sandbox->waitForFinished(timeoutMs);
    QByteArrayList lines = m_sandbox->readAllStandardError().split('\n');
    lines.removeLast();
    return lines;
}

void SandboxTest::theExitStatusIsThatOfTheCommand_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");

    QTest::newRow("killed") << "kill -KILL $$" << 128 + SIGKILL;
    QTest::newRow("terminated") << "kill -TERM $$" << 128 + SIGTERM;
    QTest::newRow("success") << "exit 0" << 0;
    QTest::newRow("failure") << "exit 3" << 3;
    QTest::newRow("greatest status") << "exit 255" << 255;
}

void SandboxTest::theExitStatusIsThatOfTheCommand()
{
    QFETCH(QString, script);
    start({"--", "sh", "-c", script});
    finish();
    QTEST(m_sandbox->exitCode(), "status");
    QCOMPARE(m_sandbox->readAllStandardError(), QByteArray());
}

void SandboxTest::aMistakeOfUseIsNamed_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");

    QTest::newRow("unknown option")
        << QStringList {"--wrld", "x"} << 125 << "Unknown option 'wrld'.\n";
    QTest::newRow("no file") << QStringList {"--scenario"} << 125
                             << "Missing value after '--scenario'.\n";
    QTest::newRow("empty name") << QStringList {"--scenario", ""} << 125
                                << "\"--scenario\" needs the name of a file\n";
    QTest::newRow("missing file") << QStringList {"--scenario", "/nowhere/w.json", "--", "true"}
                                  << 125 << "/nowhere/w.json: No such file or directory\n";
    QTest::newRow("empty log") << QStringList {"--log", ""} << 125
                               << "\"--log\" needs the name of a file\n";
    QTest::newRow("log that cannot be written")
        << QStringList {"--log", "/nowhere/log", "--", "true"} << 125
        << "/nowhere/log: No such file or directory\n";
    QTest::newRow("empty expectation")
        << QStringList {"--expect", ""} << 125 << "\"--expect\" needs the name of a file\n";
    QTest::newRow("missing expectation") << QStringList {"--expect", "/nowhere/calls", "--", "true"}
                                         << 125 << "/nowhere/calls: No such file or directory\n";
    QTest::newRow("empty file to check")
        << QStringList {"--check", ""} << 125 << "\"--check\" needs the name of a file\n";
    QTest::newRow("missing file to check") << QStringList {"--check", "/nowhere/w.json"} << 125
                                           << "/nowhere/w.json: No such file or directory\n";
    QTest::newRow("missing command")
        << QStringList {"--", "/nowhere/command"} << 127
        << "Failed to execute child process “/nowhere/command” (No such file or directory)\n";
    // A name without a slash is looked up in PATH alone.
    QTest::newRow("command out of PATH")
        << QStringList {"--", "sandbox_test"} << 127
        << "Failed to execute child process “sandbox_test” (No such file or directory)\n";
    QTest::newRow("command that is not executable")
        << QStringList {"--", "/etc/passwd"} << 126
        << "Failed to execute child process “/etc/passwd” (Permission denied)\n";
}

void SandboxTest::aMistakeOfUseIsNamed()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    start(arguments);
    finish();
    QCOMPARE(QString::fromUtf8(m_sandbox->readAllStandardError()), message);
    QCOMPARE(m_sandbox->readAllStandardOutput(), QByteArray());
    QTEST(m_sandbox->exitCode(), "status");
}

void SandboxTest::helpAndVersionAreShown()
{
    start({"--help"});
    finish();
    const QByteArray help = m_sandbox->readAllStandardOutput();
    QVERIFY2(help.contains(" [options] [-- COMMAND ARGS...]\n"), help.constData());
    QVERIFY2(help.contains("  --scenario <FILE> "), help.constData());
    QCOMPARE(m_sandbox->exitCode(), 0);

    start({"--version"});
    finish();
    QCOMPARE(m_sandbox->readAllStandardOutput(),
             QByteArray("managed-configuration-sandbox " SANDBOX_VERSION "\n"));
    QCOMPARE(m_sandbox->exitCode(), 0);
}

void SandboxTest::aReaderThatHasSeenEnoughIsNoFailure()
{
    QProcess shell;
    // The first reader is gone before anything is written.
    shell.start("bash",
                {"-o", "pipefail", "-c",
                 ("(sleep 0.2; exec \"$0\" --list-faults) | true;"
                  " echo ${PIPESTATUS[0]}; \"$0\" --list-faults | head -n 1"),
                 SANDBOX});
    QVERIFY(shell.waitForFinished(timeoutMs));
    QCOMPARE(shell.readAllStandardError(), QByteArray());
    const QByteArrayList lines = shell.readAllStandardOutput().split('\n');
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.at(0), QByteArray("0"));
    QVERIFY2(lines.at(1).startsWith("error "), lines.at(1).constData());
    QCOMPARE(shell.exitCode(), 0);
}

void SandboxTest::aScenarioIsCheckedAndNothingElseDone()
{
    QVERIFY(write(m_scenarioFile, scenarioOf({applicationOf("viewer", R"({"a": 1})")})));
    start({"--check", m_scenarioFile, "--", "echo", "not to be seen"});
    finish();
    QCOMPARE(m_sandbox->readAllStandardOutput(), m_scenarioFile.toUtf8() + ": valid\n");
    QCOMPARE(m_sandbox->exitCode(), 0);

    QVERIFY(write(m_scenarioFile, "{\n}"));
    start({"--check", m_scenarioFile});
    finish();
    QCOMPARE(m_sandbox->readAllStandardError(),
             m_scenarioFile.toUtf8() + ":1:1: \"applications\" is missing\n");
    QCOMPARE(m_sandbox->readAllStandardOutput(), QByteArray());
    QCOMPARE(m_sandbox->exitCode(), 125);
}

void SandboxTest::aLogReplacesNoFileThatIsRead_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("scenario") << "--scenario" << scenarioOf({});
    QTest::newRow("expectation") << "--expect" << QByteArray(R"({"calls": []})");
}

void SandboxTest::aLogReplacesNoFileThatIsRead()
{
    QFETCH(QString, option);
    QFETCH(QByteArray, text);
    QVERIFY(write(m_scenarioFile, text));
    start({option, m_scenarioFile, "--log", m_directory->filePath("tmp/../scenario.json"), "--",
           "true"});
    finish();
    QCOMPARE(m_sandbox->exitCode(), 125);
    QVERIFY(m_sandbox->readAllStandardError().endsWith(": the log would overwrite this file\n"));
    QFile file(m_scenarioFile);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), text);
}

void SandboxTest::aLogThatTakesNoMoreIsTold()
{
    QVERIFY(write(m_scenarioFile, scenarioOf({applicationOf("viewer", R"({"a": 1})")})));
    start({"--scenario", m_scenarioFile, "--log", "/dev/full", "--", APPLICATION, "get", "get"});
    finish();
    const QList<QByteArray> lines = m_sandbox->readAllStandardError().split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines.at(0), QByteArray("/dev/full: No space left on device"));
    QVERIFY(lines.at(1).endsWith("GetConfiguration: answered, 1 entry"));
    QVERIFY(lines.at(2).endsWith("GetConfiguration: answered, 1 entry"));
    QCOMPARE(m_sandbox->exitCode(), 0);
}

void SandboxTest::closedChannelsDoNoHarm()
{
    QVERIFY(write(m_scenarioFile, scenarioOf({applicationOf("viewer", R"({"a": 1})")})));
    const QString logFile = m_directory->filePath("log.json");
    // The application itself is to have channels: what it prints would go anywhere, too.
    m_sandbox->start("sh",
                     {"-c", "exec \"$@\" <&- >&- 2>&-", "sh", SANDBOX, "--scenario", m_scenarioFile,
                      "--log", logFile, "--", "sh", "-c",
                      "exec \"$0\" get </dev/null >/dev/null 2>&1", APPLICATION});
    finish();
    QCOMPARE(m_sandbox->exitCode(), 0);
    QFile file(logFile);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray record = file.readAll();
    QCOMPARE(record.count('\n'), 1);
    QCOMPARE(QJsonDocument::fromJson(record).object().value("outcome").toString(),
             QString("answered"));
}

void SandboxTest::allScenariosAreChecked_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("one option") << QStringList {"--check", "bad", "good", "bad"};
    QTest::newRow("an option each")
        << QStringList {"--check", "bad", "--check", "good", "--check", "bad"};
}

void SandboxTest::allScenariosAreChecked()
{
    QFETCH(const QStringList, arguments);
    const QDir directory = QFileInfo(m_scenarioFile).dir();
    QVERIFY(write(directory.filePath("good"), scenarioOf({})));
    QVERIFY(write(directory.filePath("bad"), "{}"));
    m_sandbox->setWorkingDirectory(directory.path());
    start(arguments);
    finish();
    const QByteArray mistake("bad:1:1: \"applications\" is missing\n");
    QCOMPARE(m_sandbox->readAllStandardError(), mistake + mistake);
    QCOMPARE(m_sandbox->readAllStandardOutput(), QByteArray("good: valid\n"));
    QCOMPARE(m_sandbox->exitCode(), 125);
}

void SandboxTest::theCommandGetsItsWordsItsChannelsAndItsEnvironment()
{
    start({"--", "sh", "-c",
           "printf '%s|' \"$@\"; echo $QT_NO_GLIB; cat; echo to the other channel >&2", "sh",
           "--scenario", "--", "a b", "", "ü"});
    m_sandbox->write("through the standard input\n");
    m_sandbox->closeWriteChannel();
    finish();
    QCOMPARE(m_sandbox->readAllStandardOutput(),
             QByteArray("--scenario|--|a b||ü|1\nthrough the standard input\n"));
    QCOMPARE(m_sandbox->readAllStandardError(), QByteArray("to the other channel\n"));
}

void SandboxTest::theCommandFindsTheServiceRunning()
{
    start({"--", "sh", "-c",
           "gdbus call --address \"$DBUS_SYSTEM_BUS_ADDRESS\" --dest org.freedesktop.DBus"
           " --object-path /org/freedesktop/DBus --method org.freedesktop.DBus.NameHasOwner"
           " org.brenvik.ManagedConfiguration"});
    finish();
    QCOMPARE(m_sandbox->readAllStandardOutput(), QByteArray("(true,)\n"));
    QCOMPARE(m_sandbox->exitCode(), 0);
}

void SandboxTest::theBusIsOutOfOthersReach()
{
    start({"--", "sh", "-c", "echo \"$DBUS_SYSTEM_BUS_ADDRESS\"; cat"});
    const QByteArray address = readLine();
    const QByteArray before = "unix:path=";
    QVERIFY2(address.startsWith(before + m_temporaryFiles.toUtf8()), address.constData());
    const QByteArray socket = address.mid(before.size());
    struct stat status = {};
    QCOMPARE(lstat(socket.constData(), &status), 0);
    QVERIFY(S_ISSOCK(status.st_mode));
    QCOMPARE(lstat(socket.left(socket.lastIndexOf('/')).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777, 0700u);
    QCOMPARE(status.st_uid, geteuid());
    m_sandbox->closeWriteChannel();
    finish();
}

void SandboxTest::anotherShellCanUseThePrintedLine()
{
    QVERIFY(write(m_scenarioFile, scenarioOf({applicationOf("viewer", R"({"theme": "dark"})")})));
    start({"--scenario", m_scenarioFile});
    QProcess shell;
    shell.start("sh",
                {"-c",
                 "eval \"$1\"; gdbus call --system --dest org.brenvik.ManagedConfiguration"
                 " --object-path /acme_2eviewer --method"
                 " org.brenvik.ManagedConfiguration.Application1.GetConfiguration",
                 "sh", QString::fromUtf8(readLine())});
    QVERIFY(shell.waitForFinished(timeoutMs));
    QCOMPARE(shell.readAllStandardError(), QByteArray());
    QCOMPARE(shell.readAllStandardOutput(), QByteArray("({'theme': <'dark'>},)\n"));
}

void SandboxTest::theTemporaryDirectoryMayHaveAnyName()
{
    // These characters have a meaning in the address of a bus.
    const QString directory = m_directory->filePath("blank comma, ; = % é ~");
    QVERIFY(QDir().mkdir(directory));
    QProcessEnvironment environment = m_sandbox->processEnvironment();
    environment.insert("TMPDIR", directory);
    m_sandbox->setProcessEnvironment(environment);
    serve(scenarioOf({applicationOf("viewer", R"({"a": 1})")}));
    QCOMPARE(m_client->read(), QString("({'a': <1>},)"));
}

void SandboxTest::everyKindOfValueIsServed()
{
    serve(scenarioOf({applicationOf("viewer", R"({"": "", "true": true, "int": -7, "text": "ü",
        "texts": ["a", ""], "ints": [1, -2], "bools": [true, false], "none": [],
        "nested": {"empty": {}, "inner": {"list": [3]}}})")}));
    QCOMPARE(m_client->read(),
             QString::fromUtf8("({'': <''>, 'bools': <[true, false]>, 'int': <-7>, "
                               "'ints': <[1, -2]>, 'nested': <{'empty': <@a{sv} {}>, "
                               "'inner': <{'list': <[3]>}>}>, 'none': <@as []>, "
                               "'text': <'ü'>, 'texts': <['a', '']>, 'true': <true>},)"));
}

void SandboxTest::anUnknownApplicationIsRefused_data()
{
    QTest::addColumn<QByteArray>("scenario");
    QTest::addColumn<QString>("known");

    QTest::newRow("none known") << scenarioOf({}) << ", nor at any other path";
    QTest::newRow("one known") << scenarioOf({applicationOf("viewer", "{}")})
                               << ", only at \"/acme_2eviewer\"";
    QTest::newRow("two known") << scenarioOf(
        {applicationOf("viewer", "{}"), applicationOf("editor", "{}")})
                               << ", only at \"/acme_2eeditor\", \"/acme_2eviewer\"";
}

void SandboxTest::anUnknownApplicationIsRefused()
{
    QFETCH(QByteArray, scenario);
    QFETCH(QString, known);
    serve(scenario);
    const QString refusal = "org.brenvik.ManagedConfiguration.Error.NotConfigurable: "
                            "no application is kept at \"/acme_2eplayer\""
        + known;
    QCOMPARE(m_client->read(playerPath), refusal);
    QCOMPARE(m_client->call(playerPath, "ChangeConfiguration", "({'a': <1>},)"), refusal);
}

void SandboxTest::aMalformedCallIsRefused_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("arguments");
    QTest::addColumn<QString>("refusal");

    const QString error = "org.freedesktop.DBus.Error.";
    QTest::newRow("no argument") << QByteArray("ChangeConfiguration") << QByteArray("()")
                                 << error
            + "InvalidArgs: expected arguments of the type \"(a{sv})\", found \"()\"";
    QTest::newRow("other dictionary")
        << QByteArray("ChangeConfiguration") << QByteArray("({'a': 1},)")
        << error + "InvalidArgs: expected arguments of the type \"(a{sv})\", found \"(a{si})\"";
    QTest::newRow("two arguments")
        << QByteArray("ChangeConfiguration") << QByteArray("({'a': <1>}, 'x')")
        << error + "InvalidArgs: expected arguments of the type \"(a{sv})\", found \"(a{sv}s)\"";
    QTest::newRow("unknown method")
        << QByteArray("ResetConfiguration") << QByteArray("()")
        << error + "UnknownMethod: there is no method \"ResetConfiguration\"";
}

void SandboxTest::aMalformedCallIsRefused()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, arguments);
    QFETCH(QString, refusal);
    serve(scenarioOf({applicationOf("viewer", R"({"a": 1})")}));
    QCOMPARE(m_client->call(viewerPath, method.constData(), arguments.constData()), refusal);
    QCOMPARE(m_client->read(), QString("({'a': <1>},)"));
}

void SandboxTest::aChangeIsMergedByTopLevelKey()
{
    serve(scenarioOf(
        {applicationOf("viewer", R"({"a": 1, "b": [], "n": {"x": 1, "y": 2}, "z": true})"),
         applicationOf("editor", R"({"a": 1})")}));
    QCOMPARE(m_client->change("({'n': <{'x': <int32 5>}>, 'b': <['new']>, 'a': <7>},)"),
             QString("()"));
    QCOMPARE(m_client->read(),
             QString("({'a': <7>, 'b': <['new']>, 'n': <{'x': <5>}>, 'z': <true>},)"));
    QCOMPARE(m_client->read(editorPath), QString("({'a': <1>},)"));
    QTRY_COMPARE(m_client->signalsSeen(), QStringList(changed(viewerPath)));
}

void SandboxTest::aChangeThatAltersNothingIsNotAnnounced()
{
    serve(scenarioOf({applicationOf("viewer", R"({"a": 1, "n": {"x": 1, "y": 2}})")}));
    QCOMPARE(m_client->change("(@a{sv} {},)"), QString("()"));
    QCOMPARE(m_client->change("({'n': <{'y': <2>, 'x': <1>}>, 'a': <1>},)"), QString("()"));
    QCOMPARE(m_client->change("({'a': <2>},)"), QString("()"));
    QCOMPARE(m_client->read(), QString("({'a': <2>, 'n': <{'x': <1>, 'y': <2>}>},)"));
    QTRY_VERIFY(!m_client->signalsSeen().isEmpty());
    QCOMPARE(m_client->signalsSeen(), QStringList(changed(viewerPath)));
}

void SandboxTest::aLockedSettingStaysAndWithItAllOthers_data()
{
    QTest::addColumn<QByteArray>("change");
    QTest::addColumn<QString>("named");

    QTest::newRow("nested value gone") << QByteArray("({'n': <@a{sv} {}>, 'a': <2>},)") << "n/x";
    QTest::newRow("no longer nested") << QByteArray("({'n': <1>, 'a': <2>},)") << "n/x";
    QTest::newRow("nested value") << QByteArray("({'a': <2>, 'n': <{'x': <2>}>},)") << "n/x";
    QTest::newRow("type") << QByteArray("({'a': <2>, 'theme': <1>},)") << "theme";
    QTest::newRow("new value") << QByteArray("({'a': <2>, 'later': <1>},)") << "later";
    QTest::newRow("whole configuration")
        << QByteArray("({'a': <2>, 'whole': <{'p': <2>}>},)") << "whole";
    QTest::newRow("value") << QByteArray("({'theme': <'dark'>, 'a': <2>},)") << "theme";
    QTest::newRow("two") << QByteArray("({'n': <2>, 'theme': <'dark'>},)") << "n/x";
}

void SandboxTest::aLockedSettingStaysAndWithItAllOthers()
{
    QFETCH(QByteArray, change);
    QFETCH(QString, named);
    serve(scenarioOf({applicationOf(
        "viewer",
        R"({"a": 1, "fence": 0, "n": {"x": 1, "y": 2}, "theme": "light", "whole": {"p": 1}})",
        R"(["n/x", "theme", "later", "whole"])")}));
    QCOMPARE(
        m_client->change(change.constData()),
        QString("org.brenvik.ManagedConfiguration.Error.Forbidden: \"%1\" is locked").arg(named));
    QCOMPARE(m_client->read(),
             QString("({'a': <1>, 'fence': <0>, 'n': <{'x': <1>, 'y': <2>}>, "
                     "'theme': <'light'>, 'whole': <{'p': <1>}>},)"));
    QCOMPARE(m_client->change("({'fence': <1>},)"), QString("()"));
    QTRY_VERIFY(!m_client->signalsSeen().isEmpty());
    QCOMPARE(m_client->signalsSeen(), QStringList(changed(viewerPath)));
}

void SandboxTest::aLockedSettingMayBeSentAsItIs()
{
    serve(scenarioOf({applicationOf("viewer", R"({"n": {"x": 1, "y": 2}, "theme": "light"})",
                                    R"(["n/x", "theme"])")}));
    QCOMPARE(m_client->change("({'n': <{'y': <3>, 'x': <1>}>, 'theme': <'light'>},)"),
             QString("()"));
    QCOMPARE(m_client->read(), QString("({'n': <{'x': <1>, 'y': <3>}>, 'theme': <'light'>},)"));
}

void SandboxTest::everyEventIsPrintedAndRecorded()
{
    const QString logFile = m_directory->filePath("log");
    serve(scenarioOf({applicationOf("viewer", R"({"theme": "light", "zoom": 1})", R"(["theme"])")}),
          {"--log", logFile});
    m_client->read();
    m_client->change("({'zoom': <2>},)");
    m_client->change("({'zoom': <2>},)");
    m_client->change("({'theme': <'dark'>, 'zoom': <1>},)");
    m_client->call(viewerPath, "Reset");
    m_client->read(playerPath);
    QVERIFY(write(m_scenarioFile, "{}"));
    m_sandbox->setReadChannel(QProcess::StandardError);
    const QByteArray process = "(pid " + QByteArray::number(QCoreApplication::applicationPid());
    const QByteArray get = "acme/viewer " + process + "): GetConfiguration: ";
    const QByteArray change = "acme/viewer " + process + "): ChangeConfiguration ";
    const QByteArrayList expected {
        get + "answered, 2 entries",
        change + R"({"zoom":2}: accepted)",
        "acme/viewer: ConfigurationChanged",
        change + R"({"zoom":2}: accepted, no difference)",
        change + R"({"theme":"dark","zoom":1}: refused, Forbidden: "theme" is locked)",
        "acme/viewer " + process
            + "): Reset: refused, org.freedesktop.DBus.Error.UnknownMethod: "
              "there is no method \"Reset\"",
        "/acme_2eplayer " + process
            + "): GetConfiguration: refused, NotConfigurable: no application is kept at "
              "\"/acme_2eplayer\", only at \"/acme_2eviewer\"",
        m_scenarioFile.toUtf8() + ":1:1: \"applications\" is missing",
    };
    for (const QByteArray &line : expected)
        QCOMPARE(readLine(), line);
    QCOMPARE(eventLines(), QByteArrayList());
    const QVector<QJsonObject> records = readRecords(logFile);
    QCOMPARE(records.size(), expected.size());
    double time = 0;
    for (int index = 0; index < records.size(); ++index) {
        QCOMPARE(records.at(index).value("text").toString().toUtf8(), expected.at(index));
        QVERIFY(records.at(index).value("time").toDouble(-1) >= time);
        time = records.at(index).value("time").toDouble();
    }
}

void SandboxTest::aRecordHoldsAllThatIsKnown()
{
    const QString logFile = m_directory->filePath("log");
    serve(scenarioOf({applicationOf("viewer", R"({"theme": "light", "zoom": 1})", R"(["theme"])")}),
          {"--log", logFile});
    m_client->read();
    m_client->change("({'theme': <'dark'>, 'zoom': <1>},)");
    m_client->change("({'zoom': <2>},)");
    m_client->read(playerPath);
    QVERIFY(write(m_scenarioFile, "{}"));
    m_sandbox->setReadChannel(QProcess::StandardError);
    QVERIFY(waitForLine("missing"));
    QVector<QJsonObject> records = readRecords(logFile);
    for (QJsonObject &record : records) {
        record.remove("time");
        record.remove("text");
    }
    QJsonObject who {{"event", "call"},
                     {"application", "acme/viewer"},
                     {"path", viewerPath},
                     {"pid", QCoreApplication::applicationPid()},
                     {"user", static_cast<qint64>(geteuid())}};
    const auto record = [&who](const QJsonObject &members) {
        QJsonObject whole = who;
        for (auto member = members.begin(); member != members.end(); ++member)
            whole.insert(member.key(), member.value());
        return whole;
    };
    QVector<QJsonObject> expected {
        record({{"method", "GetConfiguration"}, {"outcome", "answered"}}),
        record({{"method", "ChangeConfiguration"},
                {"change", QJsonObject {{"theme", "dark"}, {"zoom", 1}}},
                {"outcome", "refused"},
                {"error", "Forbidden"},
                {"message", "\"theme\" is locked"}}),
        record({{"method", "ChangeConfiguration"},
                {"change", QJsonObject {{"zoom", 2}}},
                {"outcome", "accepted"}}),
        {{"event", "announcement"}, {"application", "acme/viewer"}, {"path", viewerPath}},
    };
    who.remove("application");
    expected.append(record({{"path", playerPath},
                            {"method", "GetConfiguration"},
                            {"outcome", "refused"},
                            {"error", "NotConfigurable"},
                            {"message",
                             "no application is kept at \"/acme_2eplayer\", only at "
                             "\"/acme_2eviewer\""}}));
    expected.append({{"event", "scenario"}, {"file", m_scenarioFile}});
    QCOMPARE(records.size(), expected.size());
    for (int index = 0; index < records.size(); ++index)
        QCOMPARE(QJsonDocument(records.at(index)).toJson(),
                 QJsonDocument(expected.at(index)).toJson());
}

void SandboxTest::theExitStatusTellsWhetherExpectedCallsCame_data()
{
    QTest::addColumn<QByteArray>("calls");
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");

    const QString get = "gdbus call --system --dest org.brenvik.ManagedConfiguration --object-path"
                        " /acme_2eviewer --method"
                        " org.brenvik.ManagedConfiguration.Application1.GetConfiguration";
    const QByteArray one = R"({"calls": [{"method": "GetConfiguration"}]})";
    const QString missing = ":1:12: the expected call did not come\n";
    QTest::newRow("no call") << one << "true" << 124 << missing;
    QTest::newRow("no call, and the command fails") << one << "exit 3" << 3 << missing;
    QTest::newRow("too late") << QByteArray(
        R"({"calls": [{"method": "GetConfiguration", "within": 0}]})")
                              << "sleep 0.1; " + get << 124
                              << ":1:12: the expected call came after ";
    QTest::newRow("a call, and the command fails") << one << get + "; exit 3" << 3 << "";
    QTest::newRow("a call") << one << get << 0 << "";
    QTest::newRow("nothing expected") << QByteArray(R"({"calls": []})") << "true" << 0 << "";
}

void SandboxTest::theExitStatusTellsWhetherExpectedCallsCame()
{
    QFETCH(QByteArray, calls);
    QFETCH(QString, script);
    QFETCH(QString, message);
    const QString callsFile = m_directory->filePath("calls.json");
    QVERIFY(write(callsFile, calls));
    QVERIFY(write(m_scenarioFile, scenarioOf({applicationOf("viewer", R"({"a": 1})")})));
    start({"--scenario", m_scenarioFile, "--expect", callsFile, "--", "sh", "-c", script});
    finish();
    const QString errors = QString::fromUtf8(m_sandbox->readAllStandardError());
    QVERIFY2(message.isEmpty() ? !errors.contains("expected")
                               : errors.contains(callsFile + message),
             qPrintable(errors));
    QTEST(m_sandbox->exitCode(), "status");
}

void SandboxTest::aSandboxWithoutACommandTellsAtItsEndWhatHasNotCome()
{
    const QString callsFile = m_directory->filePath("calls.json");
    QVERIFY(write(callsFile, R"({"calls": [{"method": "GetConfiguration"}]})"));
    serve(scenarioOf({applicationOf("viewer", R"({"a": 1})")}), {"--expect", callsFile});
    QCOMPARE(eventLines(),
             QByteArrayList {callsFile.toUtf8() + ":1:12: the expected call did not come"});
    QCOMPARE(m_sandbox->exitCode(), 124);
}

void SandboxTest::aNewScenarioIsPushedToThoseWhomItConcerns_data()
{
    QTest::addColumn<bool>("isMoved");

    QTest::newRow("moved there") << true;
    QTest::newRow("written in place") << false;
}

void SandboxTest::aNewScenarioIsPushedToThoseWhomItConcerns()
{
    QFETCH(bool, isMoved);
    const auto replace = [this, isMoved](const QByteArray &text) {
        if (!isMoved)
            return write(m_scenarioFile, text);
        const QString other = m_scenarioFile + ".new";
        return write(other, text)
            && std::rename(other.toUtf8().constData(), m_scenarioFile.toUtf8().constData()) == 0;
    };
    serve(scenarioOf({applicationOf("viewer", R"({"a": 1})"),
                      applicationOf("editor", R"({"a": 1})"), applicationOf("gone", "{}")}));
    QVERIFY(replace(scenarioOf({applicationOf("editor", R"({"a": 1})", R"(["a"])"),
                                applicationOf("viewer", R"({"a": 2})"),
                                applicationOf("player", R"({"a": 3})")})));
    QStringList expected {changed("/acme_2egone"), changed(viewerPath), changed(playerPath)};
    QTRY_COMPARE(m_client->signalsSeen(), expected);
    QCOMPARE(m_client->read(), QString("({'a': <2>},)"));
    QCOMPARE(m_client->read(editorPath), QString("({'a': <1>},)"));
    QCOMPARE(m_client->read(playerPath), QString("({'a': <3>},)"));

    QVERIFY(replace(
        scenarioOf({applicationOf("viewer", R"({"a": 2})"), applicationOf("editor", R"({"a": 9})"),
                    applicationOf("player", R"({"a": 3})")})));
    expected.append(changed(editorPath));
    QTRY_VERIFY(m_client->signalsSeen().size() >= expected.size());
    QCOMPARE(m_client->signalsSeen(), expected);
    QCOMPARE(m_client->read(editorPath), QString("({'a': <9>},)"));
}

void SandboxTest::aNewScenarioReplacesWhatTheApplicationChanged()
{
    serve(scenarioOf(
        {applicationOf("viewer", R"({"a": 1, "b": false})"), applicationOf("editor", "{}")}));
    QCOMPARE(m_client->change("({'a': <2>, 'b': <true>},)"), QString("()"));
    QTRY_COMPARE(m_client->signalsSeen(), QStringList(changed(viewerPath)));
    QVERIFY(write(m_scenarioFile,
                  scenarioOf({applicationOf("viewer", R"({"a": 2, "b": true})"),
                              applicationOf("editor", R"({"x": 1})")})));
    QTRY_COMPARE(m_client->signalsSeen(), QStringList({changed(viewerPath), changed(editorPath)}));
    QVERIFY(write(m_scenarioFile,
                  scenarioOf({applicationOf("viewer", R"({"a": 1})"),
                              applicationOf("editor", R"({"x": 1})")})));
    QTRY_COMPARE(m_client->signalsSeen(),
                 QStringList({changed(viewerPath), changed(editorPath), changed(viewerPath)}));
    QCOMPARE(m_client->read(), QString("({'a': <1>},)"));
}

void SandboxTest::locksComeAndGoWithTheFile()
{
    const QByteArray configuration = R"({"a": 1})";
    serve(scenarioOf({applicationOf("viewer", configuration, R"(["a"])")}));
    const QString refusal = "org.brenvik.ManagedConfiguration.Error.Forbidden: \"a\" is locked";
    QCOMPARE(m_client->change("({'a': <2>},)"), refusal);
    QVERIFY(write(m_scenarioFile, scenarioOf({applicationOf("viewer", configuration)})));
    QTRY_COMPARE(m_client->change("({'a': <2>},)"), QString("()"));
}

void SandboxTest::aBadScenarioChangesNothing()
{
    serve(scenarioOf({applicationOf("viewer", R"({"a": 1, "b": 1})")}));
    QCOMPARE(m_client->change("({'b': <2>},)"), QString("()"));
    QTRY_COMPARE(m_client->signalsSeen().size(), 1);
    m_sandbox->setReadChannel(QProcess::StandardError);
    QVERIFY(readLine().endsWith(": accepted"));
    QCOMPARE(readLine(), QByteArray("acme/viewer: ConfigurationChanged"));

    const QByteArray name = m_scenarioFile.toUtf8();
    QVERIFY(write(m_scenarioFile, "{\"applications\": [\n}"));
    QCOMPARE(readLine(), name + ":2:1: expected a value");
    QVERIFY(
        write(m_scenarioFile, scenarioOf({applicationOf("viewer", "\n{\"a\": 2, \"c\": null}")})));
    QCOMPARE(readLine(), name + ":2:15: expected a boolean, an integer or a string, found null");
    QCOMPARE(m_client->read(), QString("({'a': <1>, 'b': <2>},)"));

    QVERIFY(write(m_scenarioFile, scenarioOf({applicationOf("viewer", R"({"a": 3})")})));
    QTRY_VERIFY(m_client->signalsSeen().size() > 1);
    QCOMPARE(m_client->signalsSeen(), QStringList({changed(viewerPath), changed(viewerPath)}));
    QCOMPARE(m_client->read(), QString("({'a': <3>},)"));
}

void SandboxTest::aFileThatVanishesAndReturnsIsFollowed()
{
    serve(scenarioOf({applicationOf("viewer", R"({"a": 1})")}));
    QVERIFY(QFile::rename(m_scenarioFile, m_scenarioFile + '~'));
    QCOMPARE(m_client->read(), QString("({'a': <1>},)"));
    QVERIFY(write(m_scenarioFile, scenarioOf({applicationOf("viewer", R"({"a": 2})")})));
    QTRY_COMPARE(m_client->signalsSeen(), QStringList(changed(viewerPath)));
    QCOMPARE(m_client->read(), QString("({'a': <2>},)"));
    QVERIFY(QFile::remove(m_scenarioFile));
    QVERIFY(write(m_scenarioFile, scenarioOf({applicationOf("viewer", R"({"a": 3})")})));
    QTRY_COMPARE(m_client->signalsSeen(), QStringList({changed(viewerPath), changed(viewerPath)}));
    const QByteArray read = "acme/viewer (pid "
        + QByteArray::number(QCoreApplication::applicationPid())
        + "): GetConfiguration: answered, 1 entry";
    const QByteArray reloaded = m_scenarioFile.toUtf8() + ": reloaded";
    const QByteArray announced = "acme/viewer: ConfigurationChanged";
    QCOMPARE(eventLines(), QByteArrayList({read, reloaded, announced, read, reloaded, announced}));
}

QTEST_GUILESS_MAIN(SandboxTest)

#include "sandbox_test.moc"
