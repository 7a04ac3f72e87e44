// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "endpoint.h"
#include "scenario/scenario.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <array>

using namespace Tarnvel::Sandbox;

namespace {

const char everyMember[] = SOURCE_DIR "/tests/sandbox/scenarios/every_member.json";

// A scenario of one application, whose further members are all of line 2.
QByteArray scenarioWith(const QByteArray &members)
{
    return R"({"applications": [{"organization": "acme", "application": "viewer",)"
           "\n"
        + members + "}]}";
}

// A scenario of one application whose configuration begins at the start of line 2.
QByteArray scenarioOf(const QByteArray &configuration)
{
    return R"({"applications": [{"organization": "acme", "application": "viewer", "configuration":)"
           "\n"
        + configuration + "}]}";
}

// A scenario of one application with one fault, which begins at the start of line 2.
QByteArray scenarioWithFault(const QByteArray &fault)
{
    return R"({"applications": [{"organization": "acme", "application": "viewer",)"
           R"( "configuration": {}, "faults": [)"
           "\n"
        + fault + "]}]}";
}

// A value \a value of the D-Bus type \a type, which begins at the start of line 2.
QByteArray scenarioOfTyped(const QByteArray &type, const QByteArray &value)
{
    return scenarioOf("{\"a\":\n{\"$type\": \"" + type + "\", \"value\":\n" + value + "}}");
}

QByteArray repeated(const char *text, int count)
{
    return QByteArray(text).repeated(count);
}

QByteArray nested(int levels, const QByteArray &innermost = R"({"n": [1]})")
{
    return repeated(R"({"n": )", levels - 1) + innermost + repeated("}", levels - 1);
}

QString printed(const Variant &value)
{
    g_autofree gchar *text = g_variant_print(value.get(), TRUE);
    return QString::fromUtf8(text);
}

QByteArray contentOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Parses each of \a texts; what is refused, is refused with a place.
int countAccepted(const QByteArrayList &texts)
{
    static const QRegularExpression form("^w.json:[1-9][0-9]*:[1-9][0-9]*: [^\\n]+$");
    int count = 0;
    for (const QByteArray &text : texts) {
        Scenario scenario;
        QString mistake;
        if (parseScenario("w.json", text, &scenario, &mistake))
            ++count;
        else if (!form.match(mistake).hasMatch())
            qFatal("no place: %s", qPrintable(mistake));
    }
    return count;
}

} // namespace

class ScenarioFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aConfigurationBecomesWhatDBusCarries_data();
    void aConfigurationBecomesWhatDBusCarries();
    void aTypedValueIsOfItsType_data();
    void aTypedValueIsOfItsType();
    void containersLieAsDeepAsDBusCarriesThem_data();
    void containersLieAsDeepAsDBusCarriesThem();
    void anApplicationHasItsObjectPath_data();
    void anApplicationHasItsObjectPath();
    void aScenarioHoldsItsApplications();
    void whatNoMemberSaysIsNoLimit();
    void allThatAnApplicationCanHaveIsRead();
    void allFaultsAreRead();
    void aByteOrderMarkIsNotPartOfTheText();
    void aMistakeOfSyntaxHasItsPlace_data();
    void aMistakeOfSyntaxHasItsPlace();
    void aMistakeInAnApplicationHasItsPlace_data();
    void aMistakeInAnApplicationHasItsPlace();
    void aMistakeInAConfigurationHasItsPlace_data();
    void aMistakeInAConfigurationHasItsPlace();
    void aMistakeInATypedValueHasItsPlace_data();
    void aMistakeInATypedValueHasItsPlace();
    void aMistakeInAFaultHasItsPlace_data();
    void aMistakeInAFaultHasItsPlace();
    void aConfigurationMayNotBeLargerThanTheBusLetsPass();
    void noBeginningOfAScenarioIsOne();
    void noBrokenScenarioBreaksTheReader();
    void aFileThatCannotBeReadIsNamed();
    void configurationsAreEqualInWhateverOrderTheyWereWritten();

private:
    void checkMistake();
};

// Of the row: its text is refused, and the scenario is left alone.
void ScenarioFileTest::checkMistake()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);

    Scenario scenario;
    QString mistake;
    QVERIFY(parseScenario("w.json", scenarioOf("{}"), &scenario, &mistake));
    QVERIFY(!parseScenario("w.json", text, &scenario, &mistake));
    QCOMPARE(mistake, "w.json:" + expected);
    QCOMPARE(scenario.keys(), QStringList("/acme_2eviewer"));
}

void ScenarioFileTest::aConfigurationBecomesWhatDBusCarries_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("expected");

    QTest::newRow("nothing") << QByteArray("{}") << "@a{sv} {}";
    QTest::newRow("empty key and text") << QByteArray(R"({"": ""})") << "{'': <''>}";
    QTest::newRow("empty list") << QByteArray(R"({"a": []})") << "{'a': <@as []>}";
    QTest::newRow("empty object") << QByteArray(R"({"a": {}})") << "{'a': <@a{sv} {}>}";
    QTest::newRow("least integer") << QByteArray(R"({"a": -2147483648})") << "{'a': <-2147483648>}";
    QTest::newRow("greatest integer")
        << QByteArray(R"({"a": 2147483647})") << "{'a': <2147483647>}";
    QTest::newRow("zero") << QByteArray(R"({"a": 0})") << "{'a': <0>}";
    QTest::newRow("booleans") << QByteArray(R"({"a": true, "b": false})")
                              << "{'a': <true>, 'b': <false>}";
    QTest::newRow("text outside ASCII")
        << QByteArray(R"({"\u00fc": "\ud83d\ude00/[]"})") << QString::fromUtf8("{'ü': <'😀/[]'>}");
    QTest::newRow("lists") << QByteArray(R"({"b": [true, false], "i": [1, -1], "s": ["", "x"]})")
                           << "{'b': <[true, false]>, 'i': <[1, -1]>, 's': <['', 'x']>}";
    QTest::newRow("keys in order") << QByteArray(R"({"b": 1, "a": 2, "B": {"d": 3, "c": [4]}})")
                                   << "{'B': <{'c': <[4]>, 'd': <3>}>, 'a': <2>, 'b': <1>}";
}

