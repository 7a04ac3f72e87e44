// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "program.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Tarnvel::Testing;

namespace {

const auto everyKeyword = QStringLiteral(DIRECTORY "/every_keyword.settings.json");

QByteArray contentOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write(const QString &fileName, const QByteArray &text)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

Outcome run(const QStringList &arguments)
{
    return Program(SCHEMA_TOOL).run(arguments);
}

// All that an outcome says, for one comparison.
QString textOf(const Outcome &outcome)
{
    return QString::number(outcome.status) + ": " + outcome.output + outcome.errors;
}

QByteArray applicationWith(const QByteArray &members, const QByteArray &name = "viewer")
{
    return R"({"organization": "acme", "application": ")" + name + "\",\n" + members + '}';
}

QByteArray scenarioOf(const QByteArray &applications)
{
    return "{\"applications\": [" + applications + "]}";
}

} // namespace

class SchemaProductsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theDocumentHasEverySetting();
    void aScenarioHasTheDefaults();
    void aScenarioNamesItsSchema();
    void aSchemaIsInferred_data();
    void aSchemaIsInferred();
    void whatCannotBeInferredIsRefused_data();
    void whatCannotBeInferredIsRefused();
    void theOutputCanBeAPipe();
    void commandsAreCheckedForMisuse_data();
    void commandsAreCheckedForMisuse();

private:
    QString path(const QString &name) const
    {
        return m_directory.filePath(name);
    }

    QTemporaryDir m_directory;
};

void SchemaProductsTest::theDocumentHasEverySetting()
{
    const Outcome outcome = run({"docs", everyKeyword});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.output,
             QString::fromUtf8(contentOf(DIRECTORY "/every_keyword_documented.md")));
    QCOMPARE(run({"docs", everyKeyword}).output, outcome.output);

    QVERIFY(write(path("s.json"),
                  R"({"type": "object", "additionalProperties": false, "title": " ",
                      "x-organization": "a_b", "x-application": "c", "properties": {}})"));
    QCOMPARE(run({"docs", path("s.json")}).output.section('\n', 0, 1),
             QString("# Settings of a\\_b/c\n"));
}

void SchemaProductsTest::aScenarioHasTheDefaults()
{
    QCOMPARE(textOf(run({"scenario", everyKeyword, "--output", path("w.json")})), QString("0: "));
    QString text = QString::fromUtf8(contentOf(path("w.json")));
    const QString schema = QDir(m_directory.path()).relativeFilePath(everyKeyword);
    QCOMPARE(text.replace(schema, "FILE"), QString(R"({
  "applications": [
    {
      "organization": "acme.labs",
      "application": "viewer",
      "schema": "FILE",
      "configuration": {
        "zoom": 100,
        "least": 0,
        "most": 0,
        "theme": "light",
        "code": "",
        "hosts": ["a", "b"],
        "sizes": [],
        "flags": [],
        "nested": {
          "empty": {}
        }
      }
    }
  ]
}
)"));
    QCOMPARE(textOf(run({"check", everyKeyword, path("w.json")})), QString("0: "));
    QCOMPARE(textOf(Program(SANDBOX).run({"--strict", "--check", path("w.json")})),
             "0: " + path("w.json") + ": valid\n");
}

void SchemaProductsTest::aScenarioNamesItsSchema()
{
    QVERIFY(QDir(m_directory.path()).mkpath("a b"));
    QVERIFY(write(path("a b/\u00fc \"s.json"), contentOf(everyKeyword)));
    QCOMPARE(run({"scenario", path("a b/\u00fc \"s.json"), "-o", path("a b/w.json")}).status, 0);
    QVERIFY(contentOf(path("a b/w.json")).contains("\"schema\": \"\u00fc \\\"s.json\",\n"));
    QCOMPARE(Program(SANDBOX).run({"--strict", "--check", path("a b/w.json")}).status, 0);
    // Standard output is taken for a file in the current directory.
    const QString relative = QDir::current().relativeFilePath(everyKeyword);
    QVERIFY(run({"scenario", everyKeyword}).output.contains("\"schema\": \"" + relative + "\",\n"));
}

