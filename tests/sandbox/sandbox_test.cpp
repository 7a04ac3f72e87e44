// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_connection.h"
#include "program.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <csignal>
#include <gio/gio.h>
#include <initializer_list>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Tarnvel::Testing;

namespace {

constexpr int timeoutMs = 120000;

const QString viewerPath = QStringLiteral("/acme_2eviewer");
const QString editorPath = QStringLiteral("/acme_2eeditor");
const QString playerPath = QStringLiteral("/acme_2eplayer");
const QString forbidden = QStringLiteral("org.brenvik.ManagedConfiguration.Error.Forbidden: ");
const QString getting = QStringLiteral(
    "gdbus call --address \"$DBUS_SYSTEM_BUS_ADDRESS\" --dest org.brenvik.ManagedConfiguration"
    " --object-path /acme_2eviewer"
    " --method org.brenvik.ManagedConfiguration.Application1.GetConfiguration");

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

QByteArray viewerWith(const QByteArray &configuration, const QByteArray &locked = "[]")
{
    return scenarioOf({applicationOf("viewer", configuration, locked)});
}

bool write(const QString &fileName, const QByteArray &text)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

QByteArray read(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString changed(const QString &path)
{
    return path + " ConfigurationChanged ()";
}

// A program on the bus that does not use the library.
class Client
{
public:
    ~Client()
    {
        if (!m_connection)
            return;
        g_dbus_connection_signal_unsubscribe(m_connection, m_subscription);
        closeConnection(m_connection);
        g_object_unref(m_connection);
    }

    bool open(const QString &address)
    {
        m_connection = openConnection(address, nullptr);
        if (!m_connection)
            return false;
        m_subscription = g_dbus_connection_signal_subscribe(
            m_connection, "org.brenvik.ManagedConfiguration",
            "org.brenvik.ManagedConfiguration.Application1", nullptr, nullptr, nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, receive, &m_signals, nullptr);
        // The bus handles the messages of a connection in their order, the subscription included.
        g_autoptr(GVariant) reply = callBus(m_connection, "GetId", nullptr, "(s)", nullptr);
        return reply;
    }

    // The reply in GVariant's text form, or the error's name and message.
    QString call(const QString &path, const char *method, const char *arguments = "()",
                 const char *interface = "org.brenvik.ManagedConfiguration.Application1")
    {
        g_autoptr(GError) error = nullptr;
        g_autoptr(GVariant) values = g_dbus_connection_call_sync(
            m_connection, "org.brenvik.ManagedConfiguration", path.toUtf8().constData(), interface,
            method, g_variant_new_parsed(arguments), nullptr, G_DBUS_CALL_FLAGS_NONE, timeoutMs,
            nullptr, &error);
        if (values) {
            g_autofree gchar *text = g_variant_print(values, TRUE);
            return QString::fromUtf8(text);
        }
        g_autofree gchar *name = g_dbus_error_get_remote_error(error);
        g_dbus_error_strip_remote_error(error);
        return QString("%1: %2").arg(QString::fromUtf8(name), QString::fromUtf8(error->message));
    }

    // What the object at \a path has, apart from the interfaces that all objects have.
    QStringList contentsOf(const QString &path)
    {
        const QString text = call(path, "Introspect", "()", "org.freedesktop.DBus.Introspectable");
        g_autoptr(GVariant) reply = g_variant_new_parsed(text.toUtf8().constData());
        const gchar *xml = nullptr;
        g_variant_get(reply, "(&s)", &xml);
        const std::shared_ptr<GDBusNodeInfo> node(g_dbus_node_info_new_for_xml(xml, nullptr),
                                                  g_dbus_node_info_unref);
        QStringList contents;
        for (GDBusInterfaceInfo **interface = node->interfaces; *interface; ++interface) {
            if (!g_str_has_prefix((*interface)->name, "org.freedesktop.DBus."))
                contents.append((*interface)->name);
        }
        for (GDBusNodeInfo **child = node->nodes; *child; ++child)
            contents.append((*child)->path);
        contents.sort();
        return contents;
    }

    QString read(const QString &path = viewerPath)
    {
        return call(path, "GetConfiguration");
    }

    QString change(const char *arguments, const QString &path = viewerPath)
    {
        return call(path, "ChangeConfiguration", arguments);
    }

    // The signals so far, at least \a count of them: "path member arguments".
    QStringList waitForSignals(int count)
    {
        if (!QTest::qWaitFor([this, count] { return m_signals.size() >= count; }, timeoutMs))
            m_signals.append("timeout");
        return m_signals;
    }

private:
    static void receive(GDBusConnection *, const gchar *, const gchar *path, const gchar *,
                        const gchar *member, GVariant *arguments, gpointer list)
    {
        g_autofree gchar *text = g_variant_print(arguments, TRUE);
        static_cast<QStringList *>(list)->append(
            QString("%1 %2 %3")
                .arg(QString::fromUtf8(path), QString::fromUtf8(member), QString::fromUtf8(text)));
    }

    GDBusConnection *m_connection = nullptr;
    guint m_subscription = 0;
    QStringList m_signals;
};

} // namespace

class SandboxTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void theExitStatusIsThatOfTheCommand();
    void aFailureIsReported_data();
    void aFailureIsReported();
    void anAddressThatCannotBePrintedIsAFailure();
    void helpAndVersionAreShown();
    void aBrokenPipeFailsTheWriteAlone();
    void onlyFilesAreChecked();
    void standardInputIsAFile();
    void slipsFailAStrictCheck();
    void diagnosticsArePrintedAsJson();
    void theLogOverwritesNoFileThatIsRead();
    void aLogThatCannotBeWrittenIsReported();
    void closedStreamsDoNoHarm();
    void theCommandGetsItsArgumentsStreamsAndEnvironment();
    void anotherShellOfTheUserAloneReachesTheBus();
    void aMalformedCallIsRefused();
    void aChangeIsMergedByTopLevelKey();
    void aLockedSettingRefusesTheWholeChange();
    void everyEventIsPrintedAndRecorded();
    void theExitStatusTellsWhetherExpectedCallsCame_data();
    void theExitStatusTellsWhetherExpectedCallsCame();
    void aNewScenarioIsAnnouncedWhereItDiffers();
    void theObjectsOfTheScenarioAreDescribed();
    void aScenarioThatCannotBeReadChangesNothing();

private:
    bool serve(const QByteArray &scenario, const QStringList &options = {});