void ScenarioFileTest::aConfigurationBecomesWhatDBusCarries()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, expected);

    Scenario scenario;
    QString mistake;
    QVERIFY2(parseScenario("w.json", scenarioOf(json), &scenario, &mistake), qPrintable(mistake));
    QCOMPARE(scenario.size(), 1);
    QCOMPARE(QString::fromUtf8(g_variant_get_type_string(scenario.first().configuration.get())),
             QString("a{sv}"));
    QCOMPARE(printed(scenario.first().configuration), expected);
}

void ScenarioFileTest::aTypedValueIsOfItsType_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *type, const char *value, const char *expected) {
        QTest::addRow("%s %.40s", type, value)
            << QByteArray(type) << QByteArray(value) << QString::fromUtf8(expected);
    };
    row("y", "0", "byte 0x00");
    row("y", "255", "byte 0xff");
    row("n", "-32768", "int16 -32768");
    row("n", "32767", "int16 32767");
    row("q", "0", "uint16 0");
    row("q", "65535", "uint16 65535");
    row("i", "-2147483648", "-2147483648");
    row("i", "2147483647", "2147483647");
    row("u", "-0", "uint32 0");
    row("u", "4294967295", "uint32 4294967295");
    row("x", "-9223372036854775808", "int64 -9223372036854775808");
    row("x", "9223372036854775807", "int64 9223372036854775807");
    row("t", "-0", "uint64 0");
    row("t", "9223372036854775808", "uint64 9223372036854775808");
    row("t", "18446744073709551615", "uint64 18446744073709551615");
    row("d", "0", "0.0");
    row("d", "-1.5e-3", "-0.0015");
    row("d", "1e-400", "0.0");
    row("b", "false", "false");
    row("s", R"("")", "''");
    row("s", R"("\ud83d\ude00")", "'😀'");
    row("o", R"("/")", "objectpath '/'");
    row("g", R"("")", "signature ''");
    row("g", "\"a{sv}(ih)\"", "signature 'a{sv}(ih)'");
    row("v", "[]", "<@as []>");
    row("v", R"({"$type": "v", "value": {"a": 1}})", "<<{'a': <1>}>>");
    row("as", "[]", "@as []");
    row("ay", "[1, 2]", "[byte 0x01, 0x02]");
    row("av", R"([1, [true], {"$type": "y", "value": 1}])", "[<1>, <[true]>, <byte 0x01>]");
    row("aai", "[[], [1]]", "[@ai [], [1]]");
    row("(s)", R"(["x"])", "('x',)");
    row("(i(bb)as)", "[1, [true, false], []]", "(1, (true, false), @as [])");
    row("a(ii)", "[[1, 2], [3, 4]]", "[(1, 2), (3, 4)]");
    row("a{si}", "{}", "@a{si} {}");
    row("a{si}", R"({"b": 1, "": 2})", "{'b': 1, '': 2}");
    row("a{sv}", R"({"$type": "i", "value": 1})", "{'$type': <'i'>, 'value': <1>}");
    row("a{oi}", R"({"/a": 1})", "{objectpath '/a': 1}");
    row("a{gi}", R"({"ii": 1})", "{signature 'ii': 1}");
    row("a{is}", R"([[2, "x"], [1, "y"]])", "{2: 'x', 1: 'y'}");
    row("a{bas}", "[]", "@a{bas} {}");
}

void ScenarioFileTest::aTypedValueIsOfItsType()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, value);
    QFETCH(QString, expected);

    Scenario scenario;
    QString mistake;
    QVERIFY2(parseScenario("w.json", scenarioOfTyped(type, value), &scenario, &mistake),
             qPrintable(mistake));
    QCOMPARE(scenario.size(), 1);
    const Variant found = valueAt(scenario.first().configuration, {"a"});
    QVERIFY(found);
    QCOMPARE(QByteArray(g_variant_get_type_string(found.get())), type);
    QCOMPARE(printed(found), expected);
}

void ScenarioFileTest::containersLieAsDeepAsDBusCarriesThem_data()
{
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<int>("column");

    // The column of what lies too deep, or 0 if nothing does.
    const QByteArray variant = R"({"$type": "v", "value": )";
    const auto variants = [&variant](int count, const QByteArray &innermost) {
        return R"({"n": )" + variant.repeated(count) + innermost + repeated("}", count) + "}";
    };
    const auto typed = [](const QByteArray &type, const QByteArray &value) {
        return nested(2, R"({"n": {"$type": ")" + type + R"(", "value": )" + value + "}}");
    };
    QTest::newRow("21 configurations and a list") << nested(21) << 0;
    QTest::newRow("21 configurations, the last empty") << nested(21, "{}") << 0;
    QTest::newRow("22 configurations") << nested(22) << 6 * 21 + 1;
    QTest::newRow("22 configurations, the last empty") << nested(22, "{}") << 6 * 21 + 1;
    QTest::newRow("variants") << variants(61, "1") << 0;
    QTest::newRow("a list in variants") << variants(60, "[]") << 0;
    QTest::newRow("too many variants") << variants(62, "1") << 7 + variant.size() * 61;
    QTest::newRow("a list in too many variants") << variants(61, "[1]") << 7 + variant.size() * 61;
    QTest::newRow("arrays") << typed(repeated("a", 32) + "i", "[]") << 0;
    QTest::newRow("a type within the bounds")
        << typed(repeated("a", 32) + repeated("(", 26) + "i" + repeated(")", 26), "[]") << 0;
    QTest::newRow("a type that is too deep")
        << typed(repeated("a", 32) + repeated("(", 27) + "i" + repeated(")", 27), "[]") << 13;
    QTest::newRow("an empty dictionary of variants")
        << typed(repeated("a", 29) + repeated("(", 26) + "a{sv}" + repeated(")", 26), "[]") << 0;
    QTest::newRow("an empty dictionary of variants that is too deep")
        << typed(repeated("a", 30) + repeated("(", 26) + "a{sv}" + repeated(")", 26), "[]") << 13;
}

