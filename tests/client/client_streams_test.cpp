// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_fixture.h"
#include "program.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QSocketNotifier>
#include <QtTest/QTest>

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Tarnvel::Testing;

namespace {

constexpr int timeoutMs = 60000;

const QString client = QStringLiteral(INSTALLED_PROGRAMS "/managed-configuration"
                                                         " --organization acme.labs"
                                                         " --application viewer");

// A process on a terminal of its own, all that it writes to it, and its exit status.
class OnTerminal
{
public:
    explicit OnTerminal(const QStringList &command)
    {
        QByteArrayList words;
        for (const QString &word : command)
            words.append(word.toUtf8());
        QVector<char *> pointers;
        for (QByteArray &word : words)
            pointers.append(word.data());
        pointers.append(nullptr);
        m_process = forkpty(&m_terminal, nullptr, nullptr, nullptr);
        if (m_process == 0) {
            execv(pointers.first(), pointers.data());
            _exit(127);
        }
    }

    // Reads until the process has closed its terminal.
    QString readAll()
    {
        QByteArray text;
        bool isOver = m_process < 0;
        QSocketNotifier notifier(m_terminal, QSocketNotifier::Read);
        QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&] {
            char buffer[4096];
            const ssize_t size = read(m_terminal, buffer, sizeof buffer);
            isOver = size <= 0;
            notifier.setEnabled(!isOver);
            text.append(buffer, static_cast<int>(qMax<ssize_t>(size, 0)));
        });
        if (!QTest::qWaitFor([&] { return isOver; }, timeoutMs))
            text = "it does not end";
        close(m_terminal);
        waitpid(m_process, nullptr, 0);
        return QString::fromUtf8(text).remove('\r');
    }

private:
    int m_terminal = -1;
    pid_t m_process = -1;
};

} // namespace

class ClientStreamsTest : public QObject
{
    Q_OBJECT

public:
    explicit ClientStreamsTest(BusFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void init();
    void aReaderThatLeavesIsNoFailure_data();
    void aReaderThatLeavesIsNoFailure();
    void resultsThatCannotBeWrittenAreAFailure_data();
    void resultsThatCannotBeWrittenAreAFailure();
    void aClosedErrorChannelDoesNoHarm();
    void coloursAreForTerminals_data();
    void coloursAreForTerminals();

private:
    Outcome runInShell(const QString &script);

    BusFixture &m_fixture;
};

void ClientStreamsTest::init()
{
    m_fixture.service.answerWith("({'a': <1>, 'z': <0>},)");
}

Outcome ClientStreamsTest::runInShell(const QString &script)
{
    return Program("/bin/bash").run({"-c", "set -o pipefail; " + script});
}

void ClientStreamsTest::aReaderThatLeavesIsNoFailure_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("output");

    QTest::newRow("nobody reads") << "get | true"
                                  << "";
    QTest::newRow("much is left") << "get | head -n 1"
                                  << "{\n";
    QTest::newRow("nothing more to come") << "watch | sed '/^z/q'"
                                          << "z = 0\n";
}

void ClientStreamsTest::aReaderThatLeavesIsNoFailure()
{
    QFETCH(QString, command);
    // More than a pipe holds.
    const QString text(200000, 'x');
    m_fixture.service.answerWith(
        QStringLiteral("({'a': <'%1'>, 'b': <'%1'>, 'z': <0>},)").arg(text));
    Outcome outcome = runInShell(client + ' ' + command);
    static const QRegularExpression leaves("^[ab] = .*\n", QRegularExpression::MultilineOption);
    outcome.output.remove(leaves);
    QTEST(outcome.output, "output");
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 0);
}

void ClientStreamsTest::resultsThatCannotBeWrittenAreAFailure_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("reason");

    QTest::newRow("no room") << "get >/dev/full"
                             << "No space left on device";
    QTest::newRow("no room to watch") << "watch >/dev/full"
                                      << "No space left on device";
    QTest::newRow("no output") << "get >&-"
                               << "Bad file descriptor";
    QTest::newRow("no output and no input") << "check <&- >&-"
                                            << "Bad file descriptor";
}

void ClientStreamsTest::resultsThatCannotBeWrittenAreAFailure()
{
    QFETCH(QString, command);
    QFETCH(QString, reason);
    const Outcome outcome = runInShell(client + ' ' + command);
    QCOMPARE(outcome.errors.section('\n', 0, 0),
             "managed-configuration: cannot write to standard output: " + reason);
    QCOMPARE(outcome.status, 74);
}

void ClientStreamsTest::aClosedErrorChannelDoesNoHarm()
{
    const Outcome outcome = runInShell(client + " get nothing <&- >&- 2>&-");
    QCOMPARE(outcome.status, 66);
}

void ClientStreamsTest::coloursAreForTerminals_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("hasColours");

    QTest::newRow("results to a pipe") << "TERM=xterm $client check | cat" << false;
    QTest::newRow("message to a pipe") << "TERM=xterm $client get x 2>&1 | cat" << false;
    QTest::newRow("results, but no colours wanted")
        << "NO_COLOR=1 TERM=xterm $client check" << false;
    QTest::newRow("message, but no colours wanted")
        << "NO_COLOR=1 TERM=xterm $client get x" << false;
    QTest::newRow("dumb terminal") << "TERM=dumb $client check" << false;
    QTest::newRow("results") << "NO_COLOR= TERM=xterm $client check" << true;
    QTest::newRow("message") << "NO_COLOR= TERM=xterm $client get x" << true;
    QTest::newRow("message alone") << "NO_COLOR= TERM=xterm $client get x >/dev/null" << true;
}

void ClientStreamsTest::coloursAreForTerminals()
{
    QFETCH(QString, command);
    QFETCH(bool, hasColours);
    OnTerminal shell(
        {"/bin/sh", "-c",
         "export LD_LIBRARY_PATH='" INSTALLED_LIBRARIES "'; client='" + client + "'; " + command});
    const QString text = shell.readAll();
    QVERIFY2(text.contains("object path: ") || text.contains("no such path"), qPrintable(text));
    QCOMPARE(text.contains("\033["), hasColours);
    // Each colour ends with its line.
    QCOMPARE(text.count("\033[0m\n"), text.count("\033[") / 2);
}

TARNVEL_BUS_TEST_MAIN(ClientStreamsTest)

#include "client_streams_test.moc"