    QScopedPointer<QTemporaryDir> m_directory;
    QScopedPointer<Program> m_sandbox;
    QScopedPointer<Client> m_client;
    QString m_scenarioFile;
};

void SandboxTest::init()
{
    m_client.reset(new Client);
    m_sandbox.reset(new Program("managed-configuration-sandbox"));
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    m_scenarioFile = m_directory->filePath("scenario.json");
    m_sandbox->setVariable("TMPDIR", m_directory->path());
    m_sandbox->setVariable("QT_NO_GLIB", "1");
}

// Starts the sandbox without a command and connects the client to its bus.
bool SandboxTest::serve(const QByteArray &scenario, const QStringList &options)
{
    if (!write(m_scenarioFile, scenario))
        return false;
    m_sandbox->start(QStringList {"--scenario", m_scenarioFile} + options);
    const QString line = m_sandbox->readLine();
    const QString before = "export DBUS_SYSTEM_BUS_ADDRESS='";
    return line.startsWith(before) && line.endsWith('\'')
        && m_client->open(line.mid(before.size()).chopped(1));
}

void SandboxTest::theExitStatusIsThatOfTheCommand()
{
    QCOMPARE(m_sandbox->run({"--", "sh", "-c", "kill -KILL $$"}).status, 128 + SIGKILL);
    QCOMPARE(m_sandbox->run({"--", "sh", "-c", "exit 255"}).status, 255);
    const Outcome outcome = m_sandbox->run({"--", "true"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.errors, QString());
}

void SandboxTest::aFailureIsReported_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");

    QTest::newRow("unknown option")
        << QStringList {"--scnario", "x"} << 125 << "Unknown option 'scnario'.";
    QTest::newRow("no file") << QStringList {"--log"} << 125 << "Missing value after '--log'.";
    for (const char *option : {"--scenario", "--log", "--expect", "--check"}) {
        QTest::addRow("%s without a name", option)
            << QStringList {option, ""} << 125
            << QString("\"%1\" needs the name of a file").arg(option);
        QTest::addRow("%s without a directory", option)
            << QStringList {option, "/nowhere/file", "--", "true"} << 125
            << "/nowhere/file: No such file or directory";
    }
    QTest::newRow("directory") << QStringList {"--scenario", "/"} << 125 << "/: not a regular file";
    QTest::newRow("device") << QStringList {"--expect", "/dev/zero"} << 125
                            << "/dev/zero: not a regular file";
    QTest::newRow("standard input twice") << QStringList {"--scenario", "-", "--expect", "-"} << 125
                                          << "only one file can be standard input";
    QTest::newRow("no command") << QStringList {"--log", "/nowhere/log", "--"} << 125
                                << "the command after \"--\" is missing";
    for (const QStringList &options : {QStringList {"--strict"}, {"--format", "json"}}) {
        QTest::addRow("%s without a check", qPrintable(options.first()))
            << options << 125 << "\"--strict\" and \"--format\" need \"--check\"";
    }
    QTest::newRow("unknown format") << QStringList {"--check", "x", "--format", "xml"} << 125
                                    << "\"--format\" is text or json, not \"xml\"";
    QTest::newRow("missing command")
        << QStringList {"--", "/nowhere/command"} << 127
        << "Failed to execute child process “/nowhere/command” (No such file or directory)";
    QTest::newRow("command that is in the current directory, not in PATH")
        << QStringList {"--", "sandbox_test"} << 127
        << "Failed to execute child process “sandbox_test” (No such file or directory)";
    QTest::newRow("command that is not executable")
        << QStringList {"--", "/etc/passwd"} << 126
        << "Failed to execute child process “/etc/passwd” (Permission denied)";
}