void ScenarioFileTest::containersLieAsDeepAsDBusCarriesThem()
{
    QFETCH(QByteArray, configuration);
    QFETCH(int, column);

    Scenario scenario;
    QString mistake;
    const bool isAccepted = parseScenario("w.json", scenarioOf(configuration), &scenario, &mistake);
    const QString expected = QStringLiteral(
        "w.json:2:%1: too deep: D-Bus carries 64 containers inside one another, and each "
        "configuration takes 3");
    QCOMPARE(mistake, column == 0 ? QString() : expected.arg(column));
    QCOMPARE(isAccepted, column == 0);
}

void ScenarioFileTest::anApplicationHasItsObjectPath_data()
{
    QTest::addColumn<QString>("organization");
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("path");

    QTest::newRow("no names") << ""
                              << ""
                              << "/_2e";
    QTest::newRow("no organization") << ""
                                     << "viewer"
                                     << "/_2eviewer";
    QTest::newRow("no application") << "acme"
                                    << ""
                                    << "/acme_2e";
    QTest::newRow("dots") << "a.b.c"
                          << "d.e"
                          << "/a_2eb_2ec_2ed_2ee";
    QTest::newRow("placeholder") << "x%2"
                                 << "y"
                                 << "/xy_2ey";
    QTest::newRow("plain") << "acme"
                           << "viewer"
                           << "/acme_2eviewer";
}

void ScenarioFileTest::anApplicationHasItsObjectPath()
{
    QFETCH(QString, organization);
    QFETCH(QString, application);
    QTEST(Tarnvel::DBus::applicationPath(organization, application), "path");
}

void ScenarioFileTest::aScenarioHoldsItsApplications()
{
    const QByteArray text = R"({"applications": [
        {"organization": "acme.labs", "application": "viewer",
         "configuration": {"theme": "dark"}, "locked": ["theme", "network/proxy"]},
        {"organization": "acme", "application": "editor", "configuration": {}}]})";
    Scenario scenario;
    QString mistake;
    QVERIFY2(parseScenario("w.json", text, &scenario, &mistake), qPrintable(mistake));
    QCOMPARE(scenario.keys(), QStringList({"/acme_2eeditor", "/acme_2elabs_2eviewer"}));
    const Application editor = scenario.value("/acme_2eeditor");
    QCOMPARE(editor.name, QString("acme/editor"));
    QCOMPARE(editor.locked, QStringList());
    QCOMPARE(printed(editor.configuration), QString("@a{sv} {}"));
    const Application viewer = scenario.value("/acme_2elabs_2eviewer");
    QCOMPARE(viewer.name, QString("acme.labs/viewer"));
    QCOMPARE(viewer.locked, QStringList({"theme", "network/proxy"}));
    QCOMPARE(printed(viewer.configuration), QString("{'theme': <'dark'>}"));

    QVERIFY(parseScenario("w.json", R"({"applications": []})", &scenario, &mistake));
    QVERIFY(scenario.isEmpty());
    QVERIFY(parseScenario("w.json", R"({"applications": [], "$schema": ""})", &scenario, &mistake));
}

void ScenarioFileTest::whatNoMemberSaysIsNoLimit()
{
    Scenario scenario;
    QString mistake;
    QVERIFY2(parseScenario("w.json", scenarioOf("{}"), &scenario, &mistake), qPrintable(mistake));
    QCOMPARE(scenario.size(), 1);
    const Application application = scenario.first();
    QVERIFY(application.isConfigurable);
    QVERIFY(!application.users);
    QVERIFY(application.locked.isEmpty());
    QVERIFY(application.allowed.isEmpty());
    QVERIFY(application.faults.isEmpty());
}

void ScenarioFileTest::allThatAnApplicationCanHaveIsRead()
{
    Scenario scenario;
    QString mistake;
    QVERIFY2(readScenario(everyMember, &scenario, &mistake), qPrintable(mistake));
    QCOMPARE(scenario.keys(), QStringList({"/acme_2elabs_2eeditor", "/acme_2eviewer"}));
    QVERIFY(scenario.first().users);
    QVERIFY(scenario.first().users->isEmpty());

    const Application application = scenario.value("/acme_2eviewer");
    QVERIFY(!application.isConfigurable);
    QVERIFY(application.users);
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
    QString mistake;
    QVERIFY2(readScenario(everyMember, &scenario, &mistake), qPrintable(mistake));
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
             "no-answer GetConfiguration 2147483647 0   0 0 -",
             "wrong-signature GetConfiguration 0 0   0 0 -",
             "further-arguments GetConfiguration 0 0   0 0 -",
             "too-large GetConfiguration 0 0   0 0 -", "exit ChangeConfiguration 1 0   0 0 -",
             "exit  0 0   0 0 -", "restart ChangeConfiguration 0 0   0.5 0 -",
             "restart  0 86400   0 0 -", "bus-death GetConfiguration 0 0   0 0 -",
             "bus-death  0 10   0 0 -", "push  0 1.5   0 0 {'theme': <'dark'>}",
             "announce  0 1   0 0 -", "announce-twice  0 1   0 0 -", "flood  0 1   0 100000 -",
             "spoofed-signal  0 1   0 0 -"}));
}

void ScenarioFileTest::aByteOrderMarkIsNotPartOfTheText()
{
    const QByteArray mark = "\xef\xbb\xbf";
    Scenario scenario;
    QString mistake;
    QVERIFY2(parseScenario("w.json", mark + scenarioOf("{}"), &scenario, &mistake),
             qPrintable(mistake));
    QCOMPARE(scenario.size(), 1);
    QVERIFY(!parseScenario("w.json", mark + "[]", &scenario, &mistake));
    QCOMPARE(mistake, QString("w.json:1:1: a scenario is no object"));
    QVERIFY(!parseScenario("w.json", mark, &scenario, &mistake));
    QCOMPARE(mistake, QString("w.json:1:1: the end comes too early"));
    QVERIFY(!parseScenario("w.json", mark + mark + "{}", &scenario, &mistake));
    QCOMPARE(mistake, QString("w.json:1:1: no value"));
}

