// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "child_process.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>
#include <QtTest/QTest>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int timeoutMs = 120000;
constexpr int killedStatus = 128 + SIGKILL;
// Not an exit status: the sandbox itself is killed.
constexpr int noStatus = -1;

// Where a signal comes from: a process is sent it; the terminal gets its key, or is closed for
// SIGHUP.
enum Target { Supervisor, Worker, Terminal };

// A process that leaves its parent, its session and its terminal, and ignores all but SIGKILL.
const QString daemonizing = QStringLiteral(
    "$(setsid sh -c 'trap \"\" HUP INT QUIT TERM; exec sleep 1000'"
    " <&- >&- 2>&- &); ");
const QString exiting = daemonizing + "echo ready; read line; exit 7";
const QString stoppingTheWorker = daemonizing + "kill -STOP $PPID; echo ready; exec sleep 1000";
const QString ignoring = daemonizing + "trap '' TERM; echo ready; exec sleep 1000";
const QString trapping = daemonizing
    + "trap 'exit 7' HUP INT QUIT TERM; echo ready; sleep 1000 & wait";

QByteArray statusOf(qint64 processId, const QByteArray &field)
{
    QFile file(QString("/proc/%1/status").arg(processId));
    const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const int start = text.indexOf(field + ":\t");
    return start == -1 ? QByteArray() : text.mid(start + field.size() + 2).split('\n').first();
}

// A process that has ended but was not waited for is a zombie.
bool isAnyRunning(const QList<qint64> &processes)
{
    return std::any_of(processes.begin(), processes.end(), [](qint64 processId) {
        const QByteArray state = statusOf(processId, "State");
        return !state.isEmpty() && !state.startsWith('Z');
    });
}

bool isInterrupted(qint64 processId)
{
    return statusOf(processId, "ShdPnd").toULongLong(nullptr, 16) & (1ULL << (SIGINT - 1));
}

bool sendSignal(qint64 processId, int signal)
{
    return kill(static_cast<pid_t>(processId), signal) == 0;
}

// A process whose standard input and output are a pseudo-terminal.
class Process : public Tarnvel::Testing::ChildProcess
{
public:
    Process()
    {
        if (openpty(&m_master, &m_terminal, nullptr, nullptr, nullptr) != 0)
            qFatal("no pseudo-terminal");
        // No echo and no carriage returns, so that the output is what was written.
        termios settings = {};
        tcgetattr(m_terminal, &settings);
        settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
        tcsetattr(m_terminal, TCSANOW, &settings);
        for (const int file : {m_master, m_terminal})
            fcntl(file, F_SETFD, FD_CLOEXEC);
    }

    ~Process() override
    {
        kill();
        waitForFinished(timeoutMs);
        hangUp();
        ::close(m_terminal);
    }

    bool startSandbox(const QStringList &arguments = {})
    {
        start(SANDBOX, arguments);
        return waitForStarted(timeoutMs);
    }

    // Without a script, no command is run.
    bool startCommand(const QString &script)
    {
        if (script.isEmpty())
            return startSandbox() && readOutputLine().startsWith("export ");
        return startSandbox({"--", "sh", "-c", script}) && readOutputLine() == "ready";
    }

    int finish()
    {
        const bool isEnded = state() == NotRunning || waitForFinished(timeoutMs);
        return isEnded && exitStatus() == NormalExit ? exitCode() : noStatus;
    }

    // The worker first, then the bus.
    QList<qint64> descendants() const
    {
        QList<qint64> processes {processId()};
        for (int index = 0; index < processes.size(); ++index) {
            QFile file(QString("/proc/%1/task/%1/children").arg(processes.at(index)));
            file.open(QIODevice::ReadOnly);
            QTextStream children(&file);
            for (qint64 child = 0; (children >> child).status() == QTextStream::Ok;)
                processes.append(child);
        }
        return processes.mid(1);
    }

    bool type(const QByteArray &keys)
    {
        return ::write(m_master, keys.constData(), static_cast<size_t>(keys.size())) == keys.size();
    }

    void hangUp()
    {
        ::close(m_master);
        m_master = -1;
    }

    QByteArray readOutputLine()
    {
        QByteArray line;
        char character = 0;
        pollfd input = {m_master, POLLIN, 0};
        while (poll(&input, 1, timeoutMs) == 1 && ::read(m_master, &character, 1) == 1) {
            if (character == '\n')
                return line;
            line.append(character);
        }
        return "no line: " + line + readAllStandardError();
    }