void SandboxTest::aFailureIsReported()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const Outcome outcome = m_sandbox->run(arguments);
    QCOMPARE(outcome.errors, message + '\n');
    QCOMPARE(outcome.output, QString());
    QTEST(outcome.status, "status");
}

void SandboxTest::anAddressThatCannotBePrintedIsAFailure()
{
    for (const auto &[script, reason] : std::initializer_list<std::pair<QString, QString>> {
             {"exec \"$0\" >&-", "Bad file descriptor"},
             {"exec \"$0\" >/dev/full", "No space left on device"},
             {"exec 3> >(:); wait $!; exec \"$0\" >&3", "Broken pipe"}}) {
        const Outcome outcome = Program("/bin/bash").run({"-c", script, SANDBOX});
        QCOMPARE(outcome.errors, "cannot write to standard output: " + reason + '\n');
        QCOMPARE(outcome.status, 125);
    }
}

void SandboxTest::helpAndVersionAreShown()
{
    const Outcome help = m_sandbox->run({"--help"});
    QVERIFY2(help.output.contains(" [options] [-- COMMAND ARGS...]\n"), qPrintable(help.output));
    QCOMPARE(help.status, 0);
    const Outcome version = m_sandbox->run({"--version"});
    QCOMPARE(version.output, QString("managed-configuration-sandbox " SANDBOX_VERSION "\n"));
    QCOMPARE(version.status, 0);
}

void SandboxTest::aBrokenPipeFailsTheWriteAlone()
{
    // Bash waits for the end of the reader before anything is written.
    Program shell("/bin/bash");
    const Outcome outcome = shell.run(
        {"-c", "exec 3> >(:); wait $!; exec \"$0\" --list-faults >&3", SANDBOX});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 0);
}

void SandboxTest::onlyFilesAreChecked()
{
    const QString good = m_directory->filePath("good");
    const QString bad = m_directory->filePath("bad");
    QVERIFY(write(good, scenarioOf({})) && write(bad, "{\n}"));
    const QString diagnostic = bad + ":1:1: \"applications\" is missing\n";
    for (const QStringList &arguments : {QStringList {"--check", bad, good, bad},
                                         {"--check", bad, "--check", good, "--check", bad}}) {
        const Outcome outcome = m_sandbox->run(arguments);
        QCOMPARE(outcome.errors, diagnostic + diagnostic);
        QCOMPARE(outcome.output, good + ": valid\n");
        QCOMPARE(outcome.status, 125);
    }
    const QString fifo = m_directory->filePath("fifo");
    QCOMPARE(mkfifo(QFile::encodeName(fifo).constData(), S_IRWXU), 0);
    QCOMPARE(m_sandbox->run({"--check", fifo}).errors, fifo + ": not a regular file\n");
    const Outcome outcome = m_sandbox->run({"--check", good, "--", "echo", "unexpected"});
    QCOMPARE(outcome.output, good + ": valid\n");
    QCOMPARE(outcome.status, 0);
}

