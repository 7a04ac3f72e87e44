// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "world.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Tarnvel::Sandbox;

namespace {

// A world of one application whose configuration is \a configuration.
QByteArray worldOf(const QByteArray &configuration)
{
    return R"({"applications": [{"organization": "acme", "application": "viewer",)"
           R"( "configuration": )"
        + configuration + "}]}";
}

QByteArray nested(int levels)
{
    QByteArray text;
    for (int level = 1; level < levels; ++level)
        text += R"({"n": )";
    return text + R"({"n": [1]})" + QByteArray(levels - 1, '}');
}

QString printed(const Variant &value)
{
    g_autofree gchar *text = g_variant_print(value.get(), TRUE);
    return QString::fromUtf8(text);
}

} // namespace

class WorldFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aConfigurationBecomesWhatDBusCarries_data();
    void aConfigurationBecomesWhatDBusCarries();
    void anApplicationHasItsObjectPath_data();
    void anApplicationHasItsObjectPath();
    void aWorldHoldsItsApplications();
    void aMistakeIsNamedAndChangesNothing_data();
    void aMistakeIsNamedAndChangesNothing();
    void aFileThatCannotBeReadIsNamed();
    void configurationsAreEqualInWhateverOrderTheyWereWritten();
};

void WorldFileTest::aConfigurationBecomesWhatDBusCarries_data()
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

void WorldFileTest::aConfigurationBecomesWhatDBusCarries()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, expected);

    World world;
    QString mistake;
    QVERIFY2(parseWorld("w.json", worldOf(json), &world, &mistake), qPrintable(mistake));
    QCOMPARE(world.size(), 1);
    QCOMPARE(QString::fromUtf8(g_variant_get_type_string(world.first().configuration.get())),
             QString("a{sv}"));
    QCOMPARE(printed(world.first().configuration), expected);
}

void WorldFileTest::anApplicationHasItsObjectPath_data()
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

void WorldFileTest::anApplicationHasItsObjectPath()
{
    QFETCH(QString, organization);
    QFETCH(QString, application);
    QTEST(applicationPath(organization, application), "path");
}

void WorldFileTest::aWorldHoldsItsApplications()
{
    const QByteArray text = R"({"applications": [
        {"organization": "acme.labs", "application": "viewer",
         "configuration": {"theme": "dark"}, "locked": ["theme", "network/proxy"]},
        {"organization": "acme", "application": "editor", "configuration": {}}]})";
    World world;
    QString mistake;
    QVERIFY2(parseWorld("w.json", text, &world, &mistake), qPrintable(mistake));
    QCOMPARE(world.keys(), QStringList({"/acme_2eeditor", "/acme_2elabs_2eviewer"}));
    const Application editor = world.value("/acme_2eeditor");
    QCOMPARE(editor.name, QString("acme/editor"));
    QCOMPARE(editor.locked, QStringList());
    QCOMPARE(printed(editor.configuration), QString("@a{sv} {}"));
    const Application viewer = world.value("/acme_2elabs_2eviewer");
    QCOMPARE(viewer.name, QString("acme.labs/viewer"));
    QCOMPARE(viewer.locked, QStringList({"theme", "network/proxy"}));
    QCOMPARE(printed(viewer.configuration), QString("{'theme': <'dark'>}"));

    QVERIFY(parseWorld("w.json", R"({"applications": []})", &world, &mistake));
    QVERIFY(world.isEmpty());
}

