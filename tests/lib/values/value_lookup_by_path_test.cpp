// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>
#include <QtTest/QtTest>

#include <Tarnvel/ManagedConfiguration/Configuration>

#include "configuration_p.h"
#include "message_log.h"

using namespace Tarnvel::Application::ManagedConfiguration;
using Tarnvel::Testing::MessageLog;

namespace {

Configuration makeInner()
{
    Configuration inner;
    inner.set("c", "innermost");
    inner.set("flags", QVariant::fromValue(QList<bool> {true, false}));
    return inner;
}

// What set() takes, one key for each form, and nested configurations under "a" and "a/b".
Configuration makeConfiguration()
{
    Configuration middle;
    middle.set("b", QVariant::fromValue(makeInner()));
    middle.set("n", 5);

    Configuration configuration;
    configuration.set("a", QVariant::fromValue(middle));
    configuration.set("int", 42);
    configuration.set("bool", false);
    configuration.set("text", "dark");
    configuration.set("nullText", QString());
    configuration.set("strings", QStringList {"x", "y"});
    configuration.set("ints", QVariant::fromValue(QList<int> {10, 20, 30}));
    configuration.set("bools", QVariant::fromValue(QList<bool> {false, true}));
    configuration.set("typedStrings", QVariant::fromValue(QList<QString> {"p", QString()}));
    configuration.set("noInts", QVariant::fromValue(QList<int>()));
    configuration.set("noStrings", QStringList());
    configuration.set("12]",
                      QVariant::fromValue(QList<int> {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 120}));
    configuration.set("say \"hi\"", 1);
    configuration.set("größe", 2);
    configuration.set("", 3);
    configuration.set("x/y", 4);
    return configuration;
}

// Values that set() refuses.
Configuration makeRawConfiguration()
{
    QMap<QString, QVariant> map;
    map.insert("list", QVariantList {1, 2});
    map.insert("map", QVariantMap {{"b", 1}});
    map.insert("invalid", QVariant());
    map.insert("double", 1.5);
    map.insert("doubles", QVariant::fromValue(QList<double> {1.5}));
    return Configuration(new ConfigurationPrivate(map));
}

QString getting(const QString &quotedXpath)
{
    return "Error when getting a value from configuration by the " + quotedXpath + " xpath. ";
}

QString noIndex(const QString &quotedXpath, int index)
{
    return getting(quotedXpath)
        + QString("The current value to be processed does not support an access by index "
                  "(index=%1)")
              .arg(index);
}

QString noItem(const QString &quotedXpath, int index)
{
    return getting(quotedXpath)
        + QString("The current sequence to be processed does not contain enough items to access "
                  "item at index %1")
              .arg(index);
}

QString noKeys(const QString &quotedXpath, const QString &quotedKey)
{
    return getting(quotedXpath)
        + "The current value to be processed does not support an access by key (key=" + quotedKey
        + ')';
}

QString noSuchKey(const QString &quotedXpath, const QString &quotedKey)
{
    return getting(quotedXpath) + "The current value to be processed does not contain the "
        + quotedKey + " key";
}

QString notAPath(const QString &quotedXpath)
{
    return "Attempt to use a non-valid xpath to get a value from the configuration (xpath="
        + quotedXpath + ')';
}

} // namespace

class ValueLookupByPathTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPathLeadsToAValueOfItsType_data();
    void aPathLeadsToAValueOfItsType();
    void aPathLeadsToANestedConfiguration_data();
    void aPathLeadsToANestedConfiguration();
    void aVeryDeepPathIsWalked();
    void theWholeWarnings_data();
    void theWholeWarnings();
    void aTextThatIsNoPathIsReported_data();
    void aTextThatIsNoPathIsReported();
    void aPathThatDoesNotFitIsReported_data();
    void aPathThatDoesNotFitIsReported();
    void aPathThroughValuesThatCannotBeSet_data();
    void aPathThroughValuesThatCannotBeSet();
    void valuesThatCannotBeSetAreReachedAsTheyAre_data();
    void valuesThatCannotBeSetAreReachedAsTheyAre();
    void aLookupChangesNothing();
    void aLookupIsMadeAfresh();
};