    // True if the terminal controls the process: it then gets the signals of its keys.
    bool isControlled = false;
    QList<int> ignoredSignals;
    QList<int> blockedSignals;

protected:
    void prepareChild() override
    {
        // A shell's background command, as these tests may be, ignores these.
        for (const int number : {SIGINT, SIGQUIT})
            signal(number, SIG_DFL);
        for (const int number : qAsConst(ignoredSignals))
            signal(number, SIG_IGN);
        sigset_t blocked;
        sigemptyset(&blocked);
        for (const int number : qAsConst(blockedSignals))
            sigaddset(&blocked, number);
        sigprocmask(SIG_SETMASK, &blocked, nullptr);
        dup2(m_terminal, STDIN_FILENO);
        dup2(m_terminal, STDOUT_FILENO);
        if (isControlled) {
            setsid();
            ioctl(m_terminal, TIOCSCTTY, nullptr);
        }
    }

private:
    int m_master = -1;
    int m_terminal = -1;
};

} // namespace

class SandboxProcessesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void nothingIsLeftBehind_data();
    void nothingIsLeftBehind();
    void theNextStartRemovesAbandonedDirectories();
    void anIgnoredHangUpDoesNothing();
    void theCommandFindsTheSignalsAsTheyWere();
    void whatIsTypedReachesTheCommandOnce();
    void theSandboxCanBeStoppedAndContinued();
    void aSignalEndsTheWaitForStandardInput();
    void aTerminalShowsColors();
    void onlyASessionNeedsATemporaryDirectory();
    void aTemporaryDirectoryHasRoomForASocket();

private:
    QStringList entries() const
    {
        return QDir(m_directory.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    const QTemporaryDir m_directory;
    std::unique_ptr<Process> m_process;
};

void SandboxProcessesTest::init()
{
    QVERIFY(m_directory.isValid());
    qputenv("TMPDIR", QFile::encodeName(m_directory.path()));
    qputenv("TERM", "xterm");
    qunsetenv("NO_COLOR");
    m_process = std::make_unique<Process>();
}

void SandboxProcessesTest::cleanup()
{
    m_process.reset();
    QTRY_COMPARE_WITH_TIMEOUT(entries(), QStringList(), timeoutMs);
}

void SandboxProcessesTest::nothingIsLeftBehind_data()
{
    QTest::addColumn<int>("target");
    QTest::addColumn<int>("signal");
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");

    const auto addRows = [](const char *name, int target, int signal, int status, int idle) {
        QTest::addRow("%s", name) << target << signal << trapping << status;
        QTest::addRow("%s, no command", name) << target << signal << QString() << idle;
    };
    addRows("supervisor killed", Supervisor, SIGKILL, noStatus, noStatus);
    addRows("worker killed", Worker, SIGKILL, killedStatus, killedStatus);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM})
        addRows(strsignal(signal), Supervisor, signal, 7, 0);
    addRows("SIGTERM to the worker", Worker, SIGTERM, 7, 0);
    addRows("Ctrl-C", Terminal, SIGINT, 7, 0);
    addRows("Ctrl-backslash", Terminal, SIGQUIT, 7, 0);
    addRows("terminal closed", Terminal, SIGHUP, 7, 0);
    QTest::newRow("command ended") << int(Terminal) << 0 << exiting << 7;
    QTest::newRow("signal ignored") << int(Worker) << SIGTERM << ignoring << killedStatus;
    QTest::newRow("worker hangs") << int(Supervisor) << SIGTERM << stoppingTheWorker
                                  << killedStatus;
}

void SandboxProcessesTest::nothingIsLeftBehind()
{
    QFETCH(int, target);
    QFETCH(int, signal);
    QFETCH(QString, script);
    QFETCH(int, status);
    m_process->isControlled = target == Terminal;
    QVERIFY(m_process->startCommand(script));
    const QList<qint64> processes = m_process->descendants();
    // The worker and the bus, the command and the process that it left behind.
    QVERIFY(processes.size() >= (script.isEmpty() ? 2 : 4));
    QVERIFY(isAnyRunning(processes));
    QCOMPARE(entries().size(), 1);
    QCOMPARE(statusOf(processes.at(1), "SigBlk"), QByteArray(16, '0'));

    const QHash<int, QByteArray> keys {{SIGINT, "\x03"}, {SIGQUIT, "\x1c"}, {0, "\n"}};
    if (target != Terminal)
        QVERIFY(sendSignal(target == Worker ? processes.first() : m_process->processId(), signal));
    else if (signal == SIGHUP)
        m_process->hangUp();
    else
        QVERIFY(m_process->type(keys.value(signal)));
    QCOMPARE(m_process->finish(), status);
    if (status == noStatus)
        QTRY_VERIFY_WITH_TIMEOUT(!isAnyRunning(processes), timeoutMs);
    QVERIFY(!isAnyRunning(processes));
    QCOMPARE(entries(), QStringList());
}