void ScenarioFileTest::aMistakeOfSyntaxHasItsPlace_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const QByteArray &text, const QByteArray &expected) {
        QTest::newRow(name) << text << QString::fromUtf8(expected);
    };
    row("empty file", "", "1:1: the end comes too early");
    row("blank file", " \n\t\r\n  ", "3:3: the end comes too early");
    row("broken line", "{\n  \"applications\" 1\n}", "2:18: a \":\" is missing");
    row("characters are counted", "{\"üüü\": [1 2]}", "1:12: a \",\" or a \"]\" is missing");
    row("tabs are characters", "{\n\t\t1}", "2:3: the name of a member is missing");
    row("two halves of a character", "{\"😀\" 1}", "1:7: a \":\" is missing");
    row("comma at the end of an object", "{\"applications\": [],\n}",
        "2:1: the name of a member is missing");
    row("comma at the end of a list", "[1,\n ]", "2:2: no value");
    row("no comma between members", "{\"a\": 1\n\"b\": 2}", "2:1: a \",\" or a \"}\" is missing");
    row("two commas", "[1,,2]", "1:4: no value");
    row("no value of a member", "{\"a\":\n}", "2:1: no value");
    row("key is no string", "{1: 2}", "1:2: the name of a member is missing");
    row("wrong bracket", "[1}", "1:3: a \",\" or a \"]\" is missing");
    row("more after the end", "{}\n\n {}", "3:2: something follows the end");
    row("bracket after the end", "{}}", "1:3: something follows the end");
    row("a comment", "// x\n{}", "1:1: no value");
    row("a word", "[\n nul]", "2:2: no value");
    row("another word", "[true, True]", "1:8: no value");
    row("a long word", "[truely]", "1:6: a \",\" or a \"]\" is missing");
    row("not a number", "[NaN]", "1:2: no value");
    row("plus", "[+1]", "1:2: no value");
    row("only minus", "[-]", "1:2: no value");
    row("leading zero", "[01]", "1:3: a \",\" or a \"]\" is missing");
    row("no digits before the point", "[.5]", "1:2: no value");
    row("no digits behind the point", "[1.]", "1:4: digits are missing behind the decimal point");
    row("no exponent", "[1e]", "1:4: digits are missing in the exponent");
    row("no exponent behind its sign", "[1e+]", "1:5: digits are missing in the exponent");
    row("no double", "[1, -1e309]", "1:5: a number that is too great");
    row("string without its end", "[\"abc\n", "1:6: a control character in a string");
    row("string without its end at the end", "{\"a\":\n \"abc", "2:2: a string without its end");
    row("key without its end", "{\n\"a: 1}", "2:1: a string without its end");
    row("tab in a string", "[\"a\tb\"]", "1:4: a control character in a string");
    row("no escape", "[\"a\\x\"]", "1:4: no such escape sequence");
    row("no digits", "[\"a\\u12g4\"]", "1:4: four hexadecimal digits are missing behind \"\\u\"");
    row("first half alone", "[\"a\\ud83d\"]", "1:4: half a character in a string");
    row("first half before another", "[\"a\\ud83d\\u0041\"]", "1:4: half a character in a string");
    row("second half alone", "[\"a\\ude00\"]", "1:2: half a character in a string");
    row("second half in a key", "{\"a\": 1,\n\"\\ude00\": 1}", "2:1: half a character in a string");
    row("byte that is no UTF-8", "[\"ü\xff\"]", "1:4: not UTF-8");
    row("half a character in UTF-8", "[\"\xed\xa0\x80\"]", "1:3: not UTF-8");
    row("overlong UTF-8", "[\"\xc0\x80\"]", "1:3: not UTF-8");
    row("byte outside a string", "[\xff]", "1:2: no value");
    row("U+0000 after the end", QByteArray("{}\n\0", 4), "2:1: U+0000");
    row("U+0000 in between", QByteArray("[1\0, 2]", 7), "1:3: U+0000");
    row("U+0000 in a string", QByteArray("[\"a\0\"]", 6), "1:4: U+0000");
    row("U+0000 after another mistake", QByteArray("[1 2\0]", 6),
        "1:4: a \",\" or a \"]\" is missing");
    row("only U+0000", QByteArray("\0", 1), "1:1: U+0000");
    row("UTF-16", QByteArray("\xff\xfe{\0}\0", 6), "1:1: no value");
    row("same member twice", "{\"applications\": [],\n  \"applications\": []}",
        "2:3: a second member \"applications\"");
    row("same member in another spelling", "{\"a\": 1, \"\\u0061\": 2}",
        "1:10: a second member \"a\"");
    row("same member twice, deep down", "[{\"a\": {\"b\": 1, \"c\": {}, \"b\": 2}, \"b\": 1}]",
        "1:26: a second member \"b\"");
    row("too deep", repeated("[", 129),
        "1:129: more than 128 lists and objects inside one another");
    row("as deep as can be", repeated("[", 128), "1:129: the end comes too early");
    row("very deep", repeated("[{\"a\":", 100000),
        "1:385: more than 128 lists and objects inside one another");
    row("deep and closed", repeated("[", 128) + repeated("]", 128), "1:1: a scenario is no object");
}

void ScenarioFileTest::aMistakeOfSyntaxHasItsPlace()
{
    checkMistake();
}

