// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "check/scenario_check.h"
#include "scenario/scenario_reader.h"
#include "service/change_validation.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Tarnvel::Sandbox;
using namespace Tarnvel::Tools;

namespace {

// The names of schemas are relative to it.
const char scenarioFile[] = SOURCE_DIR "/tests/sandbox/scenarios/s.json";

QByteArray scenarioOf(const QByteArray &members, const QByteArray &name = "reader")
{
    return R"({"applications": [{"organization": "acme", "application": ")" + name + "\",\n"
        + members + "}]}";
}

QByteArray readerWith(const QByteArray &configuration)
{
    return scenarioOf("\"schema\": \"reader.settings.json\", \"configuration\": " + configuration);
}

Application read(const QByteArray &text)
{
    Scenario scenario;
    const QVector<Failure> failures = parseScenario(scenarioFile, text, &scenario);
    for (const Failure &failure : failures)
        qFatal("%s", qPrintable(failure.text()));
    return scenario.first();
}

QString printed(const Variant &value)
{
    g_autofree gchar *text = g_variant_print(value.get(), TRUE);
    return QString::fromUtf8(text);
}

Variant parse(const QByteArray &text)
{
    return inOrder(adopt(g_variant_parse(nullptr, text.constData(), nullptr, nullptr, nullptr)));
}

QString textOf(const QVector<Diagnostic> &diagnostics)
{
    QStringList texts;
    for (const Diagnostic &one : diagnostics)
        texts << QString("%1:%2%3 %4%5")
                     .arg(one.line)
                     .arg(one.column)
                     .arg(one.isSlip ? "" : " invalid:", one.message,
                          one.hint.isEmpty() ? QString() : "; " + one.hint);
    return texts.join('\n');
}

bool write(const QString &fileName, const QByteArray &text)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

// A schema of one string with this default.
QByteArray schemaOf(const QByteArray &value)
{
    return R"({"type": "object", "additionalProperties": false, "x-organization": "acme",
        "x-application": "reader", "properties": {"a": {"type": "string", "default": ")"
        + value + "\"}}}";
}

} // namespace

class ScenarioSchemaTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void missingSettingsHaveTheirDefaults_data();
    void missingSettingsHaveTheirDefaults();
    void faultsSetDefaultsToo();
    void anInvalidSchemaMakesTheScenarioInvalid();
    void defaultsCountForTheSizeOfAMessage();
    void anEditedSchemaIsReadAgain();
    void aChangeIsRefusedForItsReason_data();
    void aChangeIsRefusedForItsReason();
    void slipsAreFound_data();
    void slipsAreFound();
};

void ScenarioSchemaTest::missingSettingsHaveTheirDefaults_data()
{
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<QString>("kept");

    const char rest[] = "'zoom': <100>}";
    const QString flags = "{'flags': <[true]>, 'fullscreen': <false>, 'names': <@as []>, ";
    const QString network = "'network': <{'port': <80>, 'proxy': <''>}>, ";
    const QString sizes = "'sizes': <@ai []>, 'theme': <'light'>, ";
    QTest::newRow("all") << QByteArray("{}") << flags + network + sizes + rest;
    QTest::newRow("empty lists") << QByteArray(R"({"sizes": [], "flags": [], "names": []})")
                                 << "{'flags': <@ab []>, 'fullscreen': <false>, 'names': <@as []>, "
            + network + sizes + rest;
    QTest::newRow("others stay") << QByteArray(
        R"({"zoom": 500, "x": [], "network": {"port": 81, "y": 0}, "sizes": ["a"]})")
                                 << flags
            + "'network': <{'port': <81>, 'proxy': <''>, 'y': <0>}>, "
              "'sizes': <['a']>, 'theme': <'light'>, 'x': <@as []>, 'zoom': <500>}";
    QTest::newRow("another type in place of an object")
        << QByteArray(R"({"network": 1, "sizes": [1]})")
        << flags + "'network': <1>, 'sizes': <[1]>, 'theme': <'light'>, " + rest;
}

void ScenarioSchemaTest::missingSettingsHaveTheirDefaults()
{
    QFETCH(QByteArray, configuration);
    QFETCH(QString, kept);
    QCOMPARE(printed(read(readerWith(configuration)).configuration), printed(parse(kept.toUtf8())));
}

