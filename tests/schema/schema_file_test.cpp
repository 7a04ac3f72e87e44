// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "schema_reader.h"
#include "validation.h"

#include <QtCore/QFile>
#include <QtTest/QTest>

#include <sysexits.h>

using namespace Tarnvel::Schema;
using namespace Tarnvel::Tools;

namespace {

const char everyKeyword[] = DIRECTORY "/every_keyword.settings.json";

QByteArray contentOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray schemaOf(const QByteArray &settings)
{
    return R"({"type": "object", "additionalProperties": false, "x-organization": "a",)"
           R"( "x-application": "b", "properties": {)"
        + settings + "}}";
}

QStringList textsOf(const Diagnostics &diagnostics)
{
    QStringList texts;
    const QVector<Diagnostic> all = diagnostics.all();
    for (const Diagnostic &one : all)
        texts << QString("%1:%2: %3").arg(one.line).arg(one.column).arg(one.message)
                + (one.hint.isEmpty() ? QString() : " | " + one.hint);
    return texts;
}

QStringList diagnose(const QByteArray &text)
{
    Diagnostics diagnostics("s.json", text);
    parseSchema(text, &diagnostics);
    return textsOf(diagnostics);
}

Schema parse(const QByteArray &text)
{
    Diagnostics diagnostics("s.json", text);
    const Schema schema = parseSchema(text, &diagnostics);
    if (!diagnostics.isEmpty())
        qFatal("%s", qPrintable(textsOf(diagnostics).join('\n')));
    return schema;
}

QStringList problemsOf(const Schema &schema, const QByteArray &configuration)
{
    Diagnostics diagnostics("c.json", configuration);
    QStringList problems;
    for (const Problem &problem : validate(schema.root, parseJson(configuration, &diagnostics)))
        problems << QString("%1 %2 %3").arg(problem.offset).arg(problem.kind).arg(problem.text())
                + (problem.hint.isEmpty() ? QString() : " | " + problem.hint);
    return problems;
}

// Objects inside one another, the first of which is a setting.
QByteArray nested(int levels)
{
    QByteArray text = R"("k": {"type": "integer"})";
    for (int level = 1; level < levels; ++level)
        text = R"("k": {"type": "object", "additionalProperties": false, "properties": {)" + text
            + "}}";
    return schemaOf(text);
}

} // namespace

class SchemaFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void allKeywordsAreRead();
    void misuseIsRefusedAtItsPlace_data();
    void misuseIsRefusedAtItsPlace();
    void objectsAreNestedAsDeepAsInAConfiguration();
    void noBrokenSchemaBreaksTheReader();
    void filesThatCannotBeReadAreReported();
    void problemsOfValuesAreFound_data();
    void problemsOfValuesAreFound();
    void manySettingsAreRead();
    void manyUnknownSettingsAreFound();
};

void SchemaFileTest::allKeywordsAreRead()
{
    Schema schema;
    QVERIFY(readSchema(everyKeyword, &schema).isEmpty());
    QCOMPARE(schema.organization + '/' + schema.application, QString("acme.labs/viewer"));
    QVERIFY(schema.root.title.startsWith("Viewer") && schema.root.description.endsWith("one"));
    QStringList types;
    for (const Setting &setting : schema.root.members)
        types << setting.key + ' ' + dbusType(setting) + ' ' + setting.path;
    QCOMPARE(
        types,
        QStringList({"zoom i zoom", "least i least", "most i most", "theme s theme", "code s code",
                     "` b `", "hosts as hosts", "sizes ai sizes", "flags ab flags",
                     "network a{sv} network", "$gvariant i $gvariant", "nested a{sv} nested"}));

    const Setting zoom = *schema.root.member("zoom");
    QCOMPARE(zoom.title, QString("Zoom"));
    QVERIFY(zoom.description.startsWith("In percent."));
    QVERIFY(!zoom.needsRestart && zoom.deprecated.isNull() && zoom.name.isNull());
    QCOMPARE(zoom.scalar.minimum, 25);
    QCOMPARE(zoom.scalar.maximum, 400);
    QCOMPARE(toJson(zoom.defaultValue), QString("100"));
    QCOMPARE(zoom.examples.size(), std::size_t(2));
    const Setting theme = *schema.root.member("theme");
    QVERIFY(theme.needsRestart);
    QCOMPARE(theme.scalar.values.size(), std::size_t(2));
    QCOMPARE(theme.valueNames, std::vector<QString>({"Light", "Dark"}));
    const Setting tick = *schema.root.member("`");
    QCOMPARE(tick.name, QString("tick"));
    QCOMPARE(tick.deprecated, QString("use\n_code_"));
    QCOMPARE(toJson(tick.defaultValue), QString("false"));
    const Setting hosts = *schema.root.member("hosts");
    QCOMPARE(hosts.minimumItems, 1);
    QCOMPARE(hosts.maximumItems, 3);
    QCOMPARE(hosts.scalar.minimumLength, 1);
    QCOMPARE(hosts.scalar.maximumLength, 9);
    QCOMPARE(hosts.scalar.pattern.pattern(), QString("[a-z]"));
    QCOMPARE(schema.root.member("network")->member("proxy")->path, QString("network/proxy"));
    QVERIFY(!schema.root.member("proxy"));
}

