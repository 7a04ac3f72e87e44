// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTemporaryFile>
#include <QtTest/QTest>

#include <algorithm>
#include <csignal>
#include <gio/gio.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>
#include <utmp.h>

namespace {

constexpr int timeoutMs = 20000;

// What brings a sandbox to its end.
enum class End { FirstProcessSignalled, SecondProcessSignalled, TerminalUsed, CommandEnded };

// What a command can do to get away: leave its parent, its session and its terminal.
const QString disowning = QStringLiteral(
    "$(setsid sh -c 'trap \"\" HUP INT QUIT TERM; exec sleep 1000'"
    " <&- >&- 2>&- &); ");

const QString countingInterrupts = QStringLiteral(R"(
import os, signal, sys
reader, writer = os.pipe()
os.set_blocking(writer, False)
signal.set_wakeup_fd(writer)
signal.signal(signal.SIGINT, lambda *arguments: None)
print(os.environ["DBUS_SYSTEM_BUS_ADDRESS"], flush=True)
first = os.read(reader, 1)
print("interrupted", flush=True)
line = sys.stdin.readline()
signal.set_wakeup_fd(-1)
os.close(writer)
print(line.strip(), len(first + os.read(reader, 100)), flush=True)
sys.exit(7)
)");

QByteArray readAll(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray statusOf(qint64 pid, const QByteArray &field)
{
    const QByteArray status = readAll(QStringLiteral("/proc/%1/status").arg(pid));
    const QByteArrayList lines = status.split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(field + ":\t"))
            return line.mid(field.size() + 2);
    }
    return {};
}

// A process that has ended and is not collected yet counts as gone.
bool isRunning(qint64 pid)
{
    const QByteArray state = statusOf(pid, "State");
    return !state.isEmpty() && !state.startsWith('Z');
}

bool isAnyRunning(const QList<qint64> &processes)
{
    return std::any_of(processes.begin(), processes.end(), isRunning);
}

bool hasPending(qint64 pid, int signal)
{
    const quint64 signalBit = Q_UINT64_C(1) << (signal - 1);
    return statusOf(pid, "ShdPnd").toULongLong(nullptr, 16) & signalBit;
}

QList<qint64> childrenOf(qint64 pid)
{
    QList<qint64> children;
    const QByteArrayList pids = readAll(QStringLiteral("/proc/%1/task/%1/children").arg(pid))
                                    .split(' ');
    for (const QByteArray &child : pids) {
        if (!child.isEmpty())
            children.append(child.toLongLong());
    }
    return children;
}

QList<qint64> descendantsOf(qint64 pid)
{
    QList<qint64> descendants = childrenOf(pid);
    for (int index = 0; index < descendants.size(); ++index)
        descendants += childrenOf(descendants.at(index));
    return descendants;
}

int sendSignal(qint64 pid, int signal)
{
    return kill(static_cast<pid_t>(pid), signal);
}

QStringList entriesOf(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                     | QDir::NoDotAndDotDot);
}

