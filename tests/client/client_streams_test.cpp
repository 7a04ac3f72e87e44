// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_fixture.h"
#include "program.h"

#include <QtTest/QTest>

using namespace Tarnvel::Testing;

class ClientStreamsTest : public QObject
{
    Q_OBJECT

public:
    explicit ClientStreamsTest(BusFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void init();
    void readerThatLeavesIsNoFailure_data();
    void readerThatLeavesIsNoFailure();
    void resultsThatCannotBeWrittenAreAFailure_data();
    void resultsThatCannotBeWrittenAreAFailure();
    void closedStreamsAreLeftAlone();
    void coloursAreForTerminals_data();
    void coloursAreForTerminals();

private:
    Outcome runInShell(const QString &script);

    BusFixture &m_fixture;
};

void ClientStreamsTest::init()
{
    m_fixture.service.replyWith("({'a': <1>, 'z': <0>},)");
}

Outcome ClientStreamsTest::runInShell(const QString &script)
{
    Program shell("/bin/bash");
    shell.setVariable("SHELL", "/bin/bash");
    shell.setVariable("client",
                      INSTALLED_PROGRAMS "/managed-configuration --organization acme.labs"
                                         " --application viewer");
    return shell.run({"-c", "set -o pipefail; " + script});
}

void ClientStreamsTest::readerThatLeavesIsNoFailure_data()
{
    QTest::addColumn<QString>("output");

    QTest::newRow("$client get | true") << "";
    QTest::newRow("$client get | head -n 1") << "{\n";
    // More lines than these do not come.
    QTest::newRow("$client watch | sed -n '/^z/{p;q}'") << "z = 0\n";
}

void ClientStreamsTest::readerThatLeavesIsNoFailure()
{
    // More than a pipe holds.
    const QString text(200000, 'x');
    m_fixture.service.replyWith(QStringLiteral("({'a': <'%1'>, 'z': <0>},)").arg(text));
    const Outcome outcome = runInShell(QTest::currentDataTag());
    QTEST(outcome.output, "output");
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 0);
}

void ClientStreamsTest::resultsThatCannotBeWrittenAreAFailure_data()
{
    QTest::addColumn<QString>("reason");

    QTest::newRow("$client get >/dev/full") << "No space left on device";
    QTest::newRow("$client watch >/dev/full") << "No space left on device";
    QTest::newRow("$client get >&-") << "Bad file descriptor";
    QTest::newRow("$client check <&- >&-") << "Bad file descriptor";
}

void ClientStreamsTest::resultsThatCannotBeWrittenAreAFailure()
{
    QFETCH(QString, reason);
    const Outcome outcome = runInShell(QTest::currentDataTag());
    QCOMPARE(outcome.errors.section('\n', 0, 0),
             "managed-configuration: cannot write to standard output: " + reason);
    QCOMPARE(outcome.status, 74);
}

void ClientStreamsTest::closedStreamsAreLeftAlone()
{
    QCOMPARE(runInShell("$client get nothing <&- >&- 2>&-").status, 66);
}

void ClientStreamsTest::coloursAreForTerminals_data()
{
    QTest::addColumn<bool>("hasColours");

    QTest::newRow("TERM=xterm $client check | cat") << false;
    QTest::newRow("TERM=xterm $client get x 2>&1 | cat") << false;
    QTest::newRow("NO_COLOR=1 TERM=xterm $client check") << false;
    QTest::newRow("NO_COLOR=1 TERM=xterm $client get x") << false;
    QTest::newRow("TERM=dumb $client check") << false;
    QTest::newRow("NO_COLOR= TERM=xterm $client check") << true;
    QTest::newRow("NO_COLOR= TERM=xterm $client get x >/dev/null") << true;
}

void ClientStreamsTest::coloursAreForTerminals()
{
    QFETCH(bool, hasColours);
    // script(1) runs the command on a terminal of its own.
    const QString command = QTest::currentDataTag();
    const QString text = runInShell("script -qc '" + command + "' /dev/null").output.remove('\r');
    QVERIFY2(text.contains("object path: ") || text.contains("no such path"), qPrintable(text));
    QCOMPARE(text.contains("\033["), hasColours);
    // Each colour ends with its line.
    QCOMPARE(text.count("\033[0m\n"), text.count("\033[") / 2);
}

TARNVEL_BUS_TEST_MAIN(ClientStreamsTest)

#include "client_streams_test.moc"