void SchemaProductsTest::aSchemaIsInferred_data()
{
    QTest::addColumn<QByteArray>("application");
    QTest::addColumn<QString>("properties");
    QTest::addColumn<QString>("warnings");

    const auto row = [](const char *name, const QByteArray &members, const QString &properties,
                        const QString &warnings = {}) {
        QTest::newRow(name) << members << properties << warnings;
    };
    row("nothing", R"("configuration": {})", "{}");
    row("all types",
        R"("configuration": {"s": "x\u202e", "i": -0, "b": true, "e": [], "l": [1, 2], "f": [true],
            "n": {"x": {}, "\u2028": ["\""]}})",
        R"({"s":{"type":"string","default":"x\u202e"},"i":{"type":"integer","default":-0},)"
        R"("b":{"type":"boolean","default":true},)"
        R"("e":{"type":"array","items":{"type":"string"},"default":[]},)"
        R"("l":{"type":"array","items":{"type":"integer"},"default":[1,2]},)"
        R"("f":{"type":"array","items":{"type":"boolean"},"default":[true]},)"
        R"("n":{"type":"object","additionalProperties":false,"properties":{)"
        R"("x":{"type":"object","additionalProperties":false,"properties":{}},)"
        R"("\u2028":{"type":"array","items":{"type":"string"},"default":["\""]}}}})");
    row("GVariant text", R"("configuration": {"a": {"$gvariant": "{'b': <7>, 'a': <@ai []>}"}})",
        R"({"a":{"type":"object","additionalProperties":false,"properties":{)"
        R"("a":{"type":"array","items":{"type":"string"},"default":[]},)"
        R"("b":{"type":"integer","default":7}}}})");
    row("allowed values",
        R"("configuration": {"a": 5, "b": "x", "c": [1], "d": {"e": 0}, "f": []},
           "allowed": {"a": {"minimum": 1, "maximum": 5}, "b": ["y", "x", "y"],
                       "c": {"minimum": 1}, "d/e": [0, 1], "f": ["z"], "nowhere": [1]})",
        R"({"a":{"type":"integer","default":5,"minimum":1,"maximum":5},)"
        R"("b":{"type":"string","default":"x","enum":["y","x"]},)"
        R"("c":{"type":"array","items":{"type":"integer","minimum":1},"default":[1]},)"
        R"("d":{"type":"object","additionalProperties":false,"properties":{)"
        R"("e":{"type":"integer","default":0,"enum":[0,1]}}},)"
        R"("f":{"type":"array","items":{"type":"string","enum":["z"]},"default":[]}})");
    row("values that are not allowed",
        "\"configuration\": {\"a\": 5, \"b\": \"x\", \"c\": [1, 2], \"d\": true},\n"
        R"("allowed": {"a": {"maximum": 4}, "b": [1], "c": [1], "d": [true]})",
        R"({"a":{"type":"integer","default":5},"b":{"type":"string","default":"x"},)"
        R"("c":{"type":"array","items":{"type":"integer"},"default":[1,2]},)"
        R"("d":{"type":"boolean","default":true}})",
        "3:18: warning: a: left out: 5 is above 4\n"
        "3:39: warning: b: left out: a schema cannot restrict this setting so\n"
        "3:49: warning: c: left out: 2 is not one of 1\n"
        "3:59: warning: d: left out: a schema cannot restrict this setting so\n");
    row("faults",
        R"("configuration": {"a": 1, "c": []}, "faults": [
            {"fault": "replace", "time": 1, "configuration": {"b": true, "a": 9, "c": [1]}},
            {"fault": "announce", "time": 1}], "allowed": {"a": {"maximum": 8}})",
        R"({"a":{"type":"integer","default":1},)"
        R"("c":{"type":"array","items":{"type":"integer"},"default":[]},)"
        R"("b":{"type":"boolean","default":true}})",
        "4:65: warning: a: left out: 9 is above 8\n");
}

void SchemaProductsTest::aSchemaIsInferred()
{
    QFETCH(QByteArray, application);
    QVERIFY(write(path("w.json"), scenarioOf(applicationWith(application))));
    const Outcome outcome = run({"infer", path("w.json"), "-o", path("s.json")});
    QTEST(QString(outcome.errors).remove(path("w.json:")), "warnings");
    QCOMPARE(outcome.status, 0);
    QString text = QString::fromUtf8(contentOf(path("s.json")));
    QCOMPARE(textOf(run({"check", path("s.json"), path("w.json")})), QString("0: "));
    // Without its spaces.
    text.remove('\n').remove(' ');
    QFETCH(QString, properties);
    QCOMPARE(text,
             R"({"$schema":"http://json-schema.org/draft-07/schema#","type":"object",)"
             R"("additionalProperties":false,"x-organization":"acme","x-application":"viewer",)"
             R"("properties":)"
                 + properties + '}');
}

void SchemaProductsTest::whatCannotBeInferredIsRefused_data()
{
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<QString>("errors");

    const auto row = [](const QByteArray &configuration, const QString &errors) {
        QTest::newRow(configuration.constData()) << configuration << errors;
    };
    row(R"({"a": 1.5})", "3:7: expected a 32-bit integer, found 1.5\n");
    row(R"({"a": {"$gvariant": "0.5"}, "n": {"b": {"$gvariant": "uint32 5"}}})",
        "3:7: a: no setting can be 0.5\n3:40: n/b: no setting can be uint32 5\n");
    row(R"({"n": {"$gvariant": "{'a': 1}"}})", "3:7: n: no setting can be {'a': 1}\n");
    row(R"({"": 1, "a": {"b/c": 1}})",
        "3:2: a key cannot be empty or contain \"/\"\n"
        "3:15: a key cannot be empty or contain \"/\"\n");
    row(R"({"a": 1, "l": [1]},
           "faults": [{"fault": "replace", "time": 1, "configuration": {"a": [], "l": [true]}}])",
        "4:78: a: the type \"array\" is not that of the value before, \"integer\"\n"
        "4:88: l: the type \"boolean\" is not that of the value before, \"integer\"\n");
}