// True if the simulated service answers, were it with an error.
bool isServed(const QByteArray &address)
{
    g_autoptr(GDBusConnection) connection = g_dbus_connection_new_for_address_sync(
        address.constData(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
                                          | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    if (!connection)
        return false;
    g_autoptr(GError) error = nullptr;
    GVariant *const answer = g_dbus_connection_call_sync(
        connection, "org.brenvik.ManagedConfiguration", "/acme_2eviewer",
        "org.brenvik.ManagedConfiguration.Application1", "GetConfiguration", nullptr, nullptr,
        G_DBUS_CALL_FLAGS_NONE, timeoutMs, nullptr, &error);
    if (answer) {
        g_variant_unref(answer);
        return true;
    }
    g_autofree gchar *name = g_dbus_error_get_remote_error(error);
    return g_strcmp0(name, "org.brenvik.ManagedConfiguration.Error.NotConfigurable") == 0;
}

// A process that can have a terminal of its own, for all but what it prints as errors.
class Process : public QProcess
{
public:
    ~Process() override
    {
        hangUp();
    }

    bool openTerminal()
    {
        if (openpty(&m_master, &m_slave, nullptr, nullptr, nullptr) != 0)
            return false;
        // No echo and no carriage returns, so that the output is what was written.
        termios settings = {};
        tcgetattr(m_slave, &settings);
        settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
        return tcsetattr(m_slave, TCSANOW, &settings) == 0;
    }

    bool type(const QByteArray &keys)
    {
        return ::write(m_master, keys.constData(), static_cast<size_t>(keys.size())) == keys.size();
    }

    void hangUp()
    {
        for (int *file : {&m_master, &m_slave}) {
            if (*file != -1)
                ::close(*file);
            *file = -1;
        }
    }

    // The next line, from the terminal if there is one.
    QByteArray readOutputLine()
    {
        return m_master == -1 ? readChannelLine() : readTerminalLine();
    }

    void ignoreSignal(int signal)
    {
        m_ignoredSignal = signal;
    }

    void blockSignal(int signal)
    {
        m_blockedSignal = signal;
    }

protected:
    void setupChildProcess() override
    {
        // A shell's background command, as these tests may be, does not get these.
        signal(SIGINT, SIG_DFL);
        signal(SIGQUIT, SIG_DFL);
        if (m_ignoredSignal != 0)
            signal(m_ignoredSignal, SIG_IGN);
        sigset_t blocked;
        sigemptyset(&blocked);
        if (m_blockedSignal != 0)
            sigaddset(&blocked, m_blockedSignal);
        sigprocmask(SIG_SETMASK, &blocked, nullptr);
        if (m_slave == -1)
            return;
        ::close(m_master);
        const int errors = dup(STDERR_FILENO);
        login_tty(m_slave);
        dup2(errors, STDERR_FILENO);
        ::close(errors);
    }

private:
    QByteArray readChannelLine()
    {
        while (!canReadLine()) {
            if (!waitForReadyRead(timeoutMs))
                return "no line: " + readAllStandardError();
        }
        return readLine().chopped(1);
    }

    QByteArray readTerminalLine()
    {
        QByteArray line;
        char character = 0;
        pollfd input = {m_master, POLLIN, 0};
        while (poll(&input, 1, timeoutMs) == 1 && ::read(m_master, &character, 1) == 1) {
            if (character == '\n')
                return line;
            line.append(character);
        }
        return "no line: " + line;
    }

    int m_master = -1;
    int m_slave = -1;
    int m_ignoredSignal = 0;
    int m_blockedSignal = 0;
};

} // namespace

Q_DECLARE_METATYPE(End)

class SandboxProcessesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void nothingIsLeftBehind_data();
    void nothingIsLeftBehind();
    void noFileIsLeftBehindWhenAllProcessesAreKilledAtOnce();
    void aSignalReachesTheCommand_data();
    void aSignalReachesTheCommand();
    void aCommandThatIgnoresTheSignalIsKilled();
    void aSandboxThatDoesNotEndIsKilled();
    void aHangUpThatIsIgnoredDoesNothing();
    void theCommandFindsTheSignalsAsTheyWere_data();
    void theCommandFindsTheSignalsAsTheyWere();
    void theBusTakesSignals();
    void whatIsTypedReachesTheCommandOnce();
    void theWholeCanBeStoppedAndContinued();
    void coloursAreForTerminals_data();
    void coloursAreForTerminals();
    void helpNeedsNoTemporaryDirectory();

private:
    void start(const QStringList &arguments);
    void startCommand(const QString &script);
    void bringToAnEnd(End end, int signal, qint64 secondProcess);
    void finish(int status);

    QScopedPointer<QTemporaryDir> m_directory;
    QScopedPointer<Process> m_sandbox;
};

void SandboxProcessesTest::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    m_sandbox.reset(new Process);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TMPDIR", m_directory->path());
    m_sandbox->setProcessEnvironment(environment);
}

void SandboxProcessesTest::cleanup()
{
    if (m_sandbox->state() != QProcess::NotRunning) {
        m_sandbox->kill();
        QVERIFY(m_sandbox->waitForFinished(timeoutMs));
    }
    QTRY_COMPARE_WITH_TIMEOUT(entriesOf(m_directory->path()), QStringList(), timeoutMs);
}

void SandboxProcessesTest::start(const QStringList &arguments)
{
    m_sandbox->start(SANDBOX, arguments);
    QVERIFY2(m_sandbox->waitForStarted(timeoutMs), qPrintable(m_sandbox->errorString()));
}

void SandboxProcessesTest::startCommand(const QString &script)
{
    start({"--", "sh", "-c", script});
}

void SandboxProcessesTest::finish(int status)
{
    QVERIFY(m_sandbox->state() == QProcess::NotRunning || m_sandbox->waitForFinished(timeoutMs));
    QCOMPARE(m_sandbox->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_sandbox->exitCode(), status);
}

