// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "description.h"
#include "generatedsettings.h"
#include "nasty.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QTest>

#include <functional>
#include <limits>

using namespace Tarnvel::Testing;

using Configuration = Tarnvel::Application::ManagedConfiguration::Configuration;
using Change = GeneratedSettings::Change;
using Entries = QMap<QString, QVariant>;

namespace {

QVariant object(const Entries &entries)
{
    return QVariant::fromValue(makeConfiguration(entries));
}

// The settings whose configuration has this entry alone.
GeneratedSettings settingsWith(const QString &key, const QVariant &value)
{
    return GeneratedSettings(
        makeConfiguration(value.isValid() ? Entries {{key, value}} : Entries()));
}

// What the getter of the setting returns.
QVariant read(const GeneratedSettings &settings, const QString &key)
{
    static const QMap<QString, std::function<QVariant(const GeneratedSettings &)>> getters {
        {"zoom", &GeneratedSettings::zoom},
        {"copies", &GeneratedSettings::copies},
        {"any", &GeneratedSettings::any},
        {"visible", &GeneratedSettings::visible},
        {"theme", [](const auto &one) { return static_cast<int>(one.theme()); }},
        {"name", &GeneratedSettings::name},
        {"color", &GeneratedSettings::color},
        {"text", &GeneratedSettings::text},
        {"sizes", [](const auto &one) { return makeList(one.sizes()); }},
        {"days", [](const auto &one) { return makeList(one.days()); }},
        {"files", &GeneratedSettings::files},
        {"network", [](const auto &one) { return one.network().proxy(); }},
        {"key with spaces", &GeneratedSettings::spaced},
    };
    return getters.value(key)(settings);
}

} // namespace

class GeneratedClassTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aValueThatIsNotAllowedReadsAsTheDefault_data();
    void aValueThatIsNotAllowedReadsAsTheDefault();
    void problemsAreShownOnOneLine();
    void nestedSettingsHaveTheirPaths();
    void effectiveValuesThatDifferAreChanged_data();
    void effectiveValuesThatDifferAreChanged();
    void aChangeHasWhatWasSet();
    void aNestedChangeCarriesItsSiblings();
    void everySetterStoresWhatTheGetterReads();
    void anyTextIsADefault();
    void defaultsAreGivenByKey();
};