void SandboxTest::standardInputIsAFile()
{
    Program shell("/bin/sh");
    const auto run = [&shell](const QString &options, const QByteArray &text) {
        // It begins with the mark that some editors add.
        return shell.run({"-c", "printf '\\357\\273\\277%s' \"$1\" | \"$0\" " + options, SANDBOX,
                          QString::fromUtf8(text), getting});
    };
    const QByteArray scenario = viewerWith(R"({"a": 1})");
    QCOMPARE(run("--check -", scenario).output, QString("-: valid\n"));
    QCOMPARE(run("--check -", "{}").errors, QString("-:1:1: \"applications\" is missing\n"));
    // The command finds standard input at its end.
    QCOMPARE(run("--scenario - -- sh -c \"$2; cat\"", scenario).output, QString("({'a': <1>},)\n"));
    QCOMPARE(run("--expect - -- cat", R"({"calls": [{}]})").errors,
             QString("-:1:12: the expected call did not come: {}\n-:1:12: no call came at all\n"));
    QCOMPARE(shell.run({"-c", "\"$0\" --check - </", SANDBOX}).errors,
             QString("-: Is a directory\n"));
}

void SandboxTest::slipsFailAStrictCheck()
{
    QVERIFY(write(m_scenarioFile, viewerWith("{\"a\": 1}", "[\n\"b\"]")));
    const Outcome lenient = m_sandbox->run({"--check", m_scenarioFile});
    QCOMPARE(lenient.output, m_scenarioFile + ": valid\n");
    QCOMPARE(lenient.status, 0);
    const Outcome strict = m_sandbox->run({"--strict", "--check", m_scenarioFile});
    QCOMPARE(strict.errors,
             m_scenarioFile
                 + ":2:1: \"b\" leads nowhere\n"
                   "  what to do: use a setting of the configuration: a\n");
    QCOMPARE(strict.output, QString());
    QCOMPARE(strict.status, 125);
}

void SandboxTest::diagnosticsArePrintedAsJson()
{
    const QString good = m_directory->filePath("good");
    const QString missing = m_directory->filePath("missing");
    QVERIFY(write(m_scenarioFile, viewerWith("{\"ü\": null}", "[\"b\", 1]")));
    QVERIFY(write(good, scenarioOf({})));
    const QStringList check {"--format", "json", "--strict", "--check", good};
    const Outcome outcome = m_sandbox->run(check + QStringList {m_scenarioFile, missing});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 125);
    const QString expected = QStringLiteral(
        R"({"column":92,"file":"SCENARIO","line":1,)"
        R"("message":"expected a boolean, an integer or a string, found null","strict":false}
{"column":115,"file":"SCENARIO","line":1,"message":"expected a string, found 1","strict":false}
{"file":"MISSING","message":"No such file or directory","strict":false}
)");
    QCOMPARE(
        QString(outcome.output).replace(m_scenarioFile, "SCENARIO").replace(missing, "MISSING"),
        expected);
    QVERIFY(write(m_scenarioFile, viewerWith("{\"a\": 1}", "[\"\\u2028\"]")));
    QCOMPARE(m_sandbox->run(check + QStringList {m_scenarioFile}).output,
             "{\"column\":107,\"file\":\"" + m_scenarioFile
                 + "\",\"hint\":\"use a setting of the configuration: a\",\"line\":1,"
                   "\"message\":\"\\\"\\\\u2028\\\" leads nowhere\",\"strict\":true}\n");
    const Outcome valid = m_sandbox->run(check);
    QCOMPARE(valid.output + valid.errors, QString());
    QCOMPARE(valid.status, 0);
}

void SandboxTest::theLogOverwritesNoFileThatIsRead()
{
    for (const bool isExpectation : {false, true}) {
        const QString option = isExpectation ? "--expect" : "--scenario";
        const QByteArray text = isExpectation ? R"({"calls": []})" : scenarioOf({});
        QVERIFY(write(m_scenarioFile, text));
        const QString log = m_directory->filePath("./scenario.json");
        const Outcome outcome = m_sandbox->run({option, m_scenarioFile, "--log", log});
        QVERIFY2(outcome.errors.contains(": the log would "), qPrintable(outcome.errors));
        QCOMPARE(outcome.status, 125);
        QCOMPARE(read(m_scenarioFile), text);
    }
}

