// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "program.h"

using namespace Tarnvel::Testing;

class ClientStreamsTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void outputMayEndEarly_data()
    {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("error");
        QTest::addColumn<int>("status");

        // It is not a failure if the reader closes the pipe.
        QTest::newRow("$client get | true") << ""
                                            << "" << 0;
        QTest::newRow("$client get | head -n 1") << "{\n"
                                                 << "" << 0;
        // More lines than these do not come.
        QTest::newRow("$client watch | sed -n '/^z/{p;q}'") << "z = 0\n"
                                                            << "" << 0;

        const QString error = "managed-configuration: cannot write to standard output: ";
        const QString full = error + "No space left on device";
        const QString closed = error + "Bad file descriptor";
        QTest::newRow("$client get >/dev/full") << "" << full << 74;
        QTest::newRow("$client watch >/dev/full") << "" << full << 74;
        QTest::newRow("$client get >&-") << "" << closed << 74;
        QTest::newRow("$client check <&- >&-") << "" << closed << 74;
        QTest::newRow("$client get nothing <&- >&- 2>&-") << ""
                                                          << "" << 66;
    }

    void outputMayEndEarly()
    {
        // More than a pipe holds.
        const QString text(200000, 'x');
        m_service.replyWith(QStringLiteral("({'a': <'%1'>, 'z': <0>},)").arg(text));
        const Outcome outcome = runInShell(QTest::currentDataTag());
        QTEST(outcome.output, "output");
        QTEST(outcome.errors.section('\n', 0, 0), "error");
        QTEST(outcome.status, "status");
    }

    void colorsAreForTerminals_data()
    {
        QTest::addColumn<bool>("hasColors");

        QTest::newRow("TERM=xterm $client check | cat") << false;
        QTest::newRow("TERM=xterm $client get x 2>&1 | cat") << false;
        QTest::newRow("NO_COLOR=1 TERM=xterm $client check") << false;
        QTest::newRow("NO_COLOR=1 TERM=xterm $client get x") << false;
        QTest::newRow("TERM=dumb $client check") << false;
        QTest::newRow("NO_COLOR= TERM=xterm $client check") << true;
        QTest::newRow("NO_COLOR= TERM=xterm $client get x >/dev/null") << true;
    }

    void colorsAreForTerminals()
    {
        QFETCH(bool, hasColors);
        // script(1) runs the command on a terminal of its own.
        const QString command = QTest::currentDataTag();
        const QString text = runInShell("script -qc '" + command + "' /dev/null")
                                 .output.remove('\r');
        QVERIFY2(text.contains("object path: ") || text.contains("no such path"), qPrintable(text));
        QCOMPARE(text.contains("\033["), hasColors);
        // Each color ends with its line.
        QCOMPARE(text.count("\033[0m\n"), text.count("\033[") / 2);
    }

    // One of each kind: they control a terminal, end a line, or change the order of the text.
    void controlCharactersAreEscapedInEveryLine()
    {
        m_service.replyWith(
            R"(({'k\u202e': <'\u001b\u007f\u009b\u2028\u2029\u061c\u200f\u2066'>},))");
        const QString key = R"("k\u202e")";
        const QString value = R"("\u001b\u007f\u009b\u2028\u2029\u061c\u200f\u2066")";
        QCOMPARE(runInShell("$client get").output, QString("{\n    %1: %2\n}\n").arg(key, value));
        QCOMPARE(runInShell("$client watch | head -n 1").output, key + " = " + value + "\n");
        QCOMPARE(
            runInShell(R"($client --application $'\n\u0085' check)").output.section('\n', 2, 2),
            R"(identity: organization "acme.labs", application "\u000a\u0085")");
        const QString error = runInShell(R"($client get $'k\u202e\t/x' 2>&1)").output;
        QVERIFY2(error.contains(R"(no key "k\u202e\t")"), qPrintable(error));
        const QString word = runInShell(R"($client $'\u2029\r' 2>&1)").output;
        QVERIFY2(word.contains(R"(no command "\u2029\u000d")"), qPrintable(word));
    }

    void rawControlCharactersAreEscapedOnATerminal()
    {
        m_service.replyWith(R"(({'k': <'\u001b[31m\u202e'>},))");
        QCOMPARE(runInShell("$client get --raw k | cat").output, "\u001b[31m\u202e\n");
        QCOMPARE(runInShell("script -qc '$client get --raw k' /dev/null").output.remove('\r'),
                 R"(\u001b[31m\u202e)"
                 "\n");
    }

private:
    Outcome runInShell(const QString &script)
    {
        Program shell("/bin/bash");
        shell.setVariable("SHELL", "/bin/bash");
        shell.setVariable("client",
                          INSTALLED_PROGRAMS "/managed-configuration --organization acme.labs"
                                             " --application viewer");
        return shell.run({"-c", "set -o pipefail; " + script});
    }
};

TARNVEL_BUS_TEST_MAIN(ClientStreamsTest)

#include "client_streams_test.moc"