void GeneratedClassTest::aValueThatIsNotAllowedReadsAsTheDefault_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant>("expected");
    QTest::addColumn<QString>("problem");
    const auto add = [](const char *key, const QVariant &value, const QVariant &expected,
                        const char *problem = "") {
        QTest::addRow("%s: %s", key, qPrintable(describe(value)))
            << key << value << expected << QString::fromUtf8(problem);
    };
    const QVariant integers = makeList<int>({1});
    const QVariant booleans = makeList<bool>({false});
    const QVariant strings = QStringList {"a"};

    add("zoom", {}, 100);
    add("zoom", 24, 100, "zoom: 24 is below 25; 100 is used");
    add("zoom", 25, 25);
    add("zoom", 400, 400);
    add("zoom", 401, 100, "zoom: 401 is above 400; 100 is used");
    add("zoom", true, 100, "zoom: expected an integer, found a boolean; 100 is used");
    add("zoom", "25", 100, "zoom: expected an integer, found a string; 100 is used");
    add("zoom", integers, 100, "zoom: expected an integer, found a list; 100 is used");
    add("zoom", object({}), 100, "zoom: expected an integer, found an object; 100 is used");
    add("copies", {}, 2);
    add("copies", 4, 4);
    add("copies", 3, 2, "copies: 3 is not one of 1, 2, 4; 2 is used");
    add("any", {}, -7);
    add("any", std::numeric_limits<int>::min(), std::numeric_limits<int>::min());
    add("any", std::numeric_limits<int>::max(), std::numeric_limits<int>::max());
    add("visible", {}, true);
    add("visible", false, false);
    add("visible", 0, true, "visible: expected a boolean, found a number; true is used");
    add("theme", {}, 1);
    add("theme", "light", 0);
    add("theme", "two-pages", 2);
    add("theme", "Light", 1,
        "theme: \"Light\" is not one of \"light\", \"dark\", \"two-pages\"; \"dark\" is used");
    add("theme", 0, 1, "theme: expected a string, found a number; \"dark\" is used");
    add("name", {}, "abc");
    add("name", "a", "abc", "name: \"a\" has fewer than 2 characters; \"abc\" is used");
    add("name", "ab", "ab");
    add("name", "abcd", "abc", "name: \"abcd\" has more than 3 characters; \"abc\" is used");
    add("name", u8"\U0001f600", "abc",
        u8"name: \"\U0001f600\" has fewer than 2 characters; \"abc\" is used");
    add("name", u8"\U0001f600\U0001f600\U0001f600", u8"\U0001f600\U0001f600\U0001f600");
    add("name", QString(QChar(0xde00)) + QChar(0xd83d), QString(QChar(0xde00)) + QChar(0xd83d));
    add("name", QString(QChar(0xd83d)) + 'a', QString(QChar(0xd83d)) + 'a');
    add("color", {}, "#00");
    add("color", "a #0f", "a #0f");
    add("color", "#0", "#00", "color: \"#0\" does not match #[0-9a-f]{2}; \"#00\" is used");
    add("text", {}, u8"gr\u00f6\u00dfe \"\\ ?? \U0001f600");
    add("text", "", "");
    add("sizes", {}, makeList<int>({5, 6}));
    add("sizes", makeList<int>({1, 9, 1}), makeList<int>({1, 9, 1}));
    add("sizes", makeList<int>({1, 0}), makeList<int>({5, 6}),
        "sizes: 0 is below 1; [5, 6] is used");
    add("sizes", makeList<int>({1, 2, 3, 4}), makeList<int>({5, 6}),
        "sizes: the list has more than 3 items; [5, 6] is used");
    add("sizes", makeList<int>({}), makeList<int>({5, 6}),
        "sizes: the list has fewer than 1 items; [5, 6] is used");
    add("sizes", booleans, makeList<int>({5, 6}),
        "sizes: expected an integer, found a boolean; [5, 6] is used");
    add("sizes", 1, makeList<int>({5, 6}),
        "sizes: expected a list, found a number; [5, 6] is used");
    add("days", {}, makeList<bool>({true}));
    add("days", booleans, booleans);
    add("days", makeList<bool>({}), makeList<bool>({}));
    add("days", QStringList(), makeList<bool>({}));
    add("days", makeList<int>({}), makeList<bool>({}));
    add("days", strings, makeList<bool>({true}),
        "days: expected a boolean, found a string; [true] is used");
    add("files", {}, QStringList {"b"});
    add("files", strings, QStringList {"a"});
    add("files", makeList<QString>({"a", "b"}), QStringList {"a", "b"});
    add("files", QStringList(), QStringList());
    add("files", QStringList {"a", "c"}, QStringList {"b"},
        "files: \"c\" is not one of \"a\", \"b\"; [\"b\"] is used");
    add("files", integers, QStringList {"b"},
        "files: expected a string, found a number; [\"b\"] is used");
    add("network", {}, "");
    add("network", object({{"proxy", "p"}}), "p");
    add("network", object({{"proxy", 1}}), "",
        "network/proxy: expected a string, found a number; \"\" is used");
    add("network", "proxy", "",
        "network: expected an object, found a string; its defaults are used");
    add("key with spaces", true, true);
    add("key with spaces", 1, false,
        "key with spaces: expected a boolean, found a number; false is used");
    add("unknown", 1, {});
}