void ValueLookupByPathTest::aPathLeadsToAValueOfItsType_data()
{
    QTest::addColumn<QString>("xpath");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("no opening bracket") << "12]" << QVariant(120);
    QTest::newRow("null string") << "nullText" << QVariant(QString());
    QTest::newRow("null string in a list") << "typedStrings[1]" << QVariant(QString());
    QTest::newRow("needless separators") << "//a///n//" << QVariant(5);
    QTest::newRow("quotes in the key") << "say \"hi\"" << QVariant(1);
    QTest::newRow("key beyond ASCII") << "größe" << QVariant(2);
    QTest::newRow("int") << "int" << QVariant(42);
    QTest::newRow("bool") << "bool" << QVariant(false);
    QTest::newRow("string") << "text" << QVariant("dark");
    QTest::newRow("list of strings, first") << "strings[0]" << QVariant("x");
    QTest::newRow("list of strings, last") << "strings[1]" << QVariant("y");
    QTest::newRow("list of int, first") << "ints[0]" << QVariant(10);
    QTest::newRow("list of int, second") << "ints[1]" << QVariant(20);
    QTest::newRow("list of int, last") << "ints[2]" << QVariant(30);
    QTest::newRow("list of int, leading zero") << "ints[01]" << QVariant(20);
    QTest::newRow("list of bool, first") << "bools[0]" << QVariant(false);
    QTest::newRow("list of bool, last") << "bools[1]" << QVariant(true);
    QTest::newRow("list of QString") << "typedStrings[0]" << QVariant("p");
    QTest::newRow("nested") << "a/n" << QVariant(5);
    QTest::newRow("nested twice") << "a/b/c" << QVariant("innermost");
    QTest::newRow("nested list") << "a/b/flags[0]" << QVariant(true);
    QTest::newRow("whole QStringList") << "strings" << QVariant(QStringList {"x", "y"});
    QTest::newRow("whole empty list") << "noStrings" << QVariant(QStringList());
}

void ValueLookupByPathTest::aPathLeadsToAValueOfItsType()
{
    QFETCH(QString, xpath);
    QFETCH(QVariant, value);

    MessageLog log;
    const QVariant found = makeConfiguration().getByXpath(xpath);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(found.userType(), value.userType());
    QCOMPARE(found, value);
    QCOMPARE(found.isNull(), value.isNull());
}

void ValueLookupByPathTest::aPathLeadsToANestedConfiguration_data()
{
    QTest::addColumn<QString>("xpath");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("outer") << "a"
                           << "n" << QVariant(5);
    QTest::newRow("inner") << "a/b"
                           << "c" << QVariant("innermost");
}

void ValueLookupByPathTest::aPathLeadsToANestedConfiguration()
{
    QFETCH(QString, xpath);
    QFETCH(QString, key);
    QFETCH(QVariant, value);

    MessageLog log;
    const QVariant found = makeConfiguration().getByXpath(xpath);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(found.userType(), qMetaTypeId<Configuration>());
    QCOMPARE(Configuration::fromVariant(found).get(key), value);
}

void ValueLookupByPathTest::aVeryDeepPathIsWalked()
{
    constexpr int depth = 1000;
    Configuration configuration;
    configuration.set("leaf", 7);
    for (int i = 0; i < depth; ++i) {
        Configuration outer;
        outer.set("k", QVariant::fromValue(configuration));
        configuration = outer;
    }

    MessageLog log;
    QCOMPARE(configuration.getByXpath(QString("k/").repeated(depth) + "leaf"), QVariant(7));
    QCOMPARE(log.take(), QStringList());
}

void ValueLookupByPathTest::theWholeWarnings_data()
{
    QTest::addColumn<QString>("xpath");
    QTest::addColumn<QString>("warning");
    QTest::newRow("no path")
        << "/"
        << "Attempt to use a non-valid xpath to get a value from the configuration (xpath=\"/\")";
    QTest::newRow("an index into no list")
        << "int[7]"
        << "Error when getting a value from configuration by the \"int[7]\" xpath. The current "
           "value to be processed does not support an access by index (index=7)";
    QTest::newRow("an index too great")
        << "ints[3]"
        << "Error when getting a value from configuration by the \"ints[3]\" xpath. The current "
           "sequence to be processed does not contain enough items to access item at index 3";
    QTest::newRow("a key into no configuration")
        << "int/b"
        << "Error when getting a value from configuration by the \"int/b\" xpath. The current "
           "value to be processed does not support an access by key (key=\"b\")";
    QTest::newRow("a missing key")
        << "missing"
        << "Error when getting a value from configuration by the \"missing\" xpath. The current "
           "value to be processed does not contain the \"missing\" key";
}

void ValueLookupByPathTest::theWholeWarnings()
{
    QFETCH(QString, xpath);
    QFETCH(QString, warning);

    MessageLog log;
    const QVariant found = makeConfiguration().getByXpath(xpath);
    QCOMPARE(log.take(), QStringList {warning});
    QVERIFY(!found.isValid());
}