void ScenarioSchemaTest::faultsSetDefaultsToo()
{
    const Application application = read(readerWith(
        R"({}, "faults": [{"fault": "announce", "time": 1},
           {"fault": "replace", "time": 1, "configuration": {}}])"));
    QVERIFY(!application.faults.first().configuration);
    QVERIFY(areEqual(application.faults.last().configuration, application.configuration));
}

void ScenarioSchemaTest::anInvalidSchemaMakesTheScenarioInvalid()
{
    const QTemporaryDir directory;
    const QString schema = directory.filePath("s.json");
    QVERIFY(write(schema,
                  schemaOf("").replace("\"string\"", "\"text\"").replace("{\"a\"", "\n{\"a\"")));
    const QByteArray text = scenarioOf("\"configuration\": {}, \"schema\": \"" + schema.toUtf8()
                                       + "\"");
    const QString expected = "2:32 invalid: " + schema
        + ":3:16: expected \"array\", \"boolean\", \"integer\", \"object\" or \"string\", found "
          "\"text\"";
    QCOMPARE(textOf(diagnose(scenarioFile, text, false)), expected);
    QCOMPARE(textOf(diagnose(scenarioFile, text, true)), expected);

    QCOMPARE(textOf(diagnose(
                 scenarioFile,
                 scenarioOf(R"("configuration": {}, "schema": "reader.settings.json")", "viewer"),
                 true)),
             QString("2:32 invalid: the schema is for acme/reader, not for acme/viewer"));
    QVERIFY(QFile::remove(schema));
    QCOMPARE(textOf(diagnose(directory.filePath("scenario.json"),
                             scenarioOf(R"("configuration": {}, "schema": "s.json")"), false)),
             "2:32 invalid: " + schema + ": No such file or directory");
}

void ScenarioSchemaTest::defaultsCountForTheSizeOfAMessage()
{
    const QTemporaryDir directory;
    QVERIFY(write(directory.filePath("s.json"), schemaOf(QByteArray(33 * 1024 * 1024, 'x'))));
    QCOMPARE(textOf(diagnose(directory.filePath("scenario.json"),
                             scenarioOf(R"("configuration": {}, "schema": "s.json")"), false)),
             QString("2:32 invalid: D-Bus limits a message to 32 MiB"));
}

void ScenarioSchemaTest::anEditedSchemaIsReadAgain()
{
    const QTemporaryDir directory;
    const QString scenarioName = directory.filePath("scenario.json");
    EntryCache cache;
    Scenario scenario;
    for (const char *value : {"1", "2"}) {
        QVERIFY(write(directory.filePath("s.json"), schemaOf(value)));
        QVERIFY(
            write(scenarioName, scenarioOf(R"("configuration": {"b": []}, "schema": "s.json")")));
        QVERIFY(readScenario(scenarioName, &scenario, &cache).isEmpty());
        QCOMPARE(printed(scenario.first().configuration),
                 QString("{'a': <'%1'>, 'b': <@as []>}").arg(value));
    }
    // Without the schema, nothing of it is left.
    QVERIFY(write(scenarioName, scenarioOf(R"("configuration": {"b": []})")));
    QVERIFY(readScenario(scenarioName, &scenario, &cache).isEmpty());
    QCOMPARE(printed(scenario.first().configuration), QString("{'b': <@as []>}"));
}

