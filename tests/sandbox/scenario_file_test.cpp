// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "report/variant_json.h"
#include "scenario/scenario_reader.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtTest/QTest>

#include <array>

using namespace Tarnvel::Sandbox;
using namespace Tarnvel::Tools;

namespace {

const char diagnosticsFile[] = SOURCE_DIR "/tests/sandbox/scenarios/diagnostics.txt";
const char everyMember[] = SOURCE_DIR "/tests/sandbox/scenarios/every_member.json";

// A scenario of one application whose configuration begins at the start of line 2.
QByteArray scenarioOf(const QByteArray &configuration)
{
    return R"({"applications": [{"organization": "acme", "application": "viewer", "configuration":)"
           "\n"
        + configuration + "}]}";
}

QByteArray nested(int count, const char *begin, const QByteArray &middle, const char *end)
{
    return QByteArray(begin).repeated(count) + middle + QByteArray(end).repeated(count);
}

QString printed(const Variant &value)
{
    g_autofree gchar *text = g_variant_print(value.get(), TRUE);
    return QString::fromUtf8(text);
}

QString textOf(const QVector<Failure> &failures)
{
    QStringList texts;
    for (const Failure &failure : failures)
        texts << failure.text();
    return texts.join('\n');
}

QByteArray contentOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Whether \a text is a scenario. If not, each diagnostic has a location, and they are in order.
bool isAccepted(const QByteArray &text)
{
    static const QRegularExpression form(":([1-9][0-9]*):([1-9][0-9]*)$");
    Scenario scenario;
    const QVector<Failure> failures = parseScenario(everyMember, text, &scenario);
    QPair<int, int> last;
    for (const Failure &failure : failures) {
        const QRegularExpressionMatch match = form.match(failure.location);
        const QPair<int, int> location(match.captured(1).toInt(), match.captured(2).toInt());
        if (!match.hasMatch() || location < last)
            qFatal("wrong location: %s", qPrintable(failure.text()));
        last = location;
    }
    return failures.isEmpty();
}

void addRefused(const QByteArray &name, const QByteArray &text, const QByteArray &diagnostics)
{
    QTest::newRow(name.constData()) << text << QString::fromUtf8(diagnostics);
}

// Of the JSON itself.
void addSyntaxErrors()
{
    const auto row = addRefused;
    row("empty file", "", "1:1: unexpected end of the file");
    row("blank file", " \n\t\r\n  ", "3:3: unexpected end of the file");
    row("broken line", "{\n  \"applications\" 1\n}", "2:18: expected \":\"");
    row("characters are counted", "{\"üüü\": [1 2]}", "1:12: expected \",\" or \"]\"");
    row("tabs are characters", "{\n\t\t1}", "2:3: expected the name of a member");
    row("no comma between members", "{\"a\": 1\n\"b\": 2}", "2:1: expected \",\" or \"}\"");
    row("two commas", "[1,,2]", "1:4: expected a value");
    row("more after the end", "{}\n\n {}", "3:2: unexpected text after the end");
    row("a comment", "// x\n{}", "1:1: expected a value");
    row("a word", "[\n nul]", "2:2: expected a value");
    row("a long word", "[truely]", "1:6: expected \",\" or \"]\"");
    row("leading zero", "[01]", "1:3: expected \",\" or \"]\"");
    row("no fraction", "[1.]", "1:4: expected digits after the decimal point");
    row("no exponent", "[1e+]", "1:5: expected digits in the exponent");
    row("no double", "[1, -1e309]", "1:5: number too large");
    row("unterminated string", "{\"a\":\n \"abc", "2:2: unterminated string");
    row("unterminated key", "{\n\"a: 1}", "2:1: unterminated string");
    row("tab in a string", "[\"a\tb\"]", "1:4: control character in a string");
    row("no escape", "[\"a\\x\"]", "1:4: unknown escape sequence");
    row("no digits", "[\"a\\u12g4\"]", "1:4: expected four hexadecimal digits after \"\\u\"");
    row("first surrogate alone", "[\"a\\ud83d\\u0041\"]", "1:4: lone surrogate in a string");
    row("second surrogate alone", "[\"a\\ude00\"]", "1:2: U+0000 or lone surrogate in a string");
    row("byte that is not UTF-8", "[\"ü\xff\"]", "1:4: invalid UTF-8");
    row("surrogate in UTF-8", "[\"\xed\xa0\x80\"]", "1:3: invalid UTF-8");
    row("byte outside a string", "[\xff]", "1:2: expected a value");
    row("U+0000 after the end", QByteArray("{}\n\0", 4), "2:1: U+0000 is not allowed");
    row("U+0000 in a string", QByteArray("[\"a\0\"]", 6), "1:4: U+0000 is not allowed");
    row("U+0000 after another error", QByteArray("[1 2\0]", 6), "1:4: expected \",\" or \"]\"");
    row("UTF-16", QByteArray("\xff\xfe{\0}\0", 6), "1:1: expected a value");
    row("duplicate members", R"([{"a": {"b": 1, "c": {}, "\u0062": 2}, "b": 1, "a": 3}, x])",
        "1:26: duplicate member \"b\"\n1:48: duplicate member \"a\"\n1:57: expected a value");
    row("very deep", nested(100000, "[{\"a\":", "", ""),
        "1:385: more than 128 nested lists and objects");
    row("as deep as can be", nested(128, "[", "", "]"), "1:1: expected an object, found a list");
    row("byte order mark", "\xef\xbb\xbf{}", "1:1: expected a value");
}

// Of what D-Bus cannot carry.
void addLimits()
{
    addRefused("too large",
               scenarioOf("{\"a\": \"" + QByteArray(32 * 1024 * 1024 - 88, 'x') + "\"}"),
               "2:1: D-Bus limits a message to 32 MiB");
    const QByteArray tooDeep = "a message to 64 nested containers; each configuration takes 3";
    addRefused("configurations", scenarioOf(nested(22, "{\"n\": ", "1", "}")),
               "2:127: D-Bus limits " + tooDeep);

    const auto row = [](const QByteArray &text, const QByteArray &limit) {
        addRefused(text, scenarioOf("{\"n\": {\"$gvariant\": \"" + text + "\"}}"),
                   "2:21: D-Bus limits " + limit);
    };
    row(nested(62, "<", "1", ">"), tooDeep);
    row(nested(61, "<", "[1]", ">"), tooDeep);
    row('@' + QByteArray(32, 'a') + nested(30, "(", "i", ")") + " []", tooDeep);
    row('@' + QByteArray(30, 'a') + nested(29, "(", "a{sv}", ")") + " []", tooDeep);

    const QByteArray tooLong = "a signature to 255 characters";
    const QByteArray tooNested = "a signature to 32 nested arrays and 32 structures";
    row("@a(" + QByteArray(253, 'y') + ") []", tooLong);
    row("signature '" + QByteArray(256, 'i') + '\'', tooLong);
    row('@' + QByteArray(33, 'a') + "i []", tooNested);
    row(nested(33, "(", "1", ",)"), tooNested);
    row("(1, signature '" + QByteArray(33, 'a') + "i')", tooNested);
    row("[signature '', '" + nested(33, "(", "i", ")") + "']", tooNested);
}

void addDiagnosticsOfFile()
{
    QByteArray scenario;
    QByteArray row;
    QByteArrayList diagnostics;
    const QByteArrayList lines = contentOf(diagnosticsFile).split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("  ")) {
            diagnostics << line.mid(2);
            continue;
        }
        if (!diagnostics.isEmpty())
            addRefused(row, QByteArray(scenario).replace('@', '\n' + row), diagnostics.join('\n'));
        diagnostics.clear();
        if (line.startsWith("= ") || line.startsWith("~ "))
            scenario = line.mid(2);
        row = line;
    }
}

} // namespace

class ScenarioFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aValueIsWrittenAsItIsRead_data();
    void aValueIsWrittenAsItIsRead();
    void allMembersOfAnApplicationAreRead();
    void allFaultsAreRead();
    void anEditedFileIsReadLikeANewOne();
    void allDiagnosticsHaveLocations_data();
    void allDiagnosticsHaveLocations();
    void noBrokenScenarioBreaksTheReader();
};

void ScenarioFileTest::aValueIsWrittenAsItIsRead_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("written");

    const auto row = [](const QByteArray &json, const QByteArray &value,
                        const char *written = nullptr) {
        QTest::newRow(json.constData())
            << json << QString::fromUtf8(value) << (written ? QByteArray(written) : json);
    };
    row("-2147483648", "-2147483648");
    row("2147483647", "2147483647");
    row("-0", "0", "0");
    row("true", "true");
    row("false", "false");
    row(R"("")", "''");
    row(R"("\u00fc\ud83d\ude00\u0001/[]")", "'ü😀\\u0001/[]'", R"("ü😀\u0001/[]")");
    // No byte-order mark where text begins: it is only one at the beginning of a file.
    row("\"\xef\xbb\xbf\"", "'\\ufeff'");
    row("{\"a\":[\"\xef\xbb\xbfx\"],\"\xef\xbb\xbf"
        "a\":1}",
        "{'a': <['\\ufeffx']>, '\\ufeffa': <1>}");
    row("[]", "@as []");
    row("[1,-1]", "[1, -1]");
    row("[true,false]", "[true, false]");
    row(R"(["","x"])", "['', 'x']");
    row("{}", "@a{sv} {}");
    row(R"({"":1,"$type":"i","a":{"b":[2]}})", "{'': <1>, '$type': <'i'>, 'a': <{'b': <[2]>}>}");
    row(R"({"b": 1, "a": {"d": 1, "c": 2}})", "{'a': <{'c': <2>, 'd': <1>}>, 'b': <1>}",
        R"({"a":{"c":2,"d":1},"b":1})");

    const QByteArray values =
        "byte 0x00|byte 0xff|int16 -32768|int16 32767|uint16 65535|uint32 4294967295|"
        "int64 -9223372036854775808|uint64 18446744073709551615|0.10000000000000001|-125.0|inf|"
        "objectpath '/'|objectpath '/a/b_1'|signature ''|signature 'a{sv}(ih)'|<1>|<<@as []>>|"
        "[byte 0x01, 0x02]|@ay []|@an []|[objectpath '/']|[<1>, <[true]>, <byte 0x01>]|"
        "[@ai [], [1]]|('x',)|(1, (true, 0.5), @as [])|[(1, 2), (3, 4)]|@a{si} {}|"
        "{'b': 1, '': 2}|{objectpath '/a': 1}|{signature 'ii': 1}|{2: 'x', 1: 'y'}|{1: <'x'>}|"
        "{true: @ax []}|[{'a': <1>}]|{'$gvariant': <1>}";
    // As deep as D-Bus allows.
    const QByteArrayList texts = values.split('|')
        + QByteArrayList {'@' + QByteArray(32, 'a') + nested(29, "(", "i", ")") + " []",
                          '@' + QByteArray(29, 'a') + nested(29, "(", "a{sv}", ")") + " []",
                          nested(60, "<", "[1]", ">")};
    for (const QByteArray &value : texts)
        row(QByteArray("{\"$gvariant\":\"") + value + "\"}", value);
    row(nested(20, "{\"n\":", "[1]", "}"), nested(20, "{'n': <", "[1]", ">}"));
    row(R"({"$gvariant": " 7 "})", "7", "7");
    row(R"({"$gvariant": "@ai []"})", "@ai []", "[]");
    row(R"({"$gvariant": "{'b': <1>, 'a': <{'d': <1>, 'c': <2>}>}"})",
        "{'a': <{'c': <2>, 'd': <1>}>, 'b': <1>}", R"({"a":{"c":2,"d":1},"b":1})");
}