void SandboxProcessesTest::bringToAnEnd(End end, int signal, qint64 secondProcess)
{
    switch (end) {
    case End::FirstProcessSignalled:
        QCOMPARE(sendSignal(m_sandbox->processId(), signal), 0);
        break;
    case End::SecondProcessSignalled:
        QCOMPARE(sendSignal(secondProcess, signal), 0);
        break;
    case End::TerminalUsed:
        if (signal == SIGHUP)
            m_sandbox->hangUp();
        else
            QVERIFY(m_sandbox->type(signal == SIGINT ? "\x03" : "\x1c"));
        break;
    case End::CommandEnded:
        m_sandbox->closeWriteChannel();
        break;
    }
}

void SandboxProcessesTest::nothingIsLeftBehind_data()
{
    QTest::addColumn<End>("end");
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("hasCommand");
    QTest::addColumn<int>("status");

    const auto addRows = [](const char *name, End end, int signal, int status, int commandStatus) {
        QTest::addRow("%s, no command", name) << end << signal << false << status;
        QTest::addRow("%s, command", name) << end << signal << true << commandStatus;
    };
    const int killed = 128 + SIGKILL;
    addRows("first process killed", End::FirstProcessSignalled, SIGKILL, 0, 0);
    addRows("second process killed", End::SecondProcessSignalled, SIGKILL, killed, killed);
    addRows("SIGHUP", End::FirstProcessSignalled, SIGHUP, 0, 128 + SIGHUP);
    addRows("SIGINT", End::FirstProcessSignalled, SIGINT, 0, 128 + SIGINT);
    addRows("SIGQUIT", End::FirstProcessSignalled, SIGQUIT, 0, 128 + SIGQUIT);
    addRows("SIGTERM", End::FirstProcessSignalled, SIGTERM, 0, 128 + SIGTERM);
    addRows("SIGTERM to the second process", End::SecondProcessSignalled, SIGTERM, 0,
            128 + SIGTERM);
    addRows("Ctrl-C", End::TerminalUsed, SIGINT, 0, 128 + SIGINT);
    addRows("Ctrl-backslash", End::TerminalUsed, SIGQUIT, 0, 128 + SIGQUIT);
    addRows("terminal closed", End::TerminalUsed, SIGHUP, 0, 128 + SIGHUP);
    QTest::newRow("command ended") << End::CommandEnded << 0 << true << 3;
}

void SandboxProcessesTest::nothingIsLeftBehind()
{
    QFETCH(End, end);
    QFETCH(int, signal);
    QFETCH(bool, hasCommand);
    QFETCH(int, status);
    if (end == End::TerminalUsed)
        QVERIFY(m_sandbox->openTerminal());
    if (!hasCommand)
        start({});
    else if (end == End::CommandEnded)
        startCommand(disowning + "echo ready; read line; exit 3");
    else
        startCommand(disowning + "ulimit -c 0; echo ready; exec sleep 1000");
    const QByteArray line = m_sandbox->readOutputLine();
    QVERIFY2(hasCommand ? line == "ready" : line.startsWith("export "), line.constData());
    const QList<qint64> processes = descendantsOf(m_sandbox->processId());
    // The second process, the bus, the command and the process that it disowned.
    QCOMPARE(processes.size(), hasCommand ? 4 : 2);
    for (const qint64 process : processes)
        QVERIFY(isRunning(process));
    QCOMPARE(entriesOf(m_directory->path()).size(), 1);

    bringToAnEnd(end, signal, processes.first());
    if (end == End::FirstProcessSignalled && signal == SIGKILL) {
        QVERIFY(m_sandbox->waitForFinished(timeoutMs));
        QTRY_VERIFY_WITH_TIMEOUT(!isAnyRunning(processes), timeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(entriesOf(m_directory->path()), QStringList(), timeoutMs);
        return;
    }
    finish(status);
    QVERIFY(!isAnyRunning(processes));
    QCOMPARE(entriesOf(m_directory->path()), QStringList());
}

void SandboxProcessesTest::noFileIsLeftBehindWhenAllProcessesAreKilledAtOnce()
{
    startCommand("echo ready; exec sleep 1000");
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("ready"));
    QCOMPARE(entriesOf(m_directory->path()).size(), 1);
    const QList<qint64> processes = descendantsOf(m_sandbox->processId()) << m_sandbox->processId();
    QCOMPARE(processes.size(), 4);
    // None of them can do anything any more while the others are killed.
    for (const qint64 process : processes)
        QCOMPARE(sendSignal(process, SIGSTOP), 0);
    for (const qint64 process : processes)
        QCOMPARE(sendSignal(process, SIGKILL), 0);
    QVERIFY(m_sandbox->waitForFinished(timeoutMs));
    QTRY_COMPARE_WITH_TIMEOUT(entriesOf(m_directory->path()), QStringList(), timeoutMs);
}

