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
    void theWordsOfTheClientAreCompleted_data();
    void theWordsOfTheClientAreCompleted();
    void pathsAreNotOfferedWithoutAService();
    void theWordsOfTheSandboxAreCompleted_data();
    void theWordsOfTheSandboxAreCompleted();

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

void CompletionTest::theWordsOfTheClientAreCompleted_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("offered");

    QTest::newRow("commands") << " "
                              << "check get set watch";
    QTest::newRow("beginning of a command") << " w"
                                            << "watch";
    QTest::newRow("options") << " --"
                             << "--application --help --organization --timeout --version";
    QTest::newRow("options of get")
        << " get --"
        << "--application --help --organization --timeout --type --version";
    QTest::newRow("value of an option") << " --timeout "
                                        << "";
    QTest::newRow("paths") << " get "
                           << "names theme two\\ words window window/deep "
                              "window/deep/x window/width";
    QTest::newRow("beginning of a path") << " get window/w"
                                         << "window/width";
    QTest::newRow("paths behind an option") << " --timeout 5 get t"
                                            << "theme two\\ words";
    QTest::newRow("paths to set") << " set th"
                                  << "theme=";
    QTest::newRow("second path to set") << " set theme=x n"
                                        << "names=";
    QTest::newRow("types") << " set x:"
                           << "bool= bools= configuration= int= ints= string= strings=";
    QTest::newRow("beginning of a type") << " set x:in"
                                         << "int= ints=";
    QTest::newRow("value") << " set theme="
                           << "";
    QTest::newRow("words of watch") << " watch "
                                    << "";
}

void CompletionTest::theWordsOfTheClientAreCompleted()
{
    QFETCH(QString, line);
    QFETCH(QString, offered);
    m_fixture.service.answerWith(
        "({'theme': <'x\": '>, 'two words': <1>, 'a/b': <1>, 'q\"': <@a{sv} {'no': <1>}>, "
        "'names': <['n\": 1', 'm']>, 'window': <@a{sv} {'width': <1>, 'deep': <@a{sv} "
        "{'x': <true>}>}>},)");
    const QString whole = "managed-configuration --organization acme.labs --application=viewer";
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

void CompletionTest::theWordsOfTheSandboxAreCompleted_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("offered");

    QTest::newRow("options")
        << " "
        << "-- --check --expect --help --list-faults --log --scenario --version";
    QTest::newRow("beginning of an option") << " --l"
                                            << "--list-faults --log";
    QTest::newRow("file") << " --scenario /etc/passw"
                          << "/etc/passwd";
    QTest::newRow("command") << " --log x -- managed-configuration-sand"
                             << "managed-configuration-sandbox";
    QTest::newRow("words of the command") << " -- ls /etc/passw"
                                          << "/etc/passwd";
}

void CompletionTest::theWordsOfTheSandboxAreCompleted()
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