void GeneratedClassTest::aValueThatIsNotAllowedReadsAsTheDefault()
{
    QFETCH(const QString, key);
    QFETCH(const QVariant, value);
    QFETCH(const QVariant, expected);
    QFETCH(const QString, problem);
    const GeneratedSettings settings = settingsWith(key, value);
    if (expected.isValid())
        QCOMPARE(describe(read(settings, key)), describe(expected));
    QCOMPARE(settings.problems(), problem.isEmpty() ? QStringList() : QStringList {problem});
}

void GeneratedClassTest::problemsAreShownOnOneLine()
{
    QCOMPARE(settingsWith("name", QString(80, 'x')).problems(),
             QStringList {"name: \"" + QString(80, 'x')
                          + "\" has more than 3 characters; \"abc\" is used"});
    const QString text = QString("\u001b\n\u202e\u2028") + QString(80, 'x');
    QCOMPARE(settingsWith("name", text).problems(),
             QStringList {"name: \"\\u001b\\u000a\\u202e\\u2028" + QString(76, 'x')
                          + "...\" has more than 3 characters; \"abc\" is used"});
}

void GeneratedClassTest::nestedSettingsHaveTheirPaths()
{
    const GeneratedSettings before(makeConfiguration(
        {{"zoom", 1},
         {"network", object({{"proxy", true}, {"updates", object({{"hour", false}})}})}}));
    QCOMPARE(
        before.problems(),
        QStringList({"zoom: 1 is below 25; 100 is used",
                     "network/proxy: expected a string, found a boolean; \"\" is used",
                     "network/updates/hour: expected an integer, found a boolean; 0 is used"}));
    QCOMPARE(before.network().updates().problems(), before.problems().mid(2));
    const GeneratedSettings now(makeConfiguration(
        {{"network", object({{"proxy", "p"}, {"updates", object({{"hour", 1}})}})}}));
    QCOMPARE(now.changedFrom(before), QStringList({"network/proxy", "network/updates/hour"}));
    QCOMPARE(now.network().changedFrom(before.network()), now.changedFrom(before));
}

void GeneratedClassTest::effectiveValuesThatDifferAreChanged_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("before");
    QTest::addColumn<QVariant>("now");
    QTest::addColumn<bool>("isChanged");
    QTest::newRow("nothing") << "zoom" << QVariant() << QVariant() << false;
    QTest::newRow("the default") << "zoom" << QVariant(100) << QVariant() << false;
    QTest::newRow("not usable") << "zoom" << QVariant(100) << QVariant(500) << false;
    QTest::newRow("integer") << "zoom" << QVariant(100) << QVariant(101) << true;
    QTest::newRow("boolean") << "visible" << QVariant(false) << QVariant() << true;
    QTest::newRow("enumeration") << "theme" << QVariant() << QVariant("light") << true;
    QTest::newRow("string") << "text" << QVariant("a") << QVariant("A") << true;
    QTest::newRow("lists that are equal")
        << "sizes" << makeList<int>({1, 2}) << makeList<int>({1, 2}) << false;
    QTest::newRow("lists that differ") << "sizes" << makeList<int>({1, 2}) << QVariant() << true;
    QTest::newRow("types of lists")
        << "files" << QVariant(QStringList {"a"}) << makeList<QString>({"a"}) << false;
    QTest::newRow("unknown") << "unknown" << QVariant(1) << QVariant(2) << false;
}

void GeneratedClassTest::effectiveValuesThatDifferAreChanged()
{
    QFETCH(const QString, key);
    QFETCH(const QVariant, before);
    QFETCH(const QVariant, now);
    QFETCH(const bool, isChanged);
    QCOMPARE(settingsWith(key, now).changedFrom(settingsWith(key, before)),
             isChanged ? QStringList {key} : QStringList());
}

void GeneratedClassTest::aChangeHasWhatWasSet()
{
    Change change(GeneratedSettings(makeConfiguration({{"zoom", 50}, {"other", 1}})));
    QVERIFY(!change.isChanged());
    QCOMPARE(describe(change.configuration()), QString("{}"));
    change.setZoom(500); // The service decides.
    QVERIFY(change.isChanged());
    QCOMPARE(describe(change.configuration()), QString("{\"zoom\": int 500}"));
}

