// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "program.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Tarnvel::Testing;

namespace {

Outcome generate(const QByteArray &properties, const QString &className)
{
    const QTemporaryDir directory;
    QFile file(directory.filePath("s.json"));
    file.open(QIODevice::WriteOnly);
    file.write(
        "{\"type\": \"object\", \"additionalProperties\": false, \"x-organization\": \"a\",\n"
        "\"x-application\": \"b\", \"properties\": {\n"
        + properties + "}}");
    file.close();
    Outcome outcome = Program(SCHEMA_TOOL).run({"header", file.fileName(), "--class", className});
    outcome.errors.replace(file.fileName(), "s.json").remove("  what to do: ");
    return outcome;
}

// The text in which ' stands for ".
QString quoted(const QByteArray &text)
{
    return QString::fromUtf8(text).replace('\'', '"');
}

} // namespace

class HeaderNamesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNameThatCannotBeInCppIsRefused_data();
    void aNameThatCannotBeInCppIsRefused();
    void aSuggestedNameIsAccepted_data();
    void aSuggestedNameIsAccepted();
    void theNameOfTheClassIsChecked_data();
    void theNameOfTheClassIsChecked();
    void tenThousandNamesAreSuggested();
};

void HeaderNamesTest::aNameThatCannotBeInCppIsRefused_data()
{
    QTest::addColumn<QString>("properties");
    QTest::addColumn<QString>("errors");
    const auto add = [](const QByteArray &properties, const QByteArray &errors) {
        QTest::newRow(properties.constData())
            << quoted(properties).replace("INT", "{\"type\": \"integer\"}")
            << quoted(errors) + '\n';
    };
    // The texts of the diagnostics for a key at the beginning of the third line.
    const auto addKey = [add](const QByteArray &key, const QByteArray &problem,
                              const QByteArray &suggestion) {
        add("'" + key + "': INT",
            "s.json:3:1: '" + key + "' cannot be a name in C++: " + problem + "\nadd 'x-name': '"
                + suggestion + "'");
    };
    addKey("class", "it is a keyword", "settingClass1");
    addKey("co_await", "it is a keyword", "coAwait");
    addKey("not", "it is a keyword", "settingNot1");
    addKey("slots", "it may be a macro or a name of Qt", "settingSlots1");
    addKey("errno", "it may be a macro or a name of Qt", "settingErrno1");
    addKey("unix", "it may be a macro or a name of Qt", "settingUnix1");
    addKey("EOF", "it may be a macro or a name of Qt", "eof");
    addKey("Q_OBJECT", "it may be a macro or a name of Qt", "settingQObject1");
    addKey("qApp", "it may be a macro or a name of Qt", "settingQApp1");
    addKey("st_atime", "it may be a macro or a name of Qt", "stAtime");
    addKey("_zoom", "C++ reserves names that begin with '_' or contain '__'", "zoom");
    addKey("zo__om", "C++ reserves names that begin with '_' or contain '__'", "zoOm");
    addKey("two words", "it is not an identifier", "twoWords");
    addKey("2nd-page", "it is not an identifier", "setting2ndPage1");
    addKey("\u00e4", "it is not an identifier", "setting1");
    addKey("\U0001d504", "it is not an identifier", "setting1");
    for (const char *const key :
         {"problems", "changedFrom", "configuration", "defaults", "isChanged", "std"})
        addKey(key, "the class uses it itself",
               "setting" + QByteArray(1, char(key[0] - 32)) + (key + 1) + "1");
    addKey("m_zoom", "the class uses it itself", "mZoom");
    addKey("ViewerSettings", "the class uses it itself", "viewerSettings");

    add("'a': INT, 'b': {'type': 'integer', 'x-name': 'a'}",
        "s.json:3:27: 'a' cannot be a name in C++: the setting 'a' has it\nadd 'x-name': 'b'");
    add("'a': INT, 'setA': INT",
        "s.json:3:27: 'setA' cannot be a name in C++: the setting 'a' has it\nadd 'x-name': "
        "'settingSetA1'");
    add("'a': {'type': 'string', 'enum': ['', 'b'], 'x-names': ['X', 'Y']}, 'A': INT",
        "s.json:3:68: 'A' cannot be a name in C++: the setting 'a' has it\nadd 'x-name': "
        "'settingA1'");
    add("'A': {'type': 'object', 'additionalProperties': false, 'properties': {}}",
        "s.json:3:1: 'A' cannot be a name in C++: its type would have the same\n"
        "add 'x-name': 'a'");
    add("'a': {'type': 'object', 'additionalProperties': false, 'properties': {\n"
        "'a': {'type': 'object', 'additionalProperties': false, 'properties': {}}}}",
        "s.json:4:1: 'A' cannot be a name in C++: the class uses it itself\n"
        "add 'x-name': 'settingA1'");
    add("'nULL': {'type': 'object', 'additionalProperties': false, 'properties': {}}",
        "s.json:3:1: 'NULL' cannot be a name in C++: it may be a macro or a name of Qt\n"
        "add 'x-name': 'settingNULL1'");

    add("'a': {'type': 'string', 'default': '2x', 'enum': ['x', '2x', '\u00e4', 'X']}",
        "s.json:3:56: '2x' cannot be a name in C++: it is not an identifier\n"
        "add 'x-names': ['X', 'Value2x', 'Value3', 'XNumber4']");
    add("'a': {'type': 'string', 'default': 'a b', 'enum': ['a b', 'a-b']}",
        "s.json:3:52: 'AB' cannot be a name in C++: it may be a macro or a name of Qt\n"
        "add 'x-names': ['Value1', 'Value2']");
    add("'a': {'type': 'string', 'default': 'to be', 'enum': ['to be', 'to-be']}",
        "s.json:3:63: 'ToBe' cannot be a name in C++: another value has it\n"
        "add 'x-names': ['ToBe', 'ToBeNumber2']");
    add("'a': {'type': 'string', 'enum': ['', 'b'], 'x-names': ['class', 'B']}",
        "s.json:3:34: 'class' cannot be a name in C++: it is a keyword\n"
        "add 'x-names': ['Value1', 'B']");
}