void ScenarioFileTest::aMistakeInAnApplicationHasItsPlace_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const QByteArray &text, const QByteArray &expected) {
        QTest::newRow(name) << text << QString::fromUtf8(expected);
    };
    const QByteArray more = "\"configuration\": {},\n";
    row("list", "[]", "1:1: a scenario is no object");
    row("number", "\n 1", "2:2: a scenario is no object");
    row("nothing in it", "\n {}", "2:2: \"applications\" is missing");
    row("no list", "{\"applications\":\n{}}", "2:1: \"applications\" is no list");
    row("unknown member at the top", "{\"applications\": [],\n \"x\": 1}",
        "2:2: \"x\" is no member of a scenario");
    row("unknown member that looks bad", "{\n\"\\n\\u001b\\u2028\": 1}",
        "2:1: \"\uFFFD\uFFFD\uFFFD\" is no member of a scenario");
    row("unknown member with a long name", "{\"" + repeated("x", 81) + "\": 1}",
        "1:2: \"" + repeated("x", 80) + "...\" is no member of a scenario");
    row("schema is no string", "{\"$schema\": 1, \"applications\": []}",
        "1:13: \"$schema\" is no string");
    row("no object", "{\"applications\": [\n1]}", "2:1: an application is no object");
    row("no organization",
        "{\"applications\": [\n  {\"application\": \"a\", \"configuration\": {}}]}",
        "2:3: \"organization\" is missing");
    row("no application",
        "{\"applications\": [\n {\"organization\": \"a\", \"configuration\": {}}]}",
        "2:2: \"application\" is missing");
    row("no configuration",
        "{\"applications\": [\n{\"organization\": \"a\", \"application\": \"b\"}]}",
        "2:1: \"configuration\" is missing");
    row("organization is no string", "{\"applications\": [{\"organization\": 1}]}",
        "1:36: \"organization\" is no string");
    row("application is no string", "{\"applications\": [{\"application\": null}]}",
        "1:35: \"application\" is no string");
    row("unknown member", scenarioWith(more + "\"lock\": []"),
        "3:1: \"lock\" is no member of an application");
    row("no object path",
        "{\"applications\": [\n{\"organization\": \"ä b\", \"application\": \"c\", "
        "\"configuration\": {}}]}",
        "2:1: \"/ä b_2ec\" is no object path");
    row("U+0000 in a name",
        "{\"applications\": [\n{\"organization\": \"a\\u0000\", \"application\": \"c\", "
        "\"configuration\": {}}]}",
        "2:1: \"/a\uFFFD_2ec\" is no object path");
    row("same application twice",
        "{\"applications\": [{\"organization\": \"a.b\", \"application\": \"c\", "
        "\"configuration\": {}},\n {\"organization\": \"a\", \"application\": \"b.c\", "
        "\"configuration\": {}}]}",
        "2:2: a second application at \"/a_2eb_2ec\"");

    row("locked is no list", scenarioWith(more + "\"locked\": \"\""),
        "3:11: \"locked\" is no list");
    row("lock is no string", scenarioWith(more + "\"locked\": [\"a\", 1]"),
        "3:17: a locked path is no string");
    for (const char *lock : {"", "/", "a//b", "a/", "/a"})
        row((QByteArray("lock ") + lock).constData(),
            scenarioWith(more + "\"locked\": [\"a\", \"" + lock + "\"]"),
            QByteArray("3:17: \"") + lock + "\" is not the path of a setting, such as \"a/b\"");
    row("lock with U+0000", scenarioWith(more + "\"locked\": [\"\\u0000\"]"),
        "3:12: \"\uFFFD\" is not the path of a setting, such as \"a/b\"");

    row("configurable is no boolean", scenarioWith(more + "\"configurable\": 0"),
        "3:17: \"configurable\" is no boolean");
    row("users are no list", scenarioWith(more + "\"users\": 0"), "3:10: \"users\" is no list");
    for (const char *user : {"-1", "4294967295", "1.0", "\"root\"", "18446744073709551616"})
        row((QByteArray("user ") + user).constData(),
            scenarioWith(more + "\"users\": [0, " + user + "]"),
            "3:14: a user is no integer from 0 to 4294967294");

    row("allowed is no object", scenarioWith(more + "\"allowed\": []"),
        "3:12: \"allowed\" is no object");
    row("allowed path", scenarioWith(more + "\"allowed\": {\"a/\": [1]}"),
        "3:13: \"a/\" is not the path of a setting, such as \"a/b\"");
    row("allowed twice", scenarioWith(more + "\"allowed\": {\"a\": [1], \"a\": [2]}"),
        "3:23: a second member \"a\"");
    row("allowed is a value", scenarioWith(more + "\"allowed\": {\"a\": 1}"),
        "3:18: the allowed values are neither a list nor a range");
    row("nothing is allowed", scenarioWith(more + "\"allowed\": {\"a\": []}"),
        "3:18: no value is allowed");
    row("two types are allowed", scenarioWith(more + "\"allowed\": {\"a\": [\"x\", false]}"),
        "3:24: a boolean in a list that begins with a string");
    row("a list is allowed", scenarioWith(more + "\"allowed\": {\"a\": [[]]}"),
        "3:19: a list in a list");
    row("a typed value is allowed",
        scenarioWith(more + "\"allowed\": {\"a\": [{\"$type\": \"y\", \"value\": 1}]}"),
        "3:19: an object in a list");
    row("a fraction is allowed", scenarioWith(more + "\"allowed\": {\"a\": [1.5]}"),
        "3:19: 1.5 is no 32-bit integer");
    row("range without ends", scenarioWith(more + "\"allowed\": {\"a\": {}}"),
        "3:18: \"minimum\" or \"maximum\" is missing");
    row("range with more",
        scenarioWith(more + "\"allowed\": {\"a\": {\"minimum\": 1, \"step\": 2}}"),
        "3:33: \"step\" is no member of a range");
    row("range upside down",
        scenarioWith(more + "\"allowed\": {\"a\": {\"minimum\": 1, \"maximum\": 0}}"),
        "3:18: \"minimum\" is greater than \"maximum\"");
    row("minimum is no integer", scenarioWith(more + "\"allowed\": {\"a\": {\"minimum\": 0.5}}"),
        "3:30: \"minimum\" is no 32-bit integer");
    row("maximum is no integer", scenarioWith(more + "\"allowed\": {\"a\": {\"maximum\": \"9\"}}"),
        "3:30: \"maximum\" is no 32-bit integer");
    row("faults are no list", scenarioWith(more + "\"faults\": {}"), "3:11: \"faults\" is no list");
}