void SandboxProcessesTest::theNextStartRemovesAbandonedDirectories()
{
    QVERIFY(m_process->startCommand(ignoring));
    const QStringList abandoned = entries();
    QCOMPARE(abandoned.size(), 1);
    QList<qint64> processes = m_process->descendants();
    const qint64 daemon = processes.takeLast();
    QVERIFY(sendSignal(m_process->processId(), SIGSTOP));
    QVERIFY(sendSignal(processes.first(), SIGKILL));
    QVERIFY(sendSignal(m_process->processId(), SIGKILL));
    QCOMPARE(m_process->finish(), noStatus);
    // The bus and the command die with the worker; a process that has left them does not.
    QTRY_VERIFY_WITH_TIMEOUT(!isAnyRunning(processes), timeoutMs);
    QVERIFY(isAnyRunning({daemon}));
    QCOMPARE(entries(), abandoned);

    // That of a running sandbox, and one of the user's own, stay.
    const QDir directory(m_directory.path());
    const QString own = "managed-configuration-sandbox-backup";
    QVERIFY(directory.mkdir(own));
    m_process = std::make_unique<Process>();
    QVERIFY(m_process->startCommand("echo ready; read line"));
    const QStringList kept = entries();
    QCOMPARE(kept.size(), 2);
    QVERIFY(!kept.contains(abandoned.first()));
    const std::unique_ptr<Process> running = std::move(m_process);
    m_process = std::make_unique<Process>();
    QVERIFY(m_process->startSandbox({"--", "true"}));
    QCOMPARE(m_process->finish(), 0);
    QCOMPARE(entries(), kept);
    QVERIFY(directory.rmdir(own));
    QVERIFY(sendSignal(daemon, SIGKILL));
}

void SandboxProcessesTest::anIgnoredHangUpDoesNothing()
{
    m_process->ignoredSignals = {SIGHUP};
    QVERIFY(m_process->startSandbox(
        {"--", "env", "--default-signal=HUP", "sh", "-c", "echo ready; exec sleep 1000"}));
    QCOMPARE(m_process->readOutputLine(), QByteArray("ready"));
    // Of two pending signals, the one with the lower number is received first.
    QVERIFY(sendSignal(m_process->processId(), SIGHUP));
    m_process->terminate();
    QCOMPARE(m_process->finish(), 128 + SIGTERM);
}

void SandboxProcessesTest::theCommandFindsTheSignalsAsTheyWere()
{
    const QStringList arguments {"-E", "^Sig(Blk|Ign)", "/proc/self/status"};
    for (const bool areChanged : {false, true}) {
        if (areChanged) {
            m_process->ignoredSignals = {SIGHUP, SIGINT, SIGPIPE, SIGCHLD};
            m_process->blockedSignals = {SIGINT, SIGTERM, SIGUSR1};
        }
        m_process->start("grep", arguments);
        const QByteArray blocked = m_process->readOutputLine();
        const QByteArray ignored = m_process->readOutputLine();
        QCOMPARE(m_process->finish(), 0);
        QVERIFY(m_process->startSandbox(QStringList {"--", "grep"} + arguments));
        QCOMPARE(m_process->readOutputLine(), blocked);
        QCOMPARE(m_process->readOutputLine(), ignored);
        QCOMPARE(m_process->finish(), 0);
    }
}