void HeaderNamesTest::aNameThatCannotBeInCppIsRefused()
{
    QFETCH(const QString, properties);
    QFETCH(const QString, errors);
    const Outcome outcome = generate(properties.toUtf8(), "ViewerSettings");
    QCOMPARE(outcome.errors, errors);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.status, 65);
}

void HeaderNamesTest::aSuggestedNameIsAccepted_data()
{
    QTest::addColumn<QString>("key");
    for (const char *const key :
         {"class", "EOF", "_", "2", "?", "\u00e4", "Q_OBJECT", "m_zoom", "set a"})
        QTest::newRow(key) << QString::fromUtf8(key);
}

void HeaderNamesTest::aSuggestedNameIsAccepted()
{
    QFETCH(const QString, key);
    const QString integer = "\"%1\": {\"type\": \"integer\"%2}, \"a\": {\"type\": \"integer\"}";
    const Outcome refused = generate(integer.arg(key, "").toUtf8(), "ViewerSettings");
    QCOMPARE(refused.status, 65);
    const QString suggestion = refused.errors.section("\nadd ", 1).trimmed();
    QVERIFY2(suggestion.startsWith("\"x-name\": \""), qPrintable(refused.errors));
    const Outcome outcome = generate(integer.arg(key, ", " + suggestion).toUtf8(),
                                     "ViewerSettings");
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 0);
}

void HeaderNamesTest::theNameOfTheClassIsChecked_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("problem");
    QTest::newRow("none") << ""
                          << "\"--class\" needs a value";
    const QString prefix = "\"%1\" cannot be the name of a class: ";
    QTest::newRow("namespace") << "a::B" << prefix + "it is not an identifier";
    QTest::newRow("injection") << "A {};" << prefix + "it is not an identifier";
    QTest::newRow("line feed") << "A\n" << prefix + "it is not an identifier";
    QTest::newRow("keyword") << "class" << prefix + "it is a keyword";
    QTest::newRow("member") << "Change" << prefix + "the class has a member with this name";
    QTest::newRow("of Qt") << "QString" << prefix + "it may be a macro or a name of Qt";
}

void HeaderNamesTest::theNameOfTheClassIsChecked()
{
    QFETCH(const QString, name);
    QFETCH(const QString, problem);
    const Outcome outcome = generate("", name);
    const QString message = problem.contains("%1") ? problem.arg(name).replace('\n', "\\u000a")
                                                   : problem;
    QVERIFY2(outcome.errors.startsWith(message), qPrintable(outcome.errors));
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.status, 64);
}

void HeaderNamesTest::tenThousandNamesAreSuggested()
{
    QByteArray properties;
    for (int number = 0; number < 10000; ++number)
        properties += (number ? ",\n\"?" : "\"?") + QByteArray::number(number)
            + "\": {\"type\": \"integer\"}";
    const Outcome outcome = generate(properties, "ViewerSettings");
    QCOMPARE(outcome.errors.count("add \"x-name\": \"setting"), 10000);
    QCOMPARE(outcome.status, 65);
}

QTEST_GUILESS_MAIN(HeaderNamesTest)

#include "header_names_test.moc"