void ScenarioSchemaTest::aChangeIsRefusedForItsReason_data()
{
    QTest::addColumn<QByteArray>("change");
    QTest::addColumn<QString>("outcome");

    const auto row = [](const char *change, const char *outcome) {
        QTest::newRow(change) << QByteArray(change) << QString(outcome);
    };
    row("@a{sv} {}", "accepted");
    row("{'zoom': <25>, 'theme': <'dark'>, 'sizes': <[1, 2]>, 'names': <['']>, 'flags': <@ab []>}",
        "accepted");
    // These are what the administrator has set.
    row("{'zom': <1>, 'zoom': <500>, 'fullscreen': <'yes'>}", "accepted");
    row("{'network': <{'port': <1>, 'prt': <2>}>}", "accepted");
    row("{'zom': <2>}", "NotExistingKey: \"zom\" does not exist");
    row("{'network': <{'prt': <3>}>}", "NotExistingKey: \"network/prt\" does not exist");
    row("{'other': <2>}", "NotExistingKey: \"other\" does not exist");
    row("{'fullscreen': <true>}", "accepted");
    row("{'fullscreen': <'no'>}", "InvalidType: \"fullscreen\" is a boolean, not a string");
    row("{'zoom': <1.5>}", "UnsupportedType: \"zoom\" cannot be of the type \"d\": no setting can");
    row("{'sizes': <@as []>}",
        "InvalidType: \"sizes\" is a list of integers, not a list of strings");
    row("{'network': <1>}", "InvalidType: \"network\" is a configuration, not an integer");
    row("{'network': <{'port': <'80'>}>}",
        "InvalidType: \"network/port\" is an integer, not a string");
    row("{'zoom': <501>}", "InvalidValue: zoom: 501 is above 400");
    row("{'zoom': <24>}", "InvalidValue: zoom: 24 is below 25");
    row("{'theme': <'blue'>}", "InvalidValue: theme: \"blue\" is not one of \"light\", \"dark\"");
    row("{'sizes': <[1, -1]>}", "InvalidValue: sizes: -1 is below 0");
    row("{'sizes': <[1, 2, 3]>}", "InvalidValue: sizes: the list has more than 2 items");
    row("{'network': <{'proxy': <'p'>}>}", "accepted");
    row("{'network': <{'port': <3>}>, 'theme': <'dark'>}", "Forbidden: \"theme\" is locked");
}

void ScenarioSchemaTest::aChangeIsRefusedForItsReason()
{
    QFETCH(QByteArray, change);
    Application application = read(
        readerWith(R"({"zom": 1, "zoom": 500, "fullscreen": "yes", "network": {"prt": 2}})"));
    if (change.contains("'port': <3>"))
        application.locked << "theme";
    const auto refusal = refuseChange(application, {application.configuration, {}},
                                      entriesOf(parse(change).get()));
    QTEST(refusal ? refusal->error + ": " + refusal->message : QString("accepted"), "outcome");
}

void ScenarioSchemaTest::slipsAreFound_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("slips");

    const auto row = [](const QByteArray &configuration, const QString &slips) {
        QTest::newRow(configuration.constData()) << readerWith('\n' + configuration) << slips;
    };
    row(R"({}, "locked": ["network/proxy", "zoom"])", "");
    row(R"({}, "locked": ["zom"])",
        "3:16 \"zom\" leads nowhere; use a setting of the "
        "configuration: flags, fullscreen, names, network, sizes, theme, zoom");
    row(R"({"zoom": {"$gvariant": "200"}, "sizes": {"$gvariant": "@ai []"},
        "network": {"$gvariant": "{'port': <1>}"}, "flags": [false]})",
        "");
    row(R"({"network": {"proxy": "deprecated"}})", "");
    row(R"({"zom": 1})", "3:2 zom: unknown setting; did you mean \"zoom\"?");
    row(R"({"zoom": 401})", "3:10 zoom: 401 is above 400");
    row(R"({"zoom": {"$gvariant": "0.5"}})", "3:10 zoom: expected an integer, found 0.5");
    row(R"({"theme": {"$gvariant": "uint64 5"}})", "3:11 theme: expected a string, found uint64 5");
    row(R"({"flags": [true, false], "sizes": {"$gvariant": "[true]"}})",
        "3:35 sizes: expected an integer, found a boolean");
    row(R"({}, "faults": [{"fault": "replace", "time": 1, "configuration": {"network": 1}}])",
        "3:77 network: expected an object, found a number");
}

void ScenarioSchemaTest::slipsAreFound()
{
    QFETCH(QByteArray, text);
    QTEST(textOf(diagnose(scenarioFile, text, true)), "slips");
    QCOMPARE(textOf(diagnose(scenarioFile, text, false)), QString());
}

QTEST_GUILESS_MAIN(ScenarioSchemaTest)

#include "scenario_schema_test.moc"
