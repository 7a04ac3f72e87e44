// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_fixture.h"
#include "program.h"

#include <QtCore/QRegularExpression>
#include <QtTest/QTest>

using namespace Tarnvel::Testing;

namespace {

const char package[] = "/usr/share/bash-completion/bash_completion";

// Prints what bash would offer behind the line "$1" of the program "$2".
const char script[] = R"(
source "$completions/$2"
# The builtin works only while bash itself asks for completions.
compopt() { :; }
COMP_LINE=$1
COMP_POINT=${#1}
COMP_TYPE=9
COMP_KEY=9
read -ra COMP_WORDS <<<"$1"
[[ $1 == *' ' ]] && COMP_WORDS+=("")
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
function=$(complete -p "$2" | sed 's/.*-F \([^ ]*\).*/\1/')
"$function" "$2" "${COMP_WORDS[-1]}" "${COMP_WORDS[-2]}"
printf '%s\n' "${COMPREPLY[@]}"
)";

} // namespace

class CompletionTest : public QObject
{
    Q_OBJECT

public:
    explicit CompletionTest(BusFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void clientArgumentsAreCompleted_data();
    void clientArgumentsAreCompleted();
    void pathsAreNotOfferedWithoutAService();
    void sandboxArgumentsAreCompleted_data();
    void sandboxArgumentsAreCompleted();

private:
    QStringList complete(const QString &program, const QString &line, bool hasPackage);

    BusFixture &m_fixture;
};

QStringList CompletionTest::complete(const QString &program, const QString &line, bool hasPackage)
{
    const QString setUp = hasPackage ? QStringLiteral("source %1\n").arg(package)
                                     : QStringLiteral("\n");
    Program shell("/bin/bash");
    shell.setVariable("completions", COMPLETIONS);
    shell.setVariable("PATH", INSTALLED_PROGRAMS ":" + qEnvironmentVariable("PATH"));
    const Outcome outcome = shell.run({"--norc", "-c", setUp + script, "bash", line, program});
    QStringList words = (outcome.output + outcome.errors).split('\n', Qt::SkipEmptyParts);
    words.sort();
    return words;
}

void CompletionTest::clientArgumentsAreCompleted_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("offered");

    const QPair<const char *, const char *> rows[] {
        {" ", "check get set watch"},
        {" w", "watch"},
        {" --", "--application --help --organization --timeout --version"},
        {" get --", "--application --help --organization --timeout --type --version"},
        {" --timeout ", ""},
        {" get ", "names theme two\\ words window window/deep window/deep/x window/width"},
        {" get window/w", "window/width"},
        {" --timeout 20 get t", "theme two\\ words"},
        {" set th", "theme="},
        {" set theme=x n", "names="},
        {" set x:", "bool= bools= configuration= int= ints= string= strings="},
        {" set x:in", "int= ints="},
        {" set theme=", ""},
        {" watch ", ""},
    };
    for (const auto &[line, offered] : rows)
        QTest::newRow(line) << line << offered;
}

void CompletionTest::clientArgumentsAreCompleted()
{
    QFETCH(QString, line);
    QFETCH(QString, offered);
    m_fixture.service.replyWith(
        "({'theme': <'x\": '>, 'two words': <1>, 'a/b': <1>, 'q\"': <@a{sv} {'no': <1>}>, "
        "'names': <['n\": 1', 'm']>, 'window': <@a{sv} {'width': <1>, 'deep': <@a{sv} "
        "{'x': <true>}>}>},)");
    const QString whole = "managed-configuration --organization acme.labs --application=viewer "
                          "--timeout=20";
    for (const bool hasPackage : {false, true})
        QCOMPARE(complete("managed-configuration", whole + line, hasPackage).join(' '), offered);
}

void CompletionTest::pathsAreNotOfferedWithoutAService()
{
    m_fixture.service.stop();
    const QStringList offered = complete(
        "managed-configuration",
        "managed-configuration --organization acme.labs --application viewer get ", false);
    QVERIFY(m_fixture.service.start());
    QCOMPARE(offered, QStringList());
}

void CompletionTest::sandboxArgumentsAreCompleted_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("offered");

    const QPair<const char *, const char *> rows[] {
        {" ", "-- --check --expect --help --list-faults --log --scenario --version"},
        {" --l", "--list-faults --log"},
        {" --scenario /etc/passw", "/etc/passwd"},
        {" --log x -- managed-configuration-sand", "managed-configuration-sandbox"},
        {" -- ls /etc/passw", "/etc/passwd"},
    };
    for (const auto &[line, offered] : rows)
        QTest::newRow(line) << line << offered;
}

void CompletionTest::sandboxArgumentsAreCompleted()
{
    QFETCH(QString, line);
    QFETCH(QString, offered);
    const QString program = "managed-configuration-sandbox";
    for (const bool hasPackage : {false, true}) {
        const QStringList words = complete(program, program + line, hasPackage);
        // There may be a copy of the file beside it.
        QCOMPARE(words.filter(QRegularExpression("[^-]$|^--$")).join(' '), offered);
    }
}

TARNVEL_BUS_TEST_MAIN(CompletionTest)

#include "completion_test.moc"