void GeneratedClassTest::aNestedChangeCarriesItsSiblings()
{
    const GeneratedSettings now(makeConfiguration(
        {{"zoom", 50},
         {"network",
          object({{"other", 1}, {"proxy", 2}, {"updates", object({{"enabled", true}})}})}}));
    Change change(now);
    change.network().updates().setHour(3);
    QVERIFY(change.isChanged());
    QCOMPARE(describe(change.configuration()),
             QString("{\"network\": {\"other\": int 1, \"proxy\": int 2, \"updates\": "
                     "{\"enabled\": bool true, \"hour\": int 3}}}"));
    change.network().setProxy("p");
    QCOMPARE(GeneratedSettings(change.configuration()).network().proxy(), QString("p"));
    QCOMPARE(GeneratedSettings(change.configuration()).network().updates().hour(), 3);
    QCOMPARE(now.changedFrom(now), QStringList());
}

void GeneratedClassTest::everySetterStoresWhatTheGetterReads()
{
    Change change(GeneratedSettings {Configuration()});
    change.setTheme(GeneratedSettings::Theme::TwoPages);
    change.setVisible(false);
    change.setText("");
    change.setSizes({1});
    change.setDays({});
    change.setFiles({"a"});
    change.setSpaced(true);
    QCOMPARE(describe(change.configuration()),
             QString("{\"days\": QList<bool> [], \"files\": QStringList [\"a\"], "
                     "\"key with spaces\": bool true, \"sizes\": QList<int> [1], "
                     "\"text\": QString \"\", \"theme\": QString \"two-pages\", "
                     "\"visible\": bool false}"));
    const GeneratedSettings settings(change.configuration());
    QCOMPARE(settings.problems(), QStringList());
    QCOMPARE(settings.theme(), GeneratedSettings::Theme::TwoPages);
}

void GeneratedClassTest::anyTextIsADefault()
{
    QFile schema(NASTY_SCHEMA);
    QVERIFY(schema.open(QIODevice::ReadOnly));
    const QJsonObject properties =
        QJsonDocument::fromJson(schema.readAll()).object().value("properties").toObject();
    const Nasty settings {Configuration()};
    QCOMPARE(settings.text(), properties.value("text").toObject().value("default").toString());
    QCOMPARE(settings.lowest(), std::numeric_limits<int>::min());
    QCOMPARE(settings.choice(), Nasty::Choice::D);

    Nasty::Change change(settings);
    change.setChoice(Nasty::Choice::E);
    change.setKey("k");
    const Configuration configuration = change.configuration();
    QCOMPARE(configuration.get("choice").toString(), QString(u8"\U0001f600"));
    QCOMPARE(configuration.get(properties.keys().constLast()).toString(), QString("k"));
}

void GeneratedClassTest::defaultsAreGivenByKey()
{
    QVariantMap defaults = GeneratedSettings::defaults();
    const QVariantMap network = defaults.take("network").toMap();
    QCOMPARE(network.value("updates").toMap(), QVariantMap({{"enabled", false}, {"hour", 0}}));
    QCOMPARE(network.value("proxy"), QVariant(""));
    defaults.remove("text");
    QCOMPARE(describe(makeConfiguration(defaults)),
             QString(R"({"any": int -7, "color": QString "#00", "copies": int 2, )"
                     R"("days": QList<bool> [true], "files": QStringList ["b"], )"
                     R"("key with spaces": bool false, "name": QString "abc", )"
                     R"("sizes": QList<int> [5, 6], "theme": QString "dark", )"
                     R"("visible": bool true, "zoom": int 100})"));
    QCOMPARE(GeneratedSettings(makeConfiguration(defaults)).problems(), QStringList());
}

QTEST_GUILESS_MAIN(GeneratedClassTest)

#include "generated_class_test.moc"