void ScenarioFileTest::aMistakeInAnApplicationHasItsPlace()
{
    checkMistake();
}

void ScenarioFileTest::aMistakeInAConfigurationHasItsPlace_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const QByteArray &configuration,
                        const QByteArray &expected) {
        QTest::newRow(name) << scenarioOf(configuration) << QString::fromUtf8(expected);
    };
    row("no object", "[]", "2:1: a configuration is no object");
    row("typed", R"({"$type": "a{sv}", "value": {}})", "2:2: a configuration has no \"$type\"");
    row("null", R"({"a": null})", "2:7: null is no value of a setting");
    row("fraction", "{\"ä\":\n  1.5}", "3:3: 1.5 is no 32-bit integer");
    row("fraction of nothing", R"({"a": 1.0})", "2:7: 1.0 is no 32-bit integer");
    row("exponent", R"({"a": 1e2})", "2:7: 1e2 is no 32-bit integer");
    row("too great", R"({"a": 2147483648})", "2:7: 2147483648 is no 32-bit integer");
    row("too small", R"({"a": -2147483649})", "2:7: -2147483649 is no 32-bit integer");
    row("much too great", R"({"a": 18446744073709551617})",
        "2:7: 18446744073709551617 is no 32-bit integer");
    row("nested", "{\"a\": {\"b\":\n{\"c\": [1,\n 0.1]}}}", "4:2: 0.1 is no 32-bit integer");
    row("integer after text", R"({"a": ["ü", 1]})",
        "2:13: a number in a list that begins with a string");
    row("boolean after integer", R"({"a": [1, 2, true]})",
        "2:14: a boolean in a list that begins with a number");
    row("null in a list", R"({"a": [null]})", "2:8: null is no value of a setting");
    row("null behind an integer", R"({"a": [1, null]})",
        "2:11: null in a list that begins with a number");
    row("list in a list", R"({"a": [[]]})", "2:8: a list in a list");
    row("object in a list", R"({"a": [{}]})", "2:8: an object in a list");
    row("typed value in a list", R"({"a": [{"$type": "i", "value": 1}]})",
        "2:8: an object in a list");
    row("U+0000", R"({"a": "x\u0000"})", "2:7: D-Bus does not carry this string");
    row("U+0000 in a list", R"({"a": ["", "\u0000"]})", "2:12: D-Bus does not carry this string");
    row("U+0000 in a key", R"({"a": 1, "\u0000": 1})", "2:10: D-Bus does not carry this key");
}

void ScenarioFileTest::aMistakeInAConfigurationHasItsPlace()
{
    checkMistake();
}

void ScenarioFileTest::aMistakeInATypedValueHasItsPlace_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no value") << scenarioOf("{\"a\":\n {\"$type\": \"i\"}}")
                              << "3:2: \"value\" is missing";
    QTest::newRow("one more member")
        << scenarioOf("{\"a\": {\"$type\": \"i\", \"value\": 1,\n\"x\": 1}}")
        << "3:1: \"x\" is no member of a value with \"$type\"";
    QTest::newRow("type is no string") << scenarioOf(R"({"a": {"$type": 1, "value": 1}})")
                                       << "2:17: 1 is not one complete D-Bus type";
    for (const char *type : {"", "ii", "a", "()", "a()", "(i", "{sv}", "({sv})", "a{vs}", "a{s}",
                             "a{sii}", "m", "mi", "*", "?", "r", "z", "i ", "\xc3\xbc"})
        QTest::addRow("type %s", type) << scenarioOfTyped(type, "1")
                                       << QString::fromUtf8("3:11: \"%1\" is not one complete "
                                                            "D-Bus type")
                                              .arg(QString::fromUtf8(type));
    const QByteArray tooManyArrays = repeated("a", 33) + 'i';
    const QByteArray tooManyStructures = repeated("(", 33) + 'i' + repeated(")", 33);
    for (const QByteArray &type : {tooManyArrays, tooManyStructures})
        QTest::newRow(type.constData())
            << scenarioOfTyped(type, "[]")
            << QStringLiteral("3:11: \"%1\" is not one complete D-Bus type")
                   .arg(QLatin1String(type));
    QTest::newRow("type that is too long")
        << scenarioOfTyped('(' + repeated("i", 254) + ')', "[]")
        << QStringLiteral("3:11: \"(%1...\" is not one complete D-Bus type").arg(QString(79, 'i'));
    QTest::newRow("type with U+0000")
        << scenarioOfTyped("i\\u0000", "1") << "3:11: \"i\uFFFD\" is not one complete D-Bus type";
    for (const char *type : {"h", "ah", "(ih)", "a{hs}"})
        QTest::addRow("file %s", type)
            << scenarioOfTyped(type, "1") << "3:11: an open file (\"h\") cannot stand in a file";

    const auto row = [](const char *type, const char *value, const char *expected) {
        QTest::addRow("%s %s", type, value)
            << scenarioOfTyped(type, value) << QString::fromUtf8(expected);
    };
    row("y", "256", "4:1: 256 is no value of the type \"y\"");
    row("y", "-1", "4:1: -1 is no value of the type \"y\"");
    row("y", "1.0", "4:1: 1.0 is no value of the type \"y\"");
    row("y", "\"1\"", "4:1: \"1\" is no value of the type \"y\"");
    row("n", "32768", "4:1: 32768 is no value of the type \"n\"");
    row("n", "-32769", "4:1: -32769 is no value of the type \"n\"");
    row("q", "65536", "4:1: 65536 is no value of the type \"q\"");
    row("q", "-1", "4:1: -1 is no value of the type \"q\"");
    row("i", "2147483648", "4:1: 2147483648 is no value of the type \"i\"");
    row("i", "true", "4:1: a boolean is no value of the type \"i\"");
    row("u", "4294967296", "4:1: 4294967296 is no value of the type \"u\"");
    row("u", "-1", "4:1: -1 is no value of the type \"u\"");
    row("x", "9223372036854775808", "4:1: 9223372036854775808 is no value of the type \"x\"");
    row("x", "-9223372036854775809", "4:1: -9223372036854775809 is no value of the type \"x\"");
    row("t", "18446744073709551616", "4:1: 18446744073709551616 is no value of the type \"t\"");
    row("t", "-1", "4:1: -1 is no value of the type \"t\"");
    row("t", "null", "4:1: null is no value of the type \"t\"");
    row("d", "\"1.5\"", "4:1: \"1.5\" is no value of the type \"d\"");
    row("b", "1", "4:1: 1 is no value of the type \"b\"");
    row("s", "1", "4:1: 1 is no value of the type \"s\"");
    row("s", R"("\u0000")", "4:1: D-Bus does not carry this string");
    row("o", R"("")", "4:1: \"\" is no value of the type \"o\"");
    row("o", R"("/a/")", "4:1: \"/a/\" is no value of the type \"o\"");
    row("o", R"("/ü")", "4:1: \"/ü\" is no value of the type \"o\"");
    row("g", R"("a")", "4:1: \"a\" is no value of the type \"g\"");
    row("g", "\"()\"", "4:1: \"()\" is no value of the type \"g\"");
    row("v", "null", "4:1: null is no value of a setting");
    row("v", "1.5", "4:1: 1.5 is no 32-bit integer");
    row("v", R"({"$type": "y", "value": 256})", "4:25: 256 is no value of the type \"y\"");
    row("ai", "{}", "4:1: an object is no value of the type \"ai\"");
    row("ai", R"([1, "x"])", "4:5: \"x\" is no value of the type \"i\"");
    row("ai", R"([{"$type": "i", "value": 1}])", "4:2: an object is no value of the type \"i\"");
    row("av", "[1, 0.5]", "4:5: 0.5 is no 32-bit integer");
    row("aai", "[[1], [2, []]]", "4:11: a list is no value of the type \"i\"");
    row("(is)", "{}", "4:1: the type \"(is)\" takes a list of 2 values");
    row("(is)", "[1]", "4:1: the type \"(is)\" takes a list of 2 values");
    row("(is)", R"([1, "x", 2])", "4:1: the type \"(is)\" takes a list of 2 values");
    row("(is)", R"(["x", 1])", "4:2: \"x\" is no value of the type \"i\"");
    row("a(i(b))", "[[1, [true]], [2, [1]]]", "4:20: 1 is no value of the type \"b\"");
    row("a{si}", "[]", "4:1: a list is no value of the type \"a{si}\"");
    row("a{si}", R"({"a": 1, "b": "x"})", "4:15: \"x\" is no value of the type \"i\"");
    row("a{sv}", R"({"a": null})", "4:7: null is no value of a setting");
    row("a{si}", R"({"\u0000": 1})", "4:2: D-Bus does not carry this string");
    row("a{oi}", R"({"/": 1, "a": 1})", "4:10: \"a\" is no value of the type \"o\"");
    row("a{is}", "{}", "4:1: an object is no value of the type \"a{is}\"");
    row("a{is}", "[[1, \"\"], 2]", "4:11: the type \"a{is}\" takes a list of [key, value]");
    row("a{is}", "[[1]]", "4:2: the type \"a{is}\" takes a list of [key, value]");
    row("a{is}", R"([[1, "", 2]])", "4:2: the type \"a{is}\" takes a list of [key, value]");
    row("a{is}", R"([["x", ""]])", "4:3: \"x\" is no value of the type \"i\"");
    row("a{is}", "[[1, 2]]", "4:6: 2 is no value of the type \"s\"");
}