void ScenarioFileTest::aValueIsWrittenAsItIsRead()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, value);

    Scenario scenario;
    const QByteArray text = scenarioOf("{\"a\": " + json + '}');
    QCOMPARE(textOf(parseScenario("w.json", text, &scenario)), QString());
    QCOMPARE(scenario.size(), 1);
    const Variant found = valueAt(scenario.first().configuration, {"a"});
    QVERIFY(found);
    QCOMPARE(printed(found), value);
    QTEST(toJsonText(found.get()).toUtf8(), "written");
}

void ScenarioFileTest::allMembersOfAnApplicationAreRead()
{
    Scenario scenario;
    QCOMPARE(textOf(readScenario(everyMember, &scenario)), QString());
    QCOMPARE(scenario.keys(),
             QStringList(
                 {"/acme_2elabs_2eeditor", "/acme_2eplayer", "/acme_2ereader", "/acme_2eviewer"}));
    const Application player = scenario.value("/acme_2eplayer");
    QVERIFY(player.isConfigurable && !player.users && player.locked.isEmpty());
    QVERIFY(player.allowed.isEmpty() && player.faults.isEmpty());
    QCOMPARE(printed(player.configuration), QString("@a{sv} {}"));
    const Application editor = scenario.value("/acme_2elabs_2eeditor");
    QCOMPARE(editor.name, QString("acme.labs/editor"));
    QVERIFY(editor.users && editor.users->isEmpty());

    const Application application = scenario.value("/acme_2eviewer");
    QVERIFY(!application.isConfigurable && application.users);
    QCOMPARE(*application.users, QVector<quint32>({0, 1000, 4294967294}));
    QCOMPARE(application.locked, QStringList({"network/proxy", "theme"}));
    QStringList allowed;
    for (const AllowedValues &values : application.allowed) {
        QStringList all;
        for (const Variant &value : values.values)
            all << printed(value);
        allowed << QStringLiteral("%1: %2, %3 to %4")
                       .arg(values.path, all.join(' '))
                       .arg(values.minimum)
                       .arg(values.maximum);
    }
    QCOMPARE(
        allowed,
        QStringList({"theme: 'light' 'dark', -2147483648 to 2147483647",
                     "flags: true, -2147483648 to 2147483647",
                     "sizes: 600 800, -2147483648 to 2147483647", "zoom: , 25 to 400",
                     "network/nested/depth: , -1 to 2147483647", "scale: , -2147483648 to 10"}));
}