void SandboxProcessesTest::aSignalReachesTheCommand_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<QString>("script");

    QTest::newRow("SIGHUP") << SIGHUP << "trap 'exit 7' HUP";
    QTest::newRow("SIGINT") << SIGINT << "trap 'exit 7' INT";
    QTest::newRow("SIGQUIT") << SIGQUIT << "trap 'exit 7' QUIT";
    QTest::newRow("SIGTERM") << SIGTERM << "trap 'exit 7' TERM";
}

void SandboxProcessesTest::aSignalReachesTheCommand()
{
    QFETCH(int, signal);
    QFETCH(QString, script);
    startCommand(script + "; echo ready; sleep 1000 & wait");
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("ready"));
    QCOMPARE(sendSignal(m_sandbox->processId(), signal), 0);
    finish(7);
}

void SandboxProcessesTest::aCommandThatIgnoresTheSignalIsKilled()
{
    startCommand("trap '' TERM; echo ready; exec sleep 1000");
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("ready"));
    // The first process, which would help, does not know.
    QCOMPARE(sendSignal(childrenOf(m_sandbox->processId()).value(0), SIGTERM), 0);
    finish(128 + SIGKILL);
}

void SandboxProcessesTest::aSandboxThatDoesNotEndIsKilled()
{
    startCommand(disowning + "echo ready; exec sleep 1000");
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("ready"));
    const QList<qint64> processes = descendantsOf(m_sandbox->processId());
    QCOMPARE(processes.size(), 4);
    QCOMPARE(sendSignal(processes.first(), SIGSTOP), 0);
    m_sandbox->terminate();
    finish(128 + SIGKILL);
    QVERIFY(!isAnyRunning(processes));
    QCOMPARE(entriesOf(m_directory->path()), QStringList());
}

void SandboxProcessesTest::aHangUpThatIsIgnoredDoesNothing()
{
    m_sandbox->ignoreSignal(SIGHUP);
    start({"--", "env", "--default-signal=HUP", "sh", "-c", "echo ready; exec sleep 1000"});
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("ready"));
    // Of two that wait, the one with the lower number is received first.
    QCOMPARE(sendSignal(m_sandbox->processId(), SIGHUP), 0);
    m_sandbox->terminate();
    finish(128 + SIGTERM);
}

void SandboxProcessesTest::theCommandFindsTheSignalsAsTheyWere_data()
{
    QTest::addColumn<int>("ignored");
    QTest::addColumn<int>("blocked");

    QTest::newRow("none") << 0 << 0;
    QTest::newRow("ends of pipes ignored") << SIGPIPE << 0;
    QTest::newRow("ends of children ignored") << SIGCHLD << 0;
    QTest::newRow("interrupts ignored") << SIGINT << 0;
    QTest::newRow("hang-ups ignored") << SIGHUP << 0;
    QTest::newRow("interrupts blocked") << 0 << SIGINT;
    QTest::newRow("others blocked") << 0 << SIGUSR1;
}

void SandboxProcessesTest::theCommandFindsTheSignalsAsTheyWere()
{
    QFETCH(int, ignored);
    QFETCH(int, blocked);
    const QStringList command = {"grep", "-E", "^Sig(Blk|Ign)", "/proc/self/status"};
    m_sandbox->ignoreSignal(ignored);
    m_sandbox->blockSignal(blocked);
    m_sandbox->start(command.first(), command.mid(1));
    finish(0);
    const QByteArray expected = m_sandbox->readAllStandardOutput();
    QCOMPARE(expected.count('\n'), 2);

    start(QStringList("--") + command);
    finish(0);
    QCOMPARE(m_sandbox->readAllStandardOutput(), expected);
}

void SandboxProcessesTest::theBusTakesSignals()
{
    start({});
    QVERIFY(m_sandbox->readOutputLine().startsWith("export "));
    const QList<qint64> processes = descendantsOf(m_sandbox->processId());
    QCOMPARE(processes.size(), 2);
    QCOMPARE(statusOf(processes.last(), "Name"), QByteArray("dbus-daemon"));
    QCOMPARE(statusOf(processes.last(), "SigBlk"), QByteArray("0000000000000000"));
}