void SandboxTest::aLogThatCannotBeWrittenIsReported()
{
    QVERIFY(write(m_scenarioFile, viewerWith(R"({"a": 1})")));
    const Outcome outcome = m_sandbox->run(
        {"--scenario", m_scenarioFile, "--log", "/dev/full", "--", APPLICATION, "get", "get"});
    const QStringList lines = outcome.errors.split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines.at(0), QString("/dev/full: No space left on device"));
    QVERIFY(lines.at(1).endsWith("GetConfiguration: answered, 1 entry"));
    QVERIFY(lines.at(2).endsWith("GetConfiguration: answered, 1 entry"));
    QCOMPARE(outcome.status, 0);
}

void SandboxTest::closedStreamsDoNoHarm()
{
    QVERIFY(write(m_scenarioFile, viewerWith(R"({"a": 1})")));
    const QString logFile = m_directory->filePath("log.json");
    // The command itself gets streams: what it prints would go into other files, too.
    Program shell("/bin/sh");
    const Outcome outcome = shell.run(
        {"-c", "exec \"$@\" <&- >&- 2>&-", "sh", SANDBOX, "--scenario", m_scenarioFile, "--log",
         logFile, "--", "sh", "-c", "exec \"$0\" get </dev/null >/dev/null 2>&1", APPLICATION});
    QCOMPARE(outcome.status, 0);
    const QByteArray log = read(logFile);
    QCOMPARE(log.count('\n'), 1);
    QCOMPARE(QJsonDocument::fromJson(log).object().value("outcome").toString(),
             QString("answered"));
}

void SandboxTest::theCommandGetsItsArgumentsStreamsAndEnvironment()
{
    Program shell("/bin/sh");
    shell.setVariable("QT_NO_GLIB", "1");
    const Outcome outcome = shell.run(
        {"-c", "echo input | \"$0\" \"$@\" 3>&1", SANDBOX, "--", "sh", "-c",
         "printf '%s|' \"$@\"; echo $QT_NO_GLIB; cat; echo errors >&2; echo 3 >&3", "sh",
         "--scenario", "--", "a b", "", "ü"});
    QCOMPARE(outcome.output, QString("--scenario|--|a b||ü|1\ninput\n3\n"));
    QCOMPARE(outcome.errors, QString("errors\n"));
}

void SandboxTest::anotherShellOfTheUserAloneReachesTheBus()
{
    // These characters have a special meaning in the address of a bus.
    const QString directory = m_directory->filePath("space comma, ; = % é ~");
    QVERIFY(QDir().mkdir(directory));
    QVERIFY(write(m_scenarioFile, viewerWith(R"({"theme": "dark"})")));
    m_sandbox->setVariable("TMPDIR", directory);
    m_sandbox->start({"--scenario", m_scenarioFile});
    Program shell("/bin/sh");
    const Outcome outcome = shell.run({"-c", m_sandbox->readLine() + "; " + getting});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.output, QString("({'theme': <'dark'>},)\n"));

    const QFileInfoList entries = QDir(directory).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(entries.size(), 1);
    const QFile::Permissions forOthers(0x0077);
    QVERIFY(!(entries.first().permissions() & forOthers));
    QCOMPARE(entries.first().ownerId(), geteuid());
}

void SandboxTest::aMalformedCallIsRefused()
{
    QVERIFY(serve(viewerWith(R"({"a": 1})")));
    const QString refusal = "org.freedesktop.DBus.Error.InvalidArgs: "
                            "expected arguments of the type \"(a{sv})\", found ";
    QCOMPARE(m_client->change("()"), refusal + "\"()\"");
    QCOMPARE(m_client->change("({'a': 2},)"), refusal + "\"(a{si})\"");
    QCOMPARE(m_client->change("({'a': <2>}, 'x')"), refusal + "\"(a{sv}s)\"");
    QCOMPARE(m_client->read(), QString("({'a': <1>},)"));
}

void SandboxTest::aChangeIsMergedByTopLevelKey()
{
    QVERIFY(serve(scenarioOf(
        {applicationOf("viewer", R"({"a": 1, "b": [], "n": {"x": 1, "y": {"p": 3, "q": 4}}})"),
         applicationOf("editor", R"({"a": 1})")})));
    // A change without a difference is not announced.
    QCOMPARE(m_client->change("(@a{sv} {},)"), QString("()"));
    QCOMPARE(m_client->change("({'n': <{'y': <{'q': <4>, 'p': <3>}>, 'x': <1>}>, 'a': <1>},)"),
             QString("()"));
    QCOMPARE(m_client->change("({'n': <{'x': <int32 5>}>, 'b': <['new']>, 'a': <7>},)"),
             QString("()"));
    QCOMPARE(m_client->read(), QString("({'a': <7>, 'b': <['new']>, 'n': <{'x': <5>}>},)"));
    QCOMPARE(m_client->read(editorPath), QString("({'a': <1>},)"));
    QCOMPARE(m_client->waitForSignals(1), QStringList(changed(viewerPath)));
}