void SchemaProductsTest::whatCannotBeInferredIsRefused()
{
    QFETCH(QByteArray, configuration);
    QVERIFY(
        write(path("w.json"), scenarioOf(applicationWith("\"configuration\":\n" + configuration))));
    const Outcome outcome = run({"infer", path("w.json")});
    QCOMPARE(outcome.output, QString());
    QTEST(QString(outcome.errors).remove(path("w.json:")), "errors");
    QCOMPARE(outcome.status, 65);
}

void SchemaProductsTest::theOutputCanBeAPipe()
{
    const QString expected = textOf(run({"docs", everyKeyword}));
    QCOMPARE(textOf(run({"docs", everyKeyword, "-o", "/dev/stdout"})), expected);
    QCOMPARE(textOf(run({"docs", everyKeyword, "-o", "-"})), expected);
}

void SchemaProductsTest::commandsAreCheckedForMisuse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("outcome");

    const QString help = "  what to do: see managed-configuration-schema --help\n";
    for (const char *command : {"docs", "scenario", "infer"}) {
        QTest::addRow("%s without a file", command)
            << QStringList {command} << QString("64: \"%1\" needs one file\n").arg(command) + help;
        QTest::addRow("%s of no file", command)
            << QStringList {command, "NONE"} << "66: NONE: No such file or directory\n";
        QTest::addRow("%s of no JSON", command)
            << QStringList {command, "BROKEN"} << "65: BROKEN:1:2: unexpected end of the file\n";
    }
    QTest::newRow("scenario of standard input")
        << QStringList {"scenario", "-"}
        << "64: the scenario names the schema, which must be a file\n" + help;
    QTest::newRow("infer without applications")
        << QStringList {"infer", "EMPTY"} << "65: EMPTY: there is no application\n";
    QTest::newRow("infer from several applications")
        << QStringList {"infer", "TWO"}
        << "64: TWO: there are several applications: acme/viewer, acme/editor\n"
           "  what to do: choose one with --application\n";
    QTest::newRow("infer from an absent application")
        << QStringList {"infer", "TWO", "--application", "acme/player"}
        << "65: TWO: there is no application acme/player\n";
    QTest::newRow("output that cannot be written")
        << QStringList {"docs", everyKeyword, "-o", "NONE/x"}
        << "73: NONE/x: No such file or directory\n";
    QTest::newRow("header without a class")
        << QStringList {"header", everyKeyword} << "64: the option --class is missing\n" + help;
    QTest::newRow("output that is a directory")
        << QStringList {"docs", everyKeyword, "-o", m_directory.path()}
        << QString("73: %1: Is a directory\n").arg(m_directory.path());
    QTest::newRow("output without a name") << QStringList {"docs", everyKeyword, "-o", ""}
                                           << "64: \"--output\" needs a value\n" + help;
    QTest::newRow("output over what is read") << QStringList {"docs", "BROKEN", "-o", "BROKEN"}
                                              << "64: the output would replace BROKEN\n" + help;
    QTest::newRow("option of another command")
        << QStringList {"check", everyKeyword, "EMPTY", "-o", "x"}
        << "64: \"--output\" is not an option of \"check\"\n" + help;
    QTest::newRow("several failures")
        << QStringList {"check", everyKeyword, "NONE", "BROKEN"}
        << "66: NONE: No such file or directory\nBROKEN:1:2: unexpected end of the file\n";
}

void SchemaProductsTest::commandsAreCheckedForMisuse()
{
    QVERIFY(write(path("BROKEN"), "["));
    QVERIFY(write(path("EMPTY"), scenarioOf("")));
    QVERIFY(write(path("TWO"),
                  scenarioOf(applicationWith("\"configuration\": {}") + ", "
                             + applicationWith("\"configuration\": {\"a\": 1}", "editor"))));
    QFETCH(QStringList, arguments);
    for (const char *file : {"BROKEN", "EMPTY", "NONE/x", "NONE", "TWO"})
        arguments.replaceInStrings(QRegularExpression(QString("^%1$").arg(file)), path(file));
    QTEST(textOf(run(arguments)).remove(m_directory.path() + '/'), "outcome");
    QVERIFY(run({"infer", path("TWO"), "--application", "acme/editor"}).output.contains("\"a\": "));
}

QTEST_GUILESS_MAIN(SchemaProductsTest)

#include "schema_products_test.moc"