void ScenarioFileTest::aMistakeInATypedValueHasItsPlace()
{
    checkMistake();
}

void ScenarioFileTest::aMistakeInAFaultHasItsPlace_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    const auto row = [](const QByteArray &fault, const QByteArray &expected) {
        QTest::newRow(QByteArray(fault).replace('\n', ' ').constData())
            << scenarioWithFault(fault) << QString::fromUtf8(expected);
    };
    const auto rowsOf = [&row](const char *member, const QByteArray &fault, const char *expected,
                               const QByteArrayList &values) {
        for (const QByteArray &value : values)
            row("{\"" + QByteArray(member) + "\":\n" + value + ", " + fault + "}",
                QByteArray("3:1: \"") + member + "\" is " + expected);
    };
    row("1", "2:1: a fault is no object");
    row("{}", "2:1: \"fault\" is missing");
    row(R"({"fault": 1})", "2:11: \"fault\" is no string");
    row(R"({"fault": "slow"})",
        "2:11: \"slow\" is no fault; there are error, delay, no-answer, wrong-signature, "
        "further-arguments, too-large, exit, restart, bus-death, push, announce, announce-twice, "
        "flood, spoofed-signal");
    rowsOf("method", R"("fault": "no-answer")",
           R"(neither "GetConfiguration" nor "ChangeConfiguration")", {"\"Get\"", "1", "\"\""});
    rowsOf("call", R"("method": "GetConfiguration", "fault": "no-answer")",
           "no integer from 1 to 2147483647", {"0", "-1", "1.0", "2147483648", "\"1\"", "null"});
    rowsOf("time", R"("fault": "announce")", "no number from 0 to 86400",
           {"-1", "-1e-9", "86400.001", "\"1\"", "null", "[]"});
    rowsOf("seconds", R"("fault": "delay", "method": "GetConfiguration")",
           "no number from 0 to 86400", {"-0.5", "86401", "\"1\"", "true"});
    rowsOf("count", R"("fault": "flood", "time": 1)", "no integer from 1 to 100000",
           {"0", "100001", "1.5", "\"1\""});
    rowsOf("message", R"("fault": "error", "method": "GetConfiguration", "error": "Internal")",
           "no string", {"1", "null"});

    row(R"({"fault": "error", "method": "GetConfiguration"})", "2:1: \"error\" is missing");
    row(R"({"fault": "error", "error": "Internal"})", "2:1: \"method\" is missing");
    row(R"({"fault": "error", "method": "GetConfiguration", "error": 1})",
        "2:59: \"error\" is no string");
    const QByteArrayList wrong {"", "internal", "NoError", "a..b", "a.1b", "a.b ", "a.ü"};
    for (const QByteArray &name : wrong)
        row(R"({"fault": "error", "method": "GetConfiguration", "error": ")" + name + "\"}",
            "2:59: \"" + name
                + "\" is no error; there are Internal, NotExistingKey, InvalidType, InvalidValue, "
                  "Forbidden, NotConfigurable, InvalidUserId, UnsupportedType, and full D-Bus "
                  "names "
                  "such as \"org.freedesktop.DBus.Error.Failed\"");
    row(R"({"fault": "error", "method": "GetConfiguration", "error": "a.b", "message": "\u0000"})",
        "2:77: D-Bus does not carry this string");
    row(R"({"fault": "error", "method": "GetConfiguration", "error": "Internal", "seconds": 1})",
        "2:71: \"seconds\" is no member of the fault \"error\"");
    row(R"({"fault": "error", "error": "Internal", "time": 1})",
        "2:41: \"time\" is no member of the fault \"error\"");
    row(R"({"fault": "delay", "method": "GetConfiguration"})", "2:1: \"seconds\" is missing");
    row(R"({"fault": "no-answer"})", "2:1: \"method\" is missing");
    row(R"({"fault": "exit"})", "2:1: \"method\" or \"time\" is missing");
    row(R"({"fault": "exit", "call": 1})", "2:1: \"method\" or \"time\" is missing");
    row(R"({"fault": "exit", "method": "GetConfiguration", "time": 1})",
        "2:49: \"time\" besides \"method\"");
    row(R"({"fault": "restart", "time": 1, "call": 1})", "2:33: \"call\" without \"method\"");
    row(R"({"fault": "exit", "time": 1, "seconds": 1})",
        "2:30: \"seconds\" is no member of the fault \"exit\"");
    row(R"({"fault": "push", "time": 1})", "2:1: \"configuration\" is missing");
    row(R"({"fault": "push", "configuration": {}})", "2:1: \"time\" is missing");
    row(R"({"fault": "push", "time": 1, "configuration": []})",
        "2:47: a configuration is no object");
    row(R"({"fault": "push", "time": 1, "configuration": {"a": 0.5}})",
        "2:53: 0.5 is no 32-bit integer");
    row(R"({"fault": "push", "method": "GetConfiguration", "configuration": {}})",
        "2:19: \"method\" is no member of the fault \"push\"");
    row(R"({"fault": "announce", "time": 1, "call": 1})",
        "2:34: \"call\" is no member of the fault \"announce\"");
    row(R"({"fault": "flood", "time": 1})", "2:1: \"count\" is missing");
    row(R"({"fault": "announce-twice", "time": 1, "count": 2})",
        "2:40: \"count\" is no member of the fault \"announce-twice\"");
}