void WorldFileTest::aMistakeIsNamedAndChangesNothing_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    const QString in = "w.json: applications[0]/configuration";
    const QByteArray names = R"("organization": "acme", "application": "viewer")";

    QTest::newRow("empty file") << QByteArray() << "w.json:1:1: illegal value";
    QTest::newRow("broken line") << QByteArray("{\n  \"applications\" 1\n}")
                                 << "w.json:2:18: missing name separator";
    QTest::newRow("columns are characters")
        << QByteArray("{\"ü\": [1 2]}") << "w.json:1:10: missing value separator";
    QTest::newRow("comma at the end")
        << QByteArray("{\"applications\": [],\n}") << "w.json:2:1: object is missing after a comma";
    QTest::newRow("more after the end")
        << QByteArray("{}\n\n {}") << "w.json:3:2: garbage at the end of the document";
    QTest::newRow("list") << QByteArray("[]") << "w.json: not an object";
    QTest::newRow("nothing in it") << QByteArray("{}") << "w.json: \"applications\" is missing";
    QTest::newRow("no list") << QByteArray(R"({"applications": {}})")
                             << "w.json: applications: not a list";
    QTest::newRow("unknown member at the top")
        << QByteArray(R"({"applications": [], "x": 1})") << "w.json: x: unknown member";
    QTest::newRow("no object") << QByteArray(R"({"applications": [1]})")
                               << "w.json: applications[0]: not an object";
    QTest::newRow("no organization")
        << QByteArray(R"({"applications": [{"application": "a", "configuration": {}}]})")
        << "w.json: applications[0]: \"organization\" is missing";
    QTest::newRow("no application")
        << QByteArray(R"({"applications": [{"organization": "a", "configuration": {}}]})")
        << "w.json: applications[0]: \"application\" is missing";
    QTest::newRow("no configuration") << QByteArray(R"({"applications": [{)" + names + "}]}")
                                      << "w.json: applications[0]: \"configuration\" is missing";
    QTest::newRow("name is no string") << QByteArray(R"({"applications": [{"organization": 1}]})")
                                       << "w.json: applications[0]/organization: not a string";
    QTest::newRow("configuration is no object") << worldOf("[]") << in + ": not an object";
    QTest::newRow("unknown member")
        << QByteArray(R"({"applications": [{)" + names + R"(, "configuration": {}, "lock": []}]})")
        << "w.json: applications[0]/lock: unknown member";
    QTest::newRow("no object path") << QByteArray(
        R"({"applications": [{"organization": "a b", "application": "c", "configuration": {}}]})")
                                    << "w.json: applications[0]: \"/a b_2ec\" is no object path";
    QTest::newRow("same application twice")
        << QByteArray(R"({"applications": [{)" + names + R"(, "configuration": {}}, {)" + names
                      + R"(, "configuration": {}}]})")
        << "w.json: applications[1]: a second application at \"/acme_2eviewer\"";
    QTest::newRow("locked is no list") << QByteArray(R"({"applications": [{)" + names
                                                     + R"(, "configuration": {}, "locked": ""}]})")
                                       << "w.json: applications[0]/locked: not a list";
    for (const char *lock : {"1", "\"\"", "\"/\"", "\"a//b\"", "\"a/\""})
        QTest::newRow((QByteArray("lock ") + lock).constData())
            << QByteArray(R"({"applications": [{)" + names
                          + R"(, "configuration": {}, "locked": ["a", )" + lock + "]}]}")
            << "w.json: applications[0]/locked[1]: not the path of a setting, such as \"a/b\"";

    QTest::newRow("null") << worldOf(R"({"a": null})") << in + "/a: null is no value of a setting";
    QTest::newRow("fraction") << worldOf(R"({"a": 1.5})") << in + "/a: 1.5 is no 32-bit integer";
    QTest::newRow("too great") << worldOf(R"({"a": 2147483648})")
                               << in + "/a: 2147483648 is no 32-bit integer";
    QTest::newRow("too small") << worldOf(R"({"a": -2147483649})")
                               << in + "/a: -2147483649 is no 32-bit integer";
    QTest::newRow("nested") << worldOf(R"({"a": {"b": {"c": [1, 0.1]}}})")
                            << in + "/a/b/c[1]: 0.1 is no 32-bit integer";
    QTest::newRow("integer after text")
        << worldOf(R"({"a": ["x", 1]})")
        << in + "/a[1]: an integer in a list that begins with a string";
    QTest::newRow("boolean after integer")
        << worldOf(R"({"a": [1, 2, true]})")
        << in + "/a[2]: a boolean in a list that begins with an integer";
    QTest::newRow("null in a list")
        << worldOf(R"({"a": [null]})") << in + "/a[0]: null is no value of a setting";
    QTest::newRow("list in a list") << worldOf(R"({"a": [[]]})") << in + "/a[0]: a list in a list";
    QTest::newRow("object in a list")
        << worldOf(R"({"a": [{}]})") << in + "/a[0]: an object in a list";
    QTest::newRow("U+0000") << worldOf(R"({"a": "x\u0000"})")
                            << in + "/a: D-Bus does not carry this string";
    QTest::newRow("half a character")
        << worldOf(R"({"a": ["\ud800"]})") << in + "/a[0]: D-Bus does not carry this string";
    QTest::newRow("U+0000 in a key")
        << worldOf(R"({"\u0000": 1})") << in + "/" + QChar() + ": D-Bus does not carry this key";
    QTest::newRow("too deep") << worldOf(nested(22))
                              << in + QString("/n").repeated(21)
            + ": D-Bus does not carry more than 21 levels";
}

void WorldFileTest::aMistakeIsNamedAndChangesNothing()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);

    World world;
    QString mistake;
    QVERIFY(parseWorld("w.json", worldOf(nested(21)), &world, &mistake));
    QVERIFY(!parseWorld("w.json", text, &world, &mistake));
    QCOMPARE(mistake, expected);
    QCOMPARE(world.keys(), QStringList("/acme_2eviewer"));
}

void WorldFileTest::aFileThatCannotBeReadIsNamed()
{
    const QTemporaryDir directory;
    const QString name = directory.filePath("missing.json");
    World world;
    QString mistake;
    QVERIFY(!readWorld(name, &world, &mistake));
    QCOMPARE(mistake, name + ": No such file or directory");
    QVERIFY(!readWorld(directory.path(), &world, &mistake));
    QCOMPARE(mistake, directory.path() + ": file to open is a directory");
}

void WorldFileTest::configurationsAreEqualInWhateverOrderTheyWereWritten()
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

QTEST_GUILESS_MAIN(WorldFileTest)

#include "world_file_test.moc"