void SandboxTest::aLockedSettingRefusesTheWholeChange()
{
    QVERIFY(
        serve(viewerWith(R"({"a": 1, "n": {"x": 1, "y": 2}, "theme": "light", "whole": {"p": 1}})",
                         R"(["n/x", "theme", "whole"])")));
    for (const auto &[change, named] : std::initializer_list<std::pair<const char *, QString>> {
             {"({'a': <2>, 'n': <{'x': <2>}>},)", "n/x"},
             {"({'n': <2>, 'theme': <'dark'>},)", "n/x"},
             {"({'theme': <1>, 'a': <2>},)", "theme"},
             {"({'a': <2>, 'whole': <{'p': <2>}>},)", "whole"}})
        QCOMPARE(m_client->change(change), forbidden + '"' + named + "\" is locked");
    const QString configuration = "({'a': <1>, 'n': <{'x': <1>, 'y': <%1>}>, 'theme': <'light'>, "
                                  "'whole': <{'p': <1>}>},)";
    QCOMPARE(m_client->read(), configuration.arg(2));
    // It may be sent as it is.
    QCOMPARE(m_client->change("({'n': <{'y': <3>, 'x': <1>}>, 'theme': <'light'>},)"),
             QString("()"));
    QCOMPARE(m_client->read(), configuration.arg(3));
    QCOMPARE(m_client->waitForSignals(1), QStringList(changed(viewerPath)));
}

void SandboxTest::everyEventIsPrintedAndRecorded()
{
    const QString logFile = m_directory->filePath("log");
    const QByteArray scenario = scenarioOf(
        {applicationOf("viewer", R"({"theme": "light", "zoom": 1})", R"(["theme"])"),
         applicationOf("editor", "{}")});
    QVERIFY(serve(scenario, {"--log", logFile}));
    m_client->read();
    m_client->change("({'zoom': <2>},)");
    m_client->change("({'zoom': <2>},)");
    m_client->change("({'theme': <'dark'>, 'zoom': <1>},)");
    m_client->call(viewerPath, "Reset");
    m_client->read(playerPath);
    QVERIFY(write(m_scenarioFile, "{}"));
    QStringList printed;
    while (printed.size() < 9)
        printed.append(m_sandbox->readErrorLine());
    QVERIFY(write(m_scenarioFile, scenario));
    while (printed.size() < 11)
        printed.append(m_sandbox->readErrorLine());
    m_sandbox->send(SIGTERM);
    QCOMPARE(m_sandbox->finish().errors, QString());

    const QByteArray pid = QByteArray::number(QCoreApplication::applicationPid());
    const QByteArray text = read(PROJECT_DIR "/tests/sandbox/expected_log.json")
                                .replace("SCENARIO", m_scenarioFile.toUtf8())
                                .replace("\"PID\"", pid)
                                .replace("PID", pid)
                                .replace("\"UID\"", QByteArray::number(geteuid()));
    const QJsonArray expected = QJsonDocument::fromJson(text).array();
    QByteArrayList lines = read(logFile).split('\n');
    QCOMPARE(lines.takeLast(), QByteArray());
    QCOMPARE(lines.size(), printed.size());
    double time = 0;
    for (int index = 0; index < lines.size(); ++index) {
        QJsonObject record = QJsonDocument::fromJson(lines.at(index)).object();
        const double recordTime = record.take("time").toDouble(-1);
        QVERIFY(recordTime >= time);
        time = recordTime;
        QCOMPARE(QJsonDocument(record).toJson(),
                 QJsonDocument(expected.at(index).toObject()).toJson());
        QCOMPARE(printed.at(index), record.value("text").toString());
    }
}