void ScenarioFileTest::aMistakeInAFaultHasItsPlace()
{
    checkMistake();
}

void ScenarioFileTest::aConfigurationMayNotBeLargerThanTheBusLetsPass()
{
    Scenario scenario;
    QString mistake;
    const QByteArray text = repeated("x", 32 * 1024 * 1024);
    QVERIFY(!parseScenario("w.json", scenarioOf("{\"a\": \"" + text + "\"}"), &scenario, &mistake));
    QCOMPARE(mistake, QString("w.json:2:1: a configuration is larger than the bus lets pass"));
}

void ScenarioFileTest::noBeginningOfAScenarioIsOne()
{
    const QByteArray whole = contentOf(everyMember).trimmed();
    QByteArrayList beginnings;
    for (int size = 0; size < whole.size(); ++size)
        beginnings << whole.left(size);
    QVERIFY(beginnings.size() > 3000);
    QCOMPARE(countAccepted({whole}), 1);
    QCOMPARE(countAccepted(beginnings), 0);
}

void ScenarioFileTest::noBrokenScenarioBreaksTheReader()
{
    constexpr std::array others {'"', '{', ']', ',', '0', '\0', '\xff'};
    const QByteArray whole = contentOf(everyMember).trimmed();
    QByteArrayList broken;
    for (int index = 0; index < whole.size(); ++index) {
        broken << whole.left(index) + whole.mid(index + 1);
        const char other = others[static_cast<std::size_t>(index) % others.size()];
        broken << whole.left(index) + other + whole.mid(index + 1);
    }
    // Some take only a blank away, or alter only the content of a string.
    const int accepted = countAccepted(broken);
    QVERIFY(accepted > 0);
    QVERIFY(accepted < broken.size() / 2);
}

void ScenarioFileTest::aFileThatCannotBeReadIsNamed()
{
    const QTemporaryDir directory;
    const QString name = directory.filePath("missing.json");
    Scenario scenario;
    QString mistake;
    QVERIFY(!readScenario(name, &scenario, &mistake));
    QCOMPARE(mistake, name + ": No such file or directory");
    QVERIFY(!readScenario(directory.path(), &scenario, &mistake));
    QCOMPARE(mistake, directory.path() + ": file to open is a directory");
}

void ScenarioFileTest::configurationsAreEqualInWhateverOrderTheyWereWritten()
{
    const auto parse = [](const char *text) {
        return adopt(g_variant_parse(nullptr, text, nullptr, nullptr, nullptr));
    };
    const Variant kept = parse("{'a': <1>, 'n': <{'x': <1>, 'y': <{'p': <true>, 'q': <2>}>}>}");
    const Variant same = parse("{'n': <{'y': <{'q': <2>, 'p': <true>}>, 'x': <1>}>}");
    const Variant other = parse("{'n': <{'y': <{'q': <3>, 'p': <true>}>, 'x': <1>}>}");
    QVERIFY(areEqual(kept, mergeConfigurations(kept, same.get())));
    QVERIFY(!areEqual(kept, mergeConfigurations(kept, other.get())));
    QVERIFY(areEqual({}, {}));
    QVERIFY(!areEqual(kept, {}));
    QVERIFY(!areEqual({}, kept));
}

QTEST_GUILESS_MAIN(ScenarioFileTest)

#include "scenario_file_test.moc"