void SandboxProcessesTest::whatIsTypedReachesTheCommandOnce()
{
    m_process->isControlled = true;
    QVERIFY(m_process->startCommand(
        "trap 'echo INT' INT; trap 'echo TERM; exit 7' TERM; echo ready; sleep 1000 &"
        " while :; do wait; done"));
    // Each signal is received before the next one comes: two that are pending become one.
    const qint64 supervisor = m_process->processId();
    const qint64 worker = m_process->descendants().first();
    for (const qint64 process : {supervisor, worker}) {
        QVERIFY(sendSignal(process, SIGSTOP));
        QTRY_VERIFY_WITH_TIMEOUT(statusOf(process, "State").startsWith('T'), timeoutMs);
    }
    QVERIFY(m_process->type("\x03"));
    QCOMPARE(m_process->readOutputLine(), QByteArray("INT"));
    for (const qint64 process : {worker, supervisor}) {
        QTRY_VERIFY_WITH_TIMEOUT(isInterrupted(process), timeoutMs);
        QVERIFY(sendSignal(process, SIGCONT));
        QTRY_VERIFY_WITH_TIMEOUT(!isInterrupted(process), timeoutMs);
    }
    m_process->terminate();
    QCOMPARE(m_process->readOutputLine(), QByteArray("TERM"));
    QCOMPARE(m_process->finish(), 7);
}

void SandboxProcessesTest::theSandboxCanBeStoppedAndContinued()
{
    m_process->isControlled = true;
    const QString script = "\"$0\" -- sh -c 'echo ready; read line; echo \"$line\"; exit 7';"
                           " echo stopped with $?; fg >/dev/null; echo ended with $?";
    m_process->start("bash", {"--norc", "-i", "-c", script, SANDBOX});
    QCOMPARE(m_process->readOutputLine(), QByteArray("ready"));
    QVERIFY(m_process->type("\x1a"));
    QCOMPARE(m_process->readOutputLine(), QByteArray("stopped with 148"));
    QVERIFY(m_process->type("from the terminal\n"));
    QCOMPARE(m_process->readOutputLine(), QByteArray("from the terminal"));
    QCOMPARE(m_process->readOutputLine(), QByteArray("ended with 7"));
    QCOMPARE(m_process->finish(), 0);
}

void SandboxProcessesTest::aSignalEndsTheWaitForStandardInput()
{
    for (const char *const option : {"--check", "--scenario"}) {
        QVERIFY(m_process->startSandbox({option, "-"}));
        QTRY_VERIFY_WITH_TIMEOUT(!m_process->descendants().isEmpty(), timeoutMs);
        m_process->terminate();
        QCOMPARE(m_process->finish(), 128 + SIGTERM);
    }
}

void SandboxProcessesTest::aTerminalShowsColors()
{
    const QByteArray scenario = PROJECT_DIR "/examples/viewer/scenario.json";
    QVERIFY(m_process->startSandbox({"--check", scenario}));
    QCOMPARE(m_process->readOutputLine(), "\033[32m" + scenario + ": valid\033[0m");
    QCOMPARE(m_process->finish(), 0);
}

void SandboxProcessesTest::onlyASessionNeedsATemporaryDirectory()
{
    qputenv("TMPDIR", "/nowhere");
    QVERIFY(m_process->startSandbox({"--help"}));
    QVERIFY(m_process->readOutputLine().startsWith("Usage: "));
    QCOMPARE(m_process->finish(), 0);
    QVERIFY(m_process->startSandbox({"--", "true"}));
    QCOMPARE(m_process->finish(), 125);
    QCOMPARE(m_process->readAllStandardError(),
             QByteArray("/nowhere: cannot be TMPDIR: No such file or directory\n"));
}

void SandboxProcessesTest::aTemporaryDirectoryHasRoomForASocket()
{
    QDir parent(m_directory.path());
    m_process->setWorkingDirectory(parent.path());
    for (const int size : {55, 56}) {
        const QString name(size - parent.path().size() - 1, 'x');
        const QString directory = parent.filePath(name);
        QVERIFY(parent.mkdir(name));
        for (const QString &variable : {name, directory}) {
            qputenv("TMPDIR", QFile::encodeName(variable));
            QVERIFY(m_process->startSandbox({"--", "true"}));
            QCOMPARE(m_process->finish(), size == 55 ? 0 : 125);
            QCOMPARE(QString::fromUtf8(m_process->readAllStandardError()),
                     size == 55 ? QString()
                                : directory
                             + ": cannot be TMPDIR: a path of more than 55 bytes is too long for "
                               "a socket\n");
        }
        QVERIFY(parent.rmdir(name));
    }
}

QTEST_GUILESS_MAIN(SandboxProcessesTest)

#include "sandbox_processes_test.moc"