void SandboxTest::theExitStatusTellsWhetherExpectedCallsCame_data()
{
    QTest::addColumn<QByteArray>("calls");
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");

    const QByteArray one = R"({"calls": [{"method": "GetConfiguration"}]})";
    const QByteArray soon = R"({"calls": [{"method": "GetConfiguration", "within": 0}]})";
    const QString missing =
        ":1:12: the expected call did not come: {\"method\":\"GetConfiguration\"}";
    QTest::newRow("no command") << one << QString() << 124 << missing;
    QTest::newRow("no call") << one << "true" << 124 << missing;
    QTest::newRow("no call, and the command fails") << one << "exit 3" << 3 << missing;
    QTest::newRow("too late") << soon << getting << 124 << ":1:12: near, after ";
    QTest::newRow("a call") << one << getting << 0 << "";
    const QString changing = QString(getting).replace("GetC", "ChangeC") + " \"{'a': <2>}\"";
    QTest::newRow("another configuration at the end")
        << QByteArray(R"({"finally": {"a": 1}})") << changing << 124
        << ":1:19: in the end, \"a\" of acme/viewer is 2, not 1\n";
    QTest::newRow("the configuration at the end")
        << QByteArray(R"({"finally": {"a": 2}})") << changing << 0 << "";
    QTest::newRow("a call that can never come")
        << QByteArray(R"({"calls": [{"application": "x"}]})") << "true" << 125
        << ":1:28: the scenario has no application \"x\", only: acme/viewer\n";
    QTest::newRow("nothing expected") << QByteArray(R"({"calls": []})") << "true" << 0 << "";
}

void SandboxTest::theExitStatusTellsWhetherExpectedCallsCame()
{
    QFETCH(QByteArray, calls);
    QFETCH(QString, script);
    QFETCH(QString, message);
    const QString callsFile = m_directory->filePath("calls.json");
    QVERIFY(write(callsFile, calls) && write(m_scenarioFile, viewerWith(R"({"a": 1})")));
    QStringList arguments {"--scenario", m_scenarioFile, "--expect", callsFile};
    if (!script.isNull())
        arguments += {"--", "sh", "-c", script};
    m_sandbox->start(arguments);
    if (script.isNull() && m_sandbox->readLine().startsWith("export "))
        m_sandbox->send(SIGTERM);
    const Outcome outcome = m_sandbox->finish();
    QVERIFY2(message.isEmpty() ? !outcome.errors.contains("expected")
                               : outcome.errors.contains(callsFile + message),
             qPrintable(outcome.errors));
    QTEST(outcome.status, "status");
}

void SandboxTest::aNewScenarioIsAnnouncedWhereItDiffers()
{
    const QByteArray viewer = applicationOf("viewer", R"({"a": 1})");
    const QByteArray editor = applicationOf("editor", R"({"a": 1})");
    const QByteArray player = applicationOf("player", R"({"a": 3})");
    QVERIFY(serve(scenarioOf({viewer, editor, applicationOf("gone", "{}")})));
    QCOMPARE(m_client->change("({'a': <2>},)"), QString("()"));
    QStringList expected {changed(viewerPath)};
    QCOMPARE(m_client->waitForSignals(1), expected);
    // It is compared with the changed configuration, not with the previous scenario.
    QVERIFY(write(m_scenarioFile,
                  scenarioOf({applicationOf("editor", R"({"a": 1})", R"(["a"])"),
                              applicationOf("viewer", R"({"a": 2})"), player})));
    expected += {changed("/acme_2egone"), changed(playerPath)};
    QCOMPARE(m_client->waitForSignals(3), expected);
    QCOMPARE(m_client->read(playerPath), QString("({'a': <3>},)"));
    QCOMPARE(m_client->change("({'a': <2>},)", editorPath), forbidden + "\"a\" is locked");

    QVERIFY(write(m_scenarioFile, scenarioOf({viewer, editor, player})));
    expected += changed(viewerPath);
    QCOMPARE(m_client->waitForSignals(4), expected);
    QCOMPARE(m_client->read(), QString("({'a': <1>},)"));
    QCOMPARE(m_client->change("({'a': <2>},)", editorPath), QString("()"));
}