void ValueLookupByPathTest::aTextThatIsNoPathIsReported_data()
{
    QTest::addColumn<QString>("xpath");
    QTest::addColumn<QStringList>("warnings");
    QTest::newRow("null") << QString()
                          << QStringList {"Attempt to process an empty xpath", notAPath("\"\"")};
    QTest::newRow("empty") << QString("")
                           << QStringList {"Attempt to process an empty xpath", notAPath("\"\"")};
    QTest::newRow("a separator") << "/" << QStringList {notAPath("\"/\"")};
    QTest::newRow("separators") << "///" << QStringList {notAPath("\"///\"")};
    QTest::newRow("a quote, twice")
        << "a\"[\"]"
        << QStringList {R"(The xpath part contains an invalid index: "\"" (xpath="a\"[\"]"))",
                        notAPath(R"("a\"[\"]")")};
    QTest::newRow("format") << "a[1"
                            << QStringList {"The xpath part has an invalid index format: \"a[1\" "
                                            "(xpath=\"a[1\")",
                                            notAPath("\"a[1\"")};
    QTest::newRow("leading bracket")
        << "a/[1]"
        << QStringList {"The xpath part cannot have the ‘[’ character at the beginning: \"[1]\" "
                        "(xpath=\"a/[1]\")",
                        notAPath("\"a/[1]\"")};
    QTest::newRow("closing bracket")
        << "ints[1][2]"
        << QStringList {"The ']' character can only be at the end of an xpath part: "
                        "\"ints[1][2]\" (xpath=\"ints[1][2]\")",
                        notAPath("\"ints[1][2]\"")};
    QTest::newRow("index after a missing key")
        << "missing/ints[-1]"
        << QStringList {"The xpath part contains an invalid index: \"-1\" "
                        "(xpath=\"missing/ints[-1]\")",
                        notAPath("\"missing/ints[-1]\"")};
}

void ValueLookupByPathTest::aTextThatIsNoPathIsReported()
{
    QFETCH(QString, xpath);
    QFETCH(QStringList, warnings);

    MessageLog log;
    const QVariant found = makeConfiguration().getByXpath(xpath);
    QCOMPARE(log.take(), warnings);
    QVERIFY(!found.isValid());
}

void ValueLookupByPathTest::aPathThatDoesNotFitIsReported_data()
{
    QTest::addColumn<QString>("xpath");
    QTest::addColumn<QString>("warning");
    const QString greatest = "ints[2147483647]";
    QTest::newRow("quote, index") << "say \"hi\"[0]" << noIndex(R"("say \"hi\"[0]")", 0);
    QTest::newRow("quote, item") << "\"/a/b" << noSuchKey(R"("\"/a/b")", R"("\"")");
    QTest::newRow("quote, key") << "text/\"" << noKeys(R"("text/\"")", R"("\"")");
    QTest::newRow("quote, missing key") << "\"" << noSuchKey(R"("\"")", R"("\"")");
    QTest::newRow("backslash") << "a\\" << noSuchKey(R"("a\\")", R"("a\\")");
    QTest::newRow("beyond ASCII") << "größe/日" << noKeys("\"größe/日\"", "\"日\"");
    QTest::newRow("path as given") << "//a//x//" << noSuchKey("\"//a//x//\"", "\"x\"");
    QTest::newRow("blank in the key") << " a" << noSuchKey("\" a\"", "\" a\"");
    QTest::newRow("letter case") << "A" << noSuchKey("\"A\"", "\"A\"");
    QTest::newRow("key with a separator") << "x/y" << noSuchKey("\"x/y\"", "\"x\"");
    QTest::newRow("greatest index") << greatest << noItem("\"" + greatest + "\"", 2147483647);
    QTest::newRow("index = size") << "ints[3]" << noItem("\"ints[3]\"", 3);
    QTest::newRow("empty list of int") << "noInts[0]" << noItem("\"noInts[0]\"", 0);
    QTest::newRow("empty list of strings") << "noStrings[0]" << noItem("\"noStrings[0]\"", 0);
    QTest::newRow("strings, index = size") << "strings[2]" << noItem("\"strings[2]\"", 2);
    QTest::newRow("bools, index = size") << "bools[2]" << noItem("\"bools[2]\"", 2);
    QTest::newRow("QStrings, index = size")
        << "typedStrings[2]" << noItem("\"typedStrings[2]\"", 2);
    QTest::newRow("index into a configuration") << "a[0]" << noIndex("\"a[0]\"", 0);
    QTest::newRow("index into a string") << "text[0]" << noIndex("\"text[0]\"", 0);
    QTest::newRow("index into a bool") << "bool[1]" << noIndex("\"bool[1]\"", 1);
    QTest::newRow("index under a missing key") << "no[0]" << noSuchKey("\"no[0]\"", "\"no\"");
    QTest::newRow("key into a string") << "text/b" << noKeys("\"text/b\"", "\"b\"");
    QTest::newRow("key into a list") << "ints/b" << noKeys("\"ints/b\"", "\"b\"");
    QTest::newRow("key into an item") << "strings[0]/b" << noKeys("\"strings[0]/b\"", "\"b\"");
    QTest::newRow("first missing key") << "a/x/y" << noSuchKey("\"a/x/y\"", "\"x\"");
    QTest::newRow("missing key inside") << "a/b/x" << noSuchKey("\"a/b/x\"", "\"x\"");
}