void SchemaFileTest::misuseIsRefusedAtItsPlace_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("empty file") << QByteArray() << QStringList("1:1: unexpected end of the file");
    QTest::newRow("deep lists") << QByteArray(200, '[')
                                << QStringList("1:129: more than 128 nested lists and objects");
    QByteArray schema;
    QByteArray row;
    QStringList diagnostics;
    const QByteArrayList lines = contentOf(DIRECTORY "/misuse.txt").split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("  ")) {
            diagnostics << QString::fromUtf8(line.mid(2));
            continue;
        }
        if (!diagnostics.isEmpty())
            QTest::newRow(row.constData())
                << QByteArray(schema).replace('@', '\n' + row) << diagnostics;
        diagnostics.clear();
        if (line.startsWith("= ") || line.startsWith("~ "))
            schema = line.mid(2);
        row = line;
    }
}

void SchemaFileTest::misuseIsRefusedAtItsPlace()
{
    QFETCH(QByteArray, text);
    QTEST(diagnose(text), "expected");
}

void SchemaFileTest::objectsAreNestedAsDeepAsInAConfiguration()
{
    QCOMPARE(diagnose(nested(21)), QStringList());
    const QStringList diagnostics = diagnose(nested(22));
    QCOMPARE(diagnostics.size(), 1);
    QVERIFY(diagnostics.first().endsWith(": more than 21 levels of objects"));
    QCOMPARE(diagnose(nested(40)), diagnostics);
}

void SchemaFileTest::noBrokenSchemaBreaksTheReader()
{
    const QByteArray whole = contentOf(everyKeyword).trimmed();
    int accepted = 0;
    for (int index = 0; index < whole.size(); ++index) {
        QVERIFY(!diagnose(whole.left(index)).isEmpty());
        for (const char *other : {"", "\"", "]", "0"})
            accepted += diagnose(whole.left(index) + other + whole.mid(index + 1)).isEmpty();
    }
    // Some only lack a space, or differ only in a text.
    QVERIFY(accepted > 0);
    QVERIFY(accepted < whole.size() * 4);
}

void SchemaFileTest::filesThatCannotBeReadAreReported()
{
    Schema schema;
    const auto failures = readSchema("/nowhere/s.json", &schema);
    QCOMPARE(failures.size(), 1);
    QCOMPARE(failures.first().text(), QString("/nowhere/s.json: No such file or directory"));
    QCOMPARE(failures.first().status, EX_NOINPUT);
    const auto invalid = readSchema(DIRECTORY "/misuse.txt", &schema);
    QCOMPARE(invalid.first().text(), QString(DIRECTORY "/misuse.txt:1:1: expected a value"));
    QCOMPARE(invalid.first().status, EX_DATAERR);
}