void SandboxTest::theObjectsOfTheScenarioAreDescribed()
{
    const QString expectation = m_directory->filePath("expectation.json");
    QVERIFY(write(expectation, R"({"calls": [{"fault": "restart"}, {"times": 1}]})"));
    const QByteArray restart =
        R"([], "faults": [{"fault": "restart", "method": "GetConfiguration", "call": 1}])";
    QVERIFY(serve(scenarioOf({applicationOf("editor", "{}", restart),
                              R"({"organization": "a/b", "application": "c",)"
                              R"( "configuration": {}, "users": []})"}),
                  {"--expect", expectation}));
    const QStringList description("org.brenvik.ManagedConfiguration.Application1");
    QCOMPARE(m_client->contentsOf("/"), QStringList({"a", "acme_2eeditor"}));
    QCOMPARE(m_client->contentsOf("/a"), QStringList("b_2ec"));
    QCOMPARE(m_client->contentsOf("/a/b_2ec"), description);
    QCOMPARE(m_client->contentsOf(editorPath), description);
    QCOMPARE(m_client->contentsOf(viewerPath), QStringList());

    // After a restart, too. These are not the calls that faults and expectations count.
    QVERIFY(m_client->read(editorPath).startsWith("org.freedesktop.DBus.Error.NoReply"));
    QVERIFY(m_sandbox->readErrorLine().contains(": GetConfiguration: "));
    QVERIFY(m_sandbox->readErrorLine().startsWith("the service has ended"));
    QCOMPARE(m_sandbox->readErrorLine(), QString("the service has come back"));
    QCOMPARE(m_client->contentsOf(editorPath), description);

    QVERIFY(write(m_scenarioFile, viewerWith("{}")));
    QCOMPARE(m_client->waitForSignals(3).size(), 3);
    QCOMPARE(m_client->contentsOf("/"), QStringList("acme_2eviewer"));
    QCOMPARE(m_client->contentsOf(viewerPath), description);
    QCOMPARE(m_client->contentsOf(editorPath), QStringList());

    m_sandbox->send(SIGTERM);
    const Outcome outcome = m_sandbox->finish();
    QCOMPARE(outcome.status, 0);
    QVERIFY2(!outcome.errors.contains("Introspect"), qPrintable(outcome.errors));
}

void SandboxTest::aScenarioThatCannotBeReadChangesNothing()
{
    QVERIFY(serve(viewerWith(R"({"a": 1, "b": 1})")));
    QCOMPARE(m_client->change("({'b': <2>},)"), QString("()"));
    QVERIFY(m_sandbox->readErrorLine().endsWith(": accepted"));
    QCOMPARE(m_sandbox->readErrorLine(), QString("acme/viewer: ConfigurationChanged"));

    const QString kept = m_scenarioFile + ": not reloaded, the last valid scenario stays";
    QVERIFY(write(m_scenarioFile, "{\"applications\": [\n}"));
    QVERIFY(m_sandbox->readErrorLine().startsWith(m_scenarioFile + ":2:1: "));
    QCOMPARE(m_sandbox->readErrorLine(), kept);
    QVERIFY(write(m_scenarioFile, viewerWith("\n{\"a\": 2, \"c\": null}")));
    QVERIFY(m_sandbox->readErrorLine().startsWith(m_scenarioFile + ":2:15: "));
    QCOMPARE(m_sandbox->readErrorLine(), kept);
    QVERIFY(QFile::remove(m_scenarioFile));
    QCOMPARE(m_sandbox->readErrorLine(), m_scenarioFile + ": No such file or directory");
    QCOMPARE(m_sandbox->readErrorLine(), kept);
    QCOMPARE(mkfifo(QFile::encodeName(m_scenarioFile).constData(), S_IRWXU), 0);
    QCOMPARE(m_sandbox->readErrorLine(), m_scenarioFile + ": not a regular file");
    QCOMPARE(m_sandbox->readErrorLine(), kept);
    QCOMPARE(m_client->read(), QString("({'a': <1>, 'b': <2>},)"));
    QVERIFY(m_sandbox->readErrorLine().endsWith(": answered, 2 entries"));
    QVERIFY(QFile::remove(m_scenarioFile));
    QCOMPARE(m_sandbox->readErrorLine(), m_scenarioFile + ": No such file or directory");
    QCOMPARE(m_sandbox->readErrorLine(), kept);

    QVERIFY(write(m_scenarioFile, viewerWith(R"({"a": 3})")));
    QCOMPARE(m_sandbox->readErrorLine(), m_scenarioFile + ": reloaded");
    QCOMPARE(m_client->waitForSignals(2), QStringList({changed(viewerPath), changed(viewerPath)}));
    QCOMPARE(m_client->read(), QString("({'a': <3>},)"));
}

QTEST_GUILESS_MAIN(SandboxTest)

#include "sandbox_test.moc"