void ScenarioFileTest::allFaultsAreRead()
{
    Scenario scenario;
    QCOMPARE(textOf(readScenario(everyMember, &scenario)), QString());
    QStringList faults;
    for (const Fault &fault : scenario.value("/acme_2eviewer").faults)
        faults << QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8 %9")
                      .arg(faultName(fault.kind), fault.method)
                      .arg(fault.call)
                      .arg(fault.time)
                      .arg(fault.error, fault.message)
                      .arg(fault.seconds)
                      .arg(fault.count)
                      .arg(fault.configuration ? printed(fault.configuration) : "-");
    QCOMPARE(
        faults,
        QStringList(
            {("error GetConfiguration 2 0 org.brenvik.ManagedConfiguration.Error.Forbidden "
              "not today 0 0 -"),
             "error ChangeConfiguration 0 0 com.acme.Error error injected by the sandbox 0 0 -",
             "delay ChangeConfiguration 0 0   2.5 0 -",
             "no-reply GetConfiguration 2147483647 0   0 0 -",
             "wrong-signature GetConfiguration 0 0   0 0 -",
             "extra-arguments GetConfiguration 0 0   0 0 -",
             "too-large GetConfiguration 0 0   0 0 -", "exit ChangeConfiguration 1 0   0 0 -",
             "exit  0 0   0 0 -", "restart ChangeConfiguration 0 0   0.5 0 -",
             "restart  0 86400   0 0 -", "bus-death GetConfiguration 0 0   0 0 -",
             "bus-death  0 10   0 0 -", "replace  0 1.5   0 0 {'theme': <'dark'>}",
             "announce  0 1   0 0 -", "announce-twice  0 1   0 0 -", "flood  0 1   0 100000 -",
             "spoofed-signal  0 1   0 0 -"}));
}

void ScenarioFileTest::anEditedFileIsReadLikeANewOne()
{
    EntryCache cache;
    for (const char *configuration :
         {R"({"a": 1, "n": {"a": 1, "b": [1, 2]}})", R"({"a": 2, "n": {"a": 1, "b": [1, 2]}})",
          R"({"a": 2, "n": {"a": 1, "b": [1]}})", R"({"b": [1], "a":  2})",
          R"({"b": [1], "a": null, "c": {"d": [null]}})",
          R"({"b": [1], "a": null, "c": {"d": [null]}})", R"({"b": [1], "a": 1})", "{}"}) {
        const QByteArray text = scenarioOf(configuration);
        Diagnostics diagnostics("w.json", text);
        Scenario edited;
        parseScenario(text, &edited, &diagnostics, &cache);
        Scenario fresh;
        QCOMPARE(textOf(diagnostics.failures(EXIT_FAILURE)),
                 textOf(parseScenario("w.json", text, &fresh)));
        QCOMPARE(edited.size(), fresh.size());
        if (!fresh.isEmpty())
            QCOMPARE(printed(edited.first().configuration), printed(fresh.first().configuration));
    }
}

void ScenarioFileTest::allDiagnosticsHaveLocations_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    addSyntaxErrors();
    addLimits();
    addDiagnosticsOfFile();
}

void ScenarioFileTest::allDiagnosticsHaveLocations()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);

    Scenario scenario;
    QCOMPARE(textOf(parseScenario("w.json", scenarioOf("{}"), &scenario)), QString());
    const QVector<Failure> failures = parseScenario("w.json", text, &scenario);
    QCOMPARE(textOf(failures).remove("w.json:"), expected);
    QCOMPARE(failures.first().status, 125);
    // Unchanged.
    QCOMPARE(scenario.keys(), QStringList("/acme_2eviewer"));
}

void ScenarioFileTest::noBrokenScenarioBreaksTheReader()
{
    constexpr std::array others {'"', '{', ']', ',', '0', '\0', '\xff'};
    const QByteArray whole = contentOf(everyMember).trimmed();
    QVERIFY(isAccepted(whole));
    int accepted = 0;
    for (int index = 0; index < whole.size(); ++index) {
        const QByteArray beginning = whole.left(index);
        const QByteArray end = whole.mid(index + 1);
        QVERIFY(!isAccepted(beginning));
        accepted += isAccepted(beginning + end);
        accepted += isAccepted(beginning + others[size_t(index) % others.size()] + end);
    }
    // Some only lack a space, or differ only in a string.
    QVERIFY(accepted > 0);
    QVERIFY(accepted < whole.size());
}

QTEST_GUILESS_MAIN(ScenarioFileTest)

#include "scenario_file_test.moc"
