// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "program.h"

#include <QtCore/QRegularExpression>

using namespace Tarnvel::Testing;

namespace {

const auto client = QStringLiteral(
    "managed-configuration --organization acme.labs --application=viewer --timeout=20");

// Prints what bash would offer after the line "$1".
const char script[] = R"(
program=${1%% *}
source "$completions/$program"
# The builtin works only while bash itself asks for completions.
compopt() { :; }
COMP_LINE=$1
COMP_POINT=${#1}
COMP_TYPE=9
COMP_KEY=9
read -ra COMP_WORDS <<<"$1"
[[ $1 == *' ' ]] && COMP_WORDS+=("")
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
function=$(complete -p "$program" | sed 's/.*-F \([^ ]*\).*/\1/')
"$function" "$program" "${COMP_WORDS[-1]}" "${COMP_WORDS[-2]}"
printf '%s\n' "${COMPREPLY[@]}"
)";

} // namespace

class CompletionTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void argumentsAreCompleted_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("offered");

        const QPair<const char *, const char *> clientRows[] {
            {" ", "check get list set watch"},
            {" w", "watch"},
            {" --", "--application --help --organization --timeout --version"},
            {" get --", "--application --help --organization --raw --timeout --type --version"},
            {" set --f", "--force --from"},
            {" set --d", "--dry-run"},
            {" set --from /etc/passw", "/etc/passwd"},
            {" --from x set th", ""},
            {" --timeout ", ""},
            {" get ", "names theme two\\ words window window/deep window/deep/x window/width"},
            {" get window/w", "window/width"},
            {" --timeout 20 get t", "theme two\\ words"},
            {" set th", "theme="},
            {" set theme=x n", "names="},
            {" set x:", "bool= bools= configuration= int= ints= string= strings="},
            {" set x:in", "int= ints="},
            {" set theme=", ""},
            {" list window/w", "window/width"},
            {" watch window/w", "window/width"},
            {" watch --j", "--json"},
            {" check ", ""},
            {" check --s", "--schema"},
            {" check --schema /etc/passw", "/etc/passwd"},
        };
        for (const auto &[line, offered] : clientRows)
            QTest::newRow(line) << client + line << offered;

        const QPair<const char *, const char *> sandboxRows[] {
            {" ",
             "-- --check --expect --format --help --list-faults --log --scenario --strict "
             "--version"},
            {" --l", "--list-faults --log"},
            {" --format ", "json text"},
            {" --format json --c", "--check"},
            {" --scenario /etc/passw", "/etc/passwd"},
            {" --log x -- managed-configuration-sand", "managed-configuration-sandbox"},
            {" -- ls /etc/passw", "/etc/passwd"},
        };
        for (const auto &[line, offered] : sandboxRows)
            QTest::newRow(line) << QString("managed-configuration-sandbox") + line << offered;

        const QPair<const char *, const char *> schemaRows[] {
            {" ", "check docs header infer scenario"},
            {" -", "--application --class --help --output --version"},
            {" header --c", "--class"},
            {" header --class ", ""},
            {" -o x d", "docs"},
            {" docs /etc/passw", "/etc/passwd"},
            {" docs -o /etc/passw", "/etc/passwd"},
        };
        for (const auto &[line, offered] : schemaRows)
            QTest::newRow(line) << QString("managed-configuration-schema") + line << offered;
    }

    void argumentsAreCompleted()
    {
        QFETCH(QString, line);
        QFETCH(QString, offered);
        m_service.replyWith(
            "({'theme': <'x\": '>, 'two words': <1>, 'a/b': <1>, 'q\"': <@a{sv} {'no': <1>}>, "
            "'names': <['n\": 1', 'm']>, 'window': <@a{sv} {'width': <1>, 'deep': <@a{sv} "
            "{'x': <true>}>}>},)");
        QCOMPARE(complete(line), offered);
        QCOMPARE(complete(line, "source /usr/share/bash-completion/bash_completion"), offered);
    }

    void pathsAreNotOfferedWithoutAService()
    {
        m_service.stop();
        QCOMPARE(complete(client + " get "), "");
    }

private:
    static QString complete(const QString &line, const QString &setUp = QString())
    {
        Program shell("/bin/bash");
        shell.setVariable("completions", COMPLETIONS);
        shell.setVariable("PATH", INSTALLED_PROGRAMS ":" + qEnvironmentVariable("PATH"));
        const Outcome outcome = shell.run({"--norc", "-c", setUp + script, "bash", line});
        QStringList words = (outcome.output + outcome.errors).split('\n', Qt::SkipEmptyParts);
        words.sort();
        // A file may have a backup, such as /etc/passwd-.
        return words.filter(QRegularExpression("[^-]$|^--$")).join(' ');
    }
};

TARNVEL_BUS_TEST_MAIN(CompletionTest)

#include "completion_test.moc"
