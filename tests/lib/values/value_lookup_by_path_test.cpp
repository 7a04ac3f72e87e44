// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_p.h"
#include "description.h"
#include "message_log.h"

#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

using Map = QMap<QString, QVariant>;

namespace {

// A key for each form of value, and nested configurations under "a" and "a/b".
Configuration sample()
{
    const Configuration inner = makeConfiguration({{"c", "innermost"}});
    const Configuration middle = makeConfiguration({{"b", QVariant::fromValue(inner)}, {"n", 5}});
    return makeConfiguration({
        {"a", QVariant::fromValue(middle)},
        {"int", 42},
        {"bool", false},
        {"text", "dark"},
        {"nullText", QString()},
        {"strings", QStringList {"x", "y"}},
        {"ints", makeList<int>({10, 20, 30})},
        {"bools", makeList<bool>({false, true})},
        {"typedStrings", makeList<QString>({"p", QString()})},
        {"noInts", makeList<int>({})},
        {"noStrings", QStringList()},
        {"12]", makeList<int>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 120})},
        {"say \"hi\"", 1},
        {"größe", 2},
        {"", 3},
        {"x/y", 4},
        // These set() refuses.
        {"rawList", QVariantList {1, 2}},
        {"rawMap", QVariantMap {{"b", 1}}},
        {"rawInvalid", QVariant()},
        {"rawDouble", 1.5},
        {"rawDoubles", makeList<double>({1.5})},
    });
}

QString invalidPath(const QString &quotedPath)
{
    return "Attempt to use a non-valid xpath to get a value from the configuration (xpath="
        + quotedPath + ')';
}

void addRow(const QString &path, const QString &found, const QStringList &warnings = {})
{
    QTest::newRow(qUtf8Printable(path)) << path << found << warnings;
}

// A row for a walk that fails. A quotation mark in the path or in the key is quoted by the caller.
void addFailure(const QString &path, const QString &reason, QString quotedPath = {})
{
    if (quotedPath.isEmpty())
        quotedPath = '"' + path + '"';
    addRow(path, "invalid",
           {"Error when getting a value from configuration by the " + quotedPath + " xpath. "
            + reason});
}

QString noIndex(int index)
{
    return "The current value to be processed does not support an access by index (index="
        + QString::number(index) + ')';
}

QString noItem(int index)
{
    return "The current sequence to be processed does not contain enough items to access item at "
           "index "
        + QString::number(index);
}

QString noKeys(const QString &key)
{
    return "The current value to be processed does not support an access by key (key=\"" + key
        + "\")";
}

QString missing(const QString &key)
{
    return "The current value to be processed does not contain the \"" + key + "\" key";
}

} // namespace

class ValueLookupByPathTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPathLeadsToAValueOrAWarning_data();
    void aPathLeadsToAValueOrAWarning();
    void aLookupChangesNothing();
};

void ValueLookupByPathTest::aPathLeadsToAValueOrAWarning_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("found");
    QTest::addColumn<QStringList>("warnings");

    // What is not a path is reported by the parser first, if it has anything to report.
    for (const QString &path : {QString(), QString("")})
        addRow(path, "invalid", {"Attempt to process an empty xpath", invalidPath("\"\"")});
    addRow("/", "invalid", {invalidPath("\"/\"")});
    addRow("a\"[\"]", "invalid",
           {R"(The xpath part contains an invalid index: "\"" (xpath="a\"[\"]"))",
            invalidPath(R"("a\"[\"]")")});
    addRow("missing/ints[-1]", "invalid",
           {"The xpath part contains an invalid index: \"-1\" (xpath=\"missing/ints[-1]\")",
            invalidPath("\"missing/ints[-1]\"")});

    addRow("12]", "int 120");
    addRow("nullText", "QString null");
    addRow("typedStrings[1]", "QString null");
    addRow("//a///n//", "int 5");
    addRow("say \"hi\"", "int 1");
    addRow("größe", "int 2");
    addRow("int", "int 42");
    addRow("bool", "bool false");
    addRow("text", "QString \"dark\"");
    addRow("strings[0]", "QString \"x\"");
    addRow("strings[1]", "QString \"y\"");
    addRow("ints[0]", "int 10");
    addRow("ints[01]", "int 20");
    addRow("ints[2]", "int 30");
    addRow("bools[0]", "bool false");
    addRow("bools[1]", "bool true");
    addRow("typedStrings[0]", "QString \"p\"");
    addRow("strings", R"(QStringList ["x", "y"])");
    addRow("noInts", "QList<int> []");
    addRow("a", R"({"b": {"c": QString "innermost"}, "n": int 5})");
    addRow("a/b", "{\"c\": QString \"innermost\"}");
    addRow("a/b/c", "QString \"innermost\"");
    addRow("rawInvalid", "invalid");
    addRow("rawList", "QVariantList");
    addRow("rawMap", "QVariantMap");
    addRow("rawDouble", "double");

    addFailure("say \"hi\"[0]", noIndex(0), R"("say \"hi\"[0]")");
    addFailure("\"", missing("\\\""), R"("\"")");
    addFailure("text/\"", noKeys("\\\""), R"("text/\"")");
    addFailure("größe/日", noKeys("日"));
    addFailure(" a", missing(" a"));
    addFailure("A", missing("A"));
    addFailure("missing[0]", missing("missing"));
    for (const char *path : {"x/y", "//a//x//", "a/x/y", "a/b/x"})
        addFailure(path, missing("x"));
    addFailure("ints[3]", noItem(3));
    addFailure("ints[2147483647]", noItem(2147483647));
    for (const char *path : {"noInts[0]", "noStrings[0]"})
        addFailure(path, noItem(0));
    for (const char *path : {"strings[2]", "bools[2]", "typedStrings[2]"})
        addFailure(path, noItem(2));
    addFailure("int[7]", noIndex(7));
    for (const char *path :
         {"a[0]", "text[0]", "rawInvalid[0]", "rawList[0]", "rawMap[0]", "rawDoubles[0]"})
        addFailure(path, noIndex(0));
    for (const char *path : {"text/b", "ints/b", "strings[0]/b", "typedStrings[0]/b",
                             "rawInvalid/b", "rawList/b", "rawMap/b"})
        addFailure(path, noKeys("b"));
}

void ValueLookupByPathTest::aPathLeadsToAValueOrAWarning()
{
    QFETCH(const QString, path);
    QFETCH(const QString, found);
    QFETCH(const QStringList, warnings);

    MessageLog log;
    QCOMPARE(describe(sample().getByXpath(path)), found);
    QCOMPARE(log.take(), warnings);
}

void ValueLookupByPathTest::aLookupChangesNothing()
{
    Configuration configuration = sample();
    const Map before = ConfigurationPrivate::data(configuration);

    MessageLog log;
    for (const char *path : {"", "/", "int", "a/b/c", "ints[1]", "ints[3]", "a[0]", "no", "int/b"})
        configuration.getByXpath(path);
    QVERIFY(ConfigurationPrivate::data(configuration).isSharedWith(before));

    Configuration nested = Configuration::fromVariant(configuration.getByXpath("a"));
    QVERIFY(nested.set("n", 6));
    QCOMPARE(configuration.getByXpath("a/n"), QVariant(5));
    // Nor is anything kept from one lookup to the next.
    QVERIFY(configuration.set("int", "one"));
    QCOMPARE(configuration.getByXpath("int"), QVariant("one"));
}

QTEST_GUILESS_MAIN(ValueLookupByPathTest)

#include "value_lookup_by_path_test.moc"