void ValueLookupByPathTest::aPathThatDoesNotFitIsReported()
{
    theWholeWarnings();
}

void ValueLookupByPathTest::aPathThroughValuesThatCannotBeSet_data()
{
    QTest::addColumn<QString>("xpath");
    QTest::addColumn<QString>("warning");
    QTest::newRow("invalid, by key") << "invalid/b" << noKeys("\"invalid/b\"", "\"b\"");
    QTest::newRow("invalid, by index") << "invalid[0]" << noIndex("\"invalid[0]\"", 0);
    QTest::newRow("untyped list, by index") << "list[0]" << noIndex("\"list[0]\"", 0);
    QTest::newRow("untyped list, by key") << "list/b" << noKeys("\"list/b\"", "\"b\"");
    QTest::newRow("untyped map, by key") << "map/b" << noKeys("\"map/b\"", "\"b\"");
    QTest::newRow("untyped map, by index") << "map[0]" << noIndex("\"map[0]\"", 0);
    QTest::newRow("list of double, by index") << "doubles[0]" << noIndex("\"doubles[0]\"", 0);
}

void ValueLookupByPathTest::aPathThroughValuesThatCannotBeSet()
{
    QFETCH(QString, xpath);
    QFETCH(QString, warning);

    MessageLog log;
    const QVariant found = makeRawConfiguration().getByXpath(xpath);
    QCOMPARE(log.take(), QStringList {warning});
    QVERIFY(!found.isValid());
}

void ValueLookupByPathTest::valuesThatCannotBeSetAreReachedAsTheyAre_data()
{
    QTest::addColumn<QString>("xpath");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("invalid") << "invalid" << QVariant();
    QTest::newRow("untyped list") << "list" << QVariant(QVariantList {1, 2});
    QTest::newRow("untyped map") << "map" << QVariant(QVariantMap {{"b", 1}});
    QTest::newRow("double") << "double" << QVariant(1.5);
}

void ValueLookupByPathTest::valuesThatCannotBeSetAreReachedAsTheyAre()
{
    QFETCH(QString, xpath);
    QFETCH(QVariant, value);

    MessageLog log;
    const QVariant found = makeRawConfiguration().getByXpath(xpath);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(found.userType(), value.userType());
    QCOMPARE(found, value);
}

void ValueLookupByPathTest::aLookupChangesNothing()
{
    const Configuration configuration = makeConfiguration();
    const QMap<QString, QVariant> before = ConfigurationPrivate::data(configuration);

    MessageLog log;
    for (const char *xpath : {"", "/", "int", "a/b/c", "ints[1]", "ints[3]", "a[0]", "no", "int/b"})
        configuration.getByXpath(xpath);
    QVERIFY(ConfigurationPrivate::data(configuration).isSharedWith(before));

    Configuration nested = Configuration::fromVariant(configuration.getByXpath("a"));
    QVERIFY(nested.set("n", 6));
    QCOMPARE(configuration.getByXpath("a/n"), QVariant(5));
}

void ValueLookupByPathTest::aLookupIsMadeAfresh()
{
    Configuration configuration;

    MessageLog log;
    QVERIFY(!configuration.getByXpath("a").isValid());
    QVERIFY(configuration.set("a", 1));
    QCOMPARE(configuration.getByXpath("a"), QVariant(1));
    QVERIFY(configuration.set("a", "one"));
    QCOMPARE(configuration.getByXpath("a"), QVariant("one"));
    QCOMPARE(log.take(), QStringList {noSuchKey("\"a\"", "\"a\"")});
}

QTEST_GUILESS_MAIN(ValueLookupByPathTest)

#include "value_lookup_by_path_test.moc"