void SandboxProcessesTest::whatIsTypedReachesTheCommandOnce()
{
    QVERIFY(m_sandbox->openTerminal());
    start({"--", "python3", "-c", countingInterrupts});
    const QByteArray address = m_sandbox->readOutputLine();
    // Held back until the others are through: two signals that wait become one.
    const qint64 firstProcess = m_sandbox->processId();
    const qint64 secondProcess = childrenOf(firstProcess).value(0);
    QCOMPARE(sendSignal(firstProcess, SIGSTOP), 0);
    QTRY_VERIFY(statusOf(firstProcess, "State").startsWith('T'));
    QVERIFY(m_sandbox->type("\x03"));
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("interrupted"));
    QTRY_VERIFY(!hasPending(secondProcess, SIGINT));
    QVERIFY(isServed(address));

    // The first process is through when it waits again; the second when it answers calls.
    QVERIFY(hasPending(firstProcess, SIGINT));
    QCOMPARE(sendSignal(firstProcess, SIGCONT), 0);
    QTRY_VERIFY(!hasPending(firstProcess, SIGINT));
    QTRY_VERIFY(statusOf(firstProcess, "State").startsWith('S'));
    QTRY_VERIFY(!hasPending(secondProcess, SIGINT));
    QVERIFY(isServed(address));
    QVERIFY(m_sandbox->type("interrupts:\n"));
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("interrupts: 1"));
    finish(7);
}

void SandboxProcessesTest::coloursAreForTerminals_data()
{
    QTest::addColumn<bool>("isTerminal");
    QTest::addColumn<QString>("terminal");
    QTest::addColumn<QString>("noColour");
    QTest::addColumn<bool>("isColoured");

    QTest::newRow("no terminal") << false << "xterm"
                                 << "" << false;
    QTest::newRow("no colours wanted") << true << "xterm"
                                       << "1" << false;
    QTest::newRow("terminal without colours") << true << "dumb"
                                              << "" << false;
    QTest::newRow("terminal of no known kind") << true << ""
                                               << "" << false;
    QTest::newRow("terminal") << true << "xterm"
                              << "" << true;
}

void SandboxProcessesTest::coloursAreForTerminals()
{
    QFETCH(bool, isTerminal);
    QFETCH(QString, terminal);
    QFETCH(QString, noColour);
    QFETCH(bool, isColoured);
    QTemporaryFile scenario;
    QVERIFY(scenario.open() && scenario.write("{\"applications\": []}") > 0 && scenario.flush());
    QProcessEnvironment environment = m_sandbox->processEnvironment();
    environment.insert("TERM", terminal);
    environment.insert("NO_COLOR", noColour);
    m_sandbox->setProcessEnvironment(environment);
    if (isTerminal)
        QVERIFY(m_sandbox->openTerminal());
    start({"--check", scenario.fileName()});
    const QByteArray text = scenario.fileName().toUtf8() + ": no mistakes";
    QCOMPARE(m_sandbox->readOutputLine(), isColoured ? "\033[32m" + text + "\033[0m" : text);
    finish(0);
}

void SandboxProcessesTest::theWholeCanBeStoppedAndContinued()
{
    QVERIFY(m_sandbox->openTerminal());
    const QString script = "\"$0\" -- sh -c 'echo ready; read line; echo \"$line\"; exit 7';"
                           " echo stopped with $?; fg >/dev/null; echo ended with $?";
    m_sandbox->start("bash", {"--norc", "-i", "-c", script, SANDBOX});
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("ready"));
    QVERIFY(m_sandbox->type("\x1a"));
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("stopped with 148"));
    QVERIFY(m_sandbox->type("from the terminal\n"));
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("from the terminal"));
    QCOMPARE(m_sandbox->readOutputLine(), QByteArray("ended with 7"));
    finish(0);
}

void SandboxProcessesTest::helpNeedsNoTemporaryDirectory()
{
    QProcessEnvironment environment = m_sandbox->processEnvironment();
    environment.insert("TMPDIR", "/nowhere");
    m_sandbox->setProcessEnvironment(environment);
    start({"--help"});
    finish(0);
    QVERIFY(m_sandbox->readAllStandardOutput().startsWith("Usage: "));

    start({"--", "true"});
    finish(125);
    QCOMPARE(m_sandbox->readAllStandardError(),
             QByteArray("/nowhere/managed-configuration-sandbox-XXXXXX: No such file or "
                        "directory\n"));
}

QTEST_GUILESS_MAIN(SandboxProcessesTest)

#include "sandbox_processes_test.moc"