void SchemaFileTest::problemsOfValuesAreFound_data()
{
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<QStringList>("problems");

    const auto row = [](const char *configuration, const QStringList &problems) {
        QTest::newRow(configuration) << QByteArray(configuration) << problems;
    };
    row("{}", {});
    row(R"({"zoom": 25, "least": 2147483647, "most": -2, "theme": "light", "code": "`",
        "hosts": ["ab1"], "sizes": [], "flags": [true, false], "nested": {"empty": {}}})",
        {});
    row("[]", {"0 1 expected an object, found a list"});
    row(R"({"zom": 1})", {"1 0 zom: unknown setting | did you mean \"zoom\"?"});
    row(R"({"ZOOM": 1})", {"1 0 ZOOM: unknown setting | did you mean \"zoom\"?"});
    row(R"({"x\n": 1, "nested": {"a": 1}})",
        {"1 0 x\\u000a: unknown setting", "22 0 nested/a: unknown setting"});
    row(R"({"zoom": 24, "most": -1})",
        {"9 2 zoom: 24 is below 25", "21 2 most: -1 is not one of -2, 0"});
    row(R"({"least": -0, "sizes": [1, 3], "code": "``"})",
        {"27 2 sizes: 3 is not one of 1, 2", "39 2 code: \"``\" has more than 1 characters"});
    row(R"({"hosts": ["", "A", "a\nbcdefghi", 1]})",
        {"11 2 hosts: \"\" has fewer than 1 characters", "15 2 hosts: \"A\" does not match [a-z]",
         "20 2 hosts: \"a\\u000abcdefghi\" has more than 9 characters",
         "35 1 hosts: expected a string, found a number",
         "10 2 hosts: the list has more than 3 items"});
    row(R"({"zoom": null, "flags": true, "theme": ["light"], "network": ""})",
        {"9 1 zoom: expected an integer, found null",
         "24 1 flags: expected a list, found a boolean",
         "39 1 theme: expected a string, found a list",
         "61 1 network: expected an object, found a string"});
    row(R"({"zoom": 1e2, "least": 1.0, "most": 99999999999})",
        {"9 1 zoom: expected an integer, found 1e2", "23 1 least: expected an integer, found 1.0",
         "36 1 most: expected an integer, found 99999999999"});
    row(R"({"`": true, "network": {"proxy": ""}})",
        {"6 3 `: deprecated: use\\u000a_code_", "23 3 network: deprecated: = nothing"});
    row(R"({"`": 1, "network": {"x": ""}})",
        {"6 1 `: expected a boolean, found a number", "21 0 network/x: unknown setting"});
}

void SchemaFileTest::problemsOfValuesAreFound()
{
    QFETCH(QByteArray, configuration);
    QTEST(problemsOf(parse(contentOf(everyKeyword)), configuration), "problems");
}

void SchemaFileTest::manySettingsAreRead()
{
    QByteArrayList settings;
    QByteArrayList values;
    for (int number = 0; number < 10000; ++number) {
        const QByteArray key = "\"setting number " + QByteArray::number(number) + '"';
        settings << key + R"(: {"type": "string", "pattern": "^(a|b)*$", "default": "ab"})";
        values << key + ": \"ba\"";
    }
    const Schema schema = parse(schemaOf(settings.join(",\n")));
    QCOMPARE(schema.root.members.size(), std::size_t(10000));
    QCOMPARE(problemsOf(schema, '{' + values.join(", ") + '}'), QStringList());
}

void SchemaFileTest::manyUnknownSettingsAreFound()
{
    QByteArrayList settings;
    QByteArrayList values;
    for (int number = 0; number < 10000; ++number) {
        settings << "\"setting number " + QByteArray::number(number) + R"(": {"type": "integer"})";
        values << "\"settings number " + QByteArray::number(number) + "\": 1";
    }
    const QStringList problems = problemsOf(parse(schemaOf(settings.join(",\n"))),
                                            '{' + values.join(", ") + '}');
    QCOMPARE(problems.size(), 10000);
    QCOMPARE(
        problems.first(),
        QString("1 0 settings number 0: unknown setting | did you mean \"setting number 0\"?"));
}

QTEST_GUILESS_MAIN(SchemaFileTest)

#include "schema_file_test.moc"
