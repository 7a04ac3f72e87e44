// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QProcess>
#include <QtCore/QScopedPointer>
#include <QtCore/QStringList>
#include <QtCore/QVariant>
#include <QtDBus/QDBusVariant>
#include <QtTest/QtTest>

#include <Tarnvel/ManagedConfiguration/Configuration>

#include "abort.h"
#include "configuration_p.h"
#include "message_log.h"

#include <functional>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

using namespace Tarnvel::Application::ManagedConfiguration;
using Tarnvel::Testing::abortMessage;
using Tarnvel::Testing::MessageLog;

using Map = QMap<QString, QVariant>;
using Action = std::function<void()>;

namespace {

template<typename T, typename = void>
struct HasInequality : std::false_type
{
};

template<typename T>
struct HasInequality<T, decltype(void(std::declval<const T &>() != std::declval<const T &>()))>
    : std::true_type
{
};

static_assert(HasInequality<QString>::value);
static_assert(!HasInequality<Configuration>::value);

// A type that the application can teach Qt to convert into a configuration.
struct Theme
{
    QString name;

    Configuration toConfiguration(bool *ok) const
    {
        Configuration configuration;
        configuration.set("theme", name);
        *ok = name != "broken";
        return configuration;
    }
};

Map entries(const Configuration &configuration)
{
    return ConfigurationPrivate::data(configuration);
}

Configuration makeConfiguration(const Map &map)
{
    return Configuration(new ConfigurationPrivate(map));
}

template<typename... Items>
QVariant makeList(Items... items)
{
    return QVariant::fromValue(QList<std::common_type_t<Items...>> {items...});
}

// The source of a move construction.
std::unique_ptr<Configuration> makeEmptied()
{
    auto source = std::make_unique<Configuration>(makeConfiguration({{"gone", 1}}));
    const Configuration taker(std::move(*source));
    return source;
}

} // namespace

Q_DECLARE_METATYPE(Theme)
Q_DECLARE_METATYPE(Configuration *)
Q_DECLARE_METATYPE(Action)

class ConfigurationValuesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNewConfigurationIsEmpty();
    void onlyFourOfTheBuiltInTypesAreStored();
    void anAcceptedValueComesBackAsItWas_data();
    void anAcceptedValueComesBackAsItWas();
    void aRefusedValueLeavesTheOldOne_data();
    void aRefusedValueLeavesTheOldOne();
    void keysAreDistinctAndInOrderOfTheirCodeUnits();
    void anExistingKeyIsKept();
    void aNewValueReplacesTheOldOneOfAnotherType();

    void aCopyIsIndependent_data();
    void aCopyIsIndependent();
    void aCopyIsSharedUntilItIsWritten();
    void moveConstructionEmptiesItsSource();
    void moveAssignmentExchangesTheContents();
    void anEmptiedConfigurationTakesACopy();
    void anEmptiedConfigurationTakesOverAnother();
    void anEmptiedConfigurationEmptiesAnother();
    void assigningAConfigurationToItselfChangesNothing();
    void assigningAnEmptiedConfigurationToItselfChangesNothing();
    void usingAnEmptiedConfigurationEndsTheProcess_data();
    void usingAnEmptiedConfigurationEndsTheProcess();

    void equalityFollowsTheEntries_data();
    void equalityFollowsTheEntries();
    void valuesCompareAsVariantsDo_data();
    void valuesCompareAsVariantsDo();

    void aVariantHoldsAConfiguration();
    void aVariantOfAnotherTypeGivesAnEmptyConfiguration_data();
    void aVariantOfAnotherTypeGivesAnEmptyConfiguration();
    void anApplicationsConverterIsUsed();

    void anAdoptedMapIsNotChecked();
    void adoptedDataIsOwned();
    void adoptingNothingMakesAnEmptiedConfiguration();
};

void ConfigurationValuesTest::aNewConfigurationIsEmpty()
{
    const Configuration configuration;
    QVERIFY(configuration.isEmpty());
    QVERIFY(!configuration.containsKey(QString()));
    QVERIFY(!configuration.containsKey("a"));
    QVERIFY(!configuration.get(QString()).isValid());
    QVERIFY(!configuration.get("a").isValid());
    QVERIFY(entries(configuration).isEmpty());
}

void ConfigurationValuesTest::onlyFourOfTheBuiltInTypesAreStored()
{
    QList<int> accepted;
    int tried = 0;
    for (int type = QMetaType::UnknownType + 1; type < QMetaType::User; ++type) {
        // Types of modules that are not loaded have no size, and neither has void.
        if (!QMetaType::isRegistered(type) || QMetaType::sizeOf(type) == 0)
            continue;
        const QVariant value(type, nullptr);
        QCOMPARE(value.userType(), type);
        ++tried;
        Configuration configuration;
        if (configuration.set("a", value))
            accepted.append(type);
        QCOMPARE(configuration.isEmpty(), accepted.isEmpty() || accepted.last() != type);
    }
    QVERIFY(tried > 40);
    QCOMPARE(
        accepted,
        (QList<int> {QMetaType::Bool, QMetaType::Int, QMetaType::QString, QMetaType::QStringList}));
}

void ConfigurationValuesTest::anAcceptedValueComesBackAsItWas_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("null string") << QVariant(QString());
    QTest::newRow("empty string") << QVariant(QString(""));
    QTest::newRow("empty QStringList") << QVariant(QStringList());
    QTest::newRow("empty QList<int>") << QVariant::fromValue(QList<int>());
    QTest::newRow("empty QList<bool>") << QVariant::fromValue(QList<bool>());
    QTest::newRow("empty QList<QString>") << QVariant::fromValue(QList<QString>());
    QTest::newRow("empty configuration") << QVariant::fromValue(Configuration());
    QTest::newRow("a null int") << QVariant(QVariant::Int);
    QTest::newRow("least int") << QVariant(std::numeric_limits<int>::min());
    QTest::newRow("greatest int") << QVariant(std::numeric_limits<int>::max());
    QTest::newRow("int") << QVariant(0);
    QTest::newRow("false") << QVariant(false);
    QTest::newRow("true") << QVariant(true);
    QTest::newRow("string") << QVariant("größe 😀");
    QTest::newRow("QStringList") << QVariant(QStringList {"a", "", "b"});
    QTest::newRow("QList<int>") << QVariant::fromValue(QList<int> {1, -1});
    QTest::newRow("QList<bool>") << QVariant::fromValue(QList<bool> {true, false});
    QTest::newRow("QList<QString>") << QVariant::fromValue(QList<QString> {"a", QString()});
    QTest::newRow("configuration") << QVariant::fromValue(makeConfiguration({{"a", 1}}));
}

void ConfigurationValuesTest::anAcceptedValueComesBackAsItWas()
{
    QFETCH(QVariant, value);

    MessageLog log;
    Configuration configuration;
    QVERIFY(configuration.set("a", value));
    QVERIFY(!configuration.isEmpty());
    QVERIFY(configuration.containsKey("a"));
    const QVariant stored = configuration.get("a");
    QCOMPARE(stored.userType(), value.userType());
    QCOMPARE(stored.isNull(), value.isNull());
    QVERIFY(stored == value);
    QCOMPARE(log.take(), QStringList());
}

void ConfigurationValuesTest::aRefusedValueLeavesTheOldOne_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("invalid") << QVariant();
    QTest::newRow("empty QVariantList") << QVariant(QVariantList());
    QTest::newRow("QVariantList of int") << QVariant(QVariantList {1, 2});
    QTest::newRow("QVariantMap") << QVariant(QVariantMap {{"a", 1}});
    QTest::newRow("QVariantHash") << QVariant(QVariantHash {{"a", 1}});
    const QVariant inner(1);
    QTest::newRow("a variant in a variant") << QVariant(QMetaType::QVariant, &inner);
    QTest::newRow("QDBusVariant") << QVariant::fromValue(QDBusVariant(1));
    QTest::newRow("uint") << QVariant(1u);
    QTest::newRow("qlonglong") << QVariant(1ll);
    QTest::newRow("qulonglong") << QVariant(1ull);
    QTest::newRow("short") << QVariant::fromValue<short>(1);
    QTest::newRow("double") << QVariant(1.0);
    QTest::newRow("QChar") << QVariant(QChar('a'));
    QTest::newRow("QByteArray") << QVariant(QByteArray("a"));
    QTest::newRow("QByteArrayList") << QVariant::fromValue(QByteArrayList {"a"});
    QTest::newRow("QList<double>") << QVariant::fromValue(QList<double> {1});
    QTest::newRow("QList<uint>") << QVariant::fromValue(QList<uint> {1});
    QTest::newRow("QList<QStringList>") << QVariant::fromValue(QList<QStringList> {{"a"}});
    QTest::newRow("QList<QList<int>>") << QVariant::fromValue(QList<QList<int>> {{1}});
    QTest::newRow("QList<Configuration>") << QVariant::fromValue(QList<Configuration> {{}});
    QTest::newRow("QVector<int>") << QVariant::fromValue(QVector<int> {1});
    QTest::newRow("std::vector<int>") << QVariant::fromValue(std::vector<int> {1});
    QTest::newRow("enumerator") << QVariant::fromValue(QProcess::Running);
    QTest::newRow("nullptr") << QVariant::fromValue(nullptr);
    QTest::newRow("pointer to void") << QVariant::fromValue<void *>(this);
    QTest::newRow("pointer to an object") << QVariant::fromValue<QObject *>(this);
    QTest::newRow("pointer to a configuration") << QVariant::fromValue<Configuration *>(nullptr);
    QTest::newRow("a type of the application") << QVariant::fromValue(Theme {"dark"});
}

void ConfigurationValuesTest::aRefusedValueLeavesTheOldOne()
{
    QFETCH(QVariant, value);

    MessageLog log;
    Configuration configuration;
    QVERIFY(!configuration.set("a", value));
    QVERIFY(configuration.isEmpty());
    QVERIFY(configuration.set("a", "old"));
    QVERIFY(!configuration.set("a", value));
    QVERIFY(!configuration.set("b", value));
    QCOMPARE(entries(configuration), (Map {{"a", "old"}}));
    QCOMPARE(configuration.get("a").userType(), int(QMetaType::QString));
    QCOMPARE(log.take(), QStringList());
}

void ConfigurationValuesTest::keysAreDistinctAndInOrderOfTheirCodeUnits()
{
    // U+1F600 is written with two units of which the first, D83D, comes before U+FFFD.
    const QStringList ordered {"",
                               QString(1, '\0'),
                               " ",
                               "1",
                               "10",
                               "2",
                               "A",
                               "Z",
                               "[",
                               "]",
                               "a",
                               "a b",
                               "a/b",
                               "a[1]",
                               "aa",
                               "b",
                               QString(100000, 'k'),
                               "é",
                               "日",
                               QString(QChar(0xD83D)),
                               "😀",
                               "\uFFFD"};
    Configuration configuration;
    for (int i = ordered.size() - 1; i >= 0; --i)
        QVERIFY(configuration.set(ordered.at(i), i));
    QCOMPARE(entries(configuration).keys(), ordered);
    for (int i = 0; i < ordered.size(); ++i) {
        QVERIFY(configuration.containsKey(ordered.at(i)));
        QCOMPARE(configuration.get(ordered.at(i)), QVariant(i));
        QVERIFY(!configuration.containsKey(ordered.at(i) + 'x'));
        QVERIFY(!configuration.get(ordered.at(i) + 'x').isValid());
    }
    QVERIFY(configuration.containsKey(QString()));
}

void ConfigurationValuesTest::anExistingKeyIsKept()
{
    Configuration configuration = makeConfiguration({{QString("a"), 1}, {QString("b"), 1}});
    const QChar *const characters = entries(configuration).firstKey().constData();
    QVERIFY(configuration.set(QString("a"), 2));
    QCOMPARE(entries(configuration).firstKey().constData(), characters);
}

void ConfigurationValuesTest::aNewValueReplacesTheOldOneOfAnotherType()
{
    const QVariantList values {1,
                               true,
                               "text",
                               QStringList {"a"},
                               QVariant::fromValue(QList<int> {1}),
                               QVariant::fromValue(Configuration())};
    Configuration configuration;
    QVERIFY(configuration.set("other", 7));
    for (const QVariant &value : values) {
        QVERIFY(configuration.set("a", value));
        QCOMPARE(configuration.get("a").userType(), value.userType());
        QVERIFY(configuration.get("a") == value);
        QCOMPARE(entries(configuration).keys(), (QStringList {"a", "other"}));
    }
    QCOMPARE(configuration.get("other"), QVariant(7));
}

void ConfigurationValuesTest::aCopyIsIndependent_data()
{
    QTest::addColumn<bool>("isAssigned");
    QTest::newRow("constructed") << false;
    QTest::newRow("assigned") << true;
}

void ConfigurationValuesTest::aCopyIsIndependent()
{
    QFETCH(bool, isAssigned);
    const Map before {{"a", 1}};

    Configuration source = makeConfiguration(before);
    Configuration copy = isAssigned ? makeConfiguration({{"old", 2}}) : source;
    if (isAssigned) {
        Configuration *const result = &(copy = source);
        QCOMPARE(result, &copy);
    }
    QCOMPARE(entries(copy), before);

    QVERIFY(copy.set("a", "copy"));
    QVERIFY(copy.set("b", 2));
    QCOMPARE(entries(source), before);
    QVERIFY(source.set("a", "source"));
    QVERIFY(source.set("c", 3));
    QCOMPARE(entries(copy), (Map {{"a", "copy"}, {"b", 2}}));
    QCOMPARE(entries(source), (Map {{"a", "source"}, {"c", 3}}));
}

void ConfigurationValuesTest::aCopyIsSharedUntilItIsWritten()
{
    const Configuration source = makeConfiguration({{"a", 1}});
    Configuration constructed(source);
    Configuration assigned;
    assigned = source;
    QVERIFY(entries(source).isSharedWith(entries(source)));
    QVERIFY(entries(constructed).isSharedWith(entries(source)));
    QVERIFY(entries(assigned).isSharedWith(entries(source)));

    QVERIFY(!constructed.set("a", 1.5));
    QVERIFY(entries(constructed).isSharedWith(entries(source)));
    QVERIFY(constructed.set("a", 2));
    QVERIFY(!entries(constructed).isSharedWith(entries(source)));
    QVERIFY(entries(assigned).isSharedWith(entries(source)));
}

void ConfigurationValuesTest::moveConstructionEmptiesItsSource()
{
    static_assert(std::is_nothrow_move_constructible<Configuration>::value);
    const Map before {{"a", 1}};
    auto source = std::make_unique<Configuration>(makeConfiguration(before));
    const Map shared = entries(*source);

    const Configuration target(std::move(*source));
    QVERIFY(entries(target).isSharedWith(shared));
    QVERIFY(!abortMessage([&source] { entries(*source); }).isNull());
    source.reset();
    QCOMPARE(entries(target), before);
}

void ConfigurationValuesTest::moveAssignmentExchangesTheContents()
{
    static_assert(std::is_nothrow_move_assignable<Configuration>::value);
    Configuration target = makeConfiguration({{"target", 1}});
    Configuration source = makeConfiguration({{"source", 2}});
    const Map targetEntries = entries(target);
    const Map sourceEntries = entries(source);

    Configuration *const result = &(target = std::move(source));
    QCOMPARE(result, &target);
    QVERIFY(entries(target).isSharedWith(sourceEntries));
    QVERIFY(entries(source).isSharedWith(targetEntries)); // NOLINT(bugprone-use-after-move)
    QVERIFY(source.set("source", 3));
    QCOMPARE(entries(source), (Map {{"source", 3}, {"target", 1}}));
    QCOMPARE(entries(target), (Map {{"source", 2}}));
}

void ConfigurationValuesTest::anEmptiedConfigurationTakesACopy()
{
    const Configuration source = makeConfiguration({{"a", 1}});
    const std::unique_ptr<Configuration> target = makeEmptied();

    *target = source;
    QCOMPARE(entries(*target), (Map {{"a", 1}}));
    QVERIFY(target->set("b", 2));
    QCOMPARE(entries(source), (Map {{"a", 1}}));
}

void ConfigurationValuesTest::anEmptiedConfigurationTakesOverAnother()
{
    Configuration source = makeConfiguration({{"a", 1}});
    const std::unique_ptr<Configuration> target = makeEmptied();

    *target = std::move(source);
    QCOMPARE(entries(*target), (Map {{"a", 1}}));
    // NOLINTNEXTLINE(bugprone-use-after-move)
    QVERIFY(!abortMessage([&source] { entries(source); }).isNull());
    source = Configuration();
    QVERIFY(source.isEmpty());
}

void ConfigurationValuesTest::anEmptiedConfigurationEmptiesAnother()
{
    Configuration target = makeConfiguration({{"a", 1}});
    const std::unique_ptr<Configuration> source = makeEmptied();

    target = std::move(*source);
    QVERIFY(!abortMessage([&target] { entries(target); }).isNull());
    QCOMPARE(entries(*source), (Map {{"a", 1}}));
}

void ConfigurationValuesTest::assigningAConfigurationToItselfChangesNothing()
{
    Configuration configuration = makeConfiguration({{"a", 1}});
    Configuration &self = configuration;
    const Map before = entries(configuration);

    Configuration *const copied = &(configuration = self);
    QCOMPARE(copied, &configuration);
    QVERIFY(entries(configuration).isSharedWith(before));
    Configuration *const moved = &(configuration = std::move(self));
    QCOMPARE(moved, &configuration);
    QVERIFY(entries(configuration).isSharedWith(before));
}

void ConfigurationValuesTest::assigningAnEmptiedConfigurationToItselfChangesNothing()
{
    const std::unique_ptr<Configuration> emptied = makeEmptied();
    Configuration &self = *emptied;

    *emptied = self;
    *emptied = std::move(self);
    QVERIFY(!abortMessage([&emptied] { entries(*emptied); }).isNull());
    *emptied = makeConfiguration({{"a", 1}});
    QCOMPARE(entries(*emptied), (Map {{"a", 1}}));
}

void ConfigurationValuesTest::usingAnEmptiedConfigurationEndsTheProcess_data()
{
    QTest::addColumn<Action>("action");
    QTest::newRow("copied by construction") << Action([] { Configuration copy(*makeEmptied()); });
    QTest::newRow("copied by assignment") << Action([] {
        Configuration target;
        target = *makeEmptied();
    });
    QTest::newRow("copied to an emptied one") << Action([] { *makeEmptied() = *makeEmptied(); });
    QTest::newRow("its data") << Action([] { ConfigurationPrivate::data(*makeEmptied()); });
    QTest::newRow("compared, on the left")
        << Action([] { Q_UNUSED((*makeEmptied() == Configuration())) });
    QTest::newRow("compared, on the right")
        << Action([] { Q_UNUSED((Configuration() == *makeEmptied())) });
    QTest::newRow("compared with itself") << Action([] {
        const std::unique_ptr<Configuration> emptied = makeEmptied();
        Q_UNUSED((*emptied == *emptied))
    });
}

void ConfigurationValuesTest::usingAnEmptiedConfigurationEndsTheProcess()
{
    QFETCH(Action, action);

    const QByteArray text = abortMessage(action);
    QVERIFY2(text.startsWith("ASSERT failure in Configuration: "
                             "\"the configuration has been moved from\", file "),
             text.constData());
}

void ConfigurationValuesTest::equalityFollowsTheEntries_data()
{
    QTest::addColumn<Map>("left");
    QTest::addColumn<Map>("right");
    QTest::addColumn<bool>("areEqual");
    const Map one {{"a", 1}};
    const QVariant shared = QVariant::fromValue(makeConfiguration(one));
    const QVariant separate = QVariant::fromValue(makeConfiguration(one));
    const QStringList texts {"x", "y"};
    QTest::newRow("both empty") << Map() << Map() << true;
    QTest::newRow("one empty") << Map() << one << false;
    QTest::newRow("one more entry") << one << Map {{"a", 1}, {"b", 2}} << false;
    QTest::newRow("another key among several")
        << Map {{"a", 1}, {"c", 1}} << Map {{"b", 1}, {"c", 1}} << false;
    QTest::newRow("letter case of the key") << one << Map {{"A", 1}} << false;
    QTest::newRow("another last value")
        << Map {{"a", 1}, {"b", "x"}} << Map {{"a", 1}, {"b", "y"}} << false;
    QTest::newRow("another type") << one << Map {{"a", "1"}} << true;
    QTest::newRow("null and empty string")
        << Map {{"a", QString()}} << Map {{"a", QString("")}} << true;
    QTest::newRow("same texts") << Map {{"a", texts}, {"b", true}}
                                << Map {{"b", true}, {"a", QStringList {"x", "y"}}} << true;
    QTest::newRow("a configuration, shared") << Map {{"a", shared}} << Map {{"a", shared}} << true;
    QTest::newRow("a configuration, built twice")
        << Map {{"a", shared}} << Map {{"a", separate}} << false;
    QTest::newRow("a list, built twice")
        << Map {{"a", makeList(1)}} << Map {{"a", makeList(1)}} << false;
}

void ConfigurationValuesTest::equalityFollowsTheEntries()
{
    QFETCH(Map, left);
    QFETCH(Map, right);
    QFETCH(bool, areEqual);

    const Configuration a = makeConfiguration(left);
    const Configuration b = makeConfiguration(right);
    QCOMPARE(a == b, areEqual);
    QCOMPARE(b == a, areEqual);
    QVERIFY(a == a);
    QVERIFY(a == Configuration(a));
}

void ConfigurationValuesTest::valuesCompareAsVariantsDo_data()
{
    const QVariantList values {0,
                               1,
                               true,
                               false,
                               "",
                               "0",
                               "1",
                               "true",
                               QString(),
                               QStringList(),
                               QStringList {"1"},
                               QVariant::fromValue(QList<int> {1}),
                               QVariant::fromValue(QList<bool> {true}),
                               QVariant::fromValue(QList<QString> {"1"}),
                               QVariant::fromValue(makeConfiguration({{"a", 1}})),
                               QVariant::fromValue(makeConfiguration({{"a", 1}}))};
    QTest::addColumn<QVariant>("left");
    QTest::addColumn<QVariant>("right");
    for (const QVariant &left : values) {
        for (const QVariant &right : values) {
            const QString name = "%1(%2) and %3(%4)";
            QTest::newRow(qUtf8Printable(
                name.arg(left.typeName(), left.toString(), right.typeName(), right.toString())))
                << left << right;
        }
    }
}

void ConfigurationValuesTest::valuesCompareAsVariantsDo()
{
    QFETCH(QVariant, left);
    QFETCH(QVariant, right);

    Configuration a;
    Configuration b;
    QVERIFY(a.set("key", left));
    QVERIFY(b.set("key", right));
    QCOMPARE(a == b, left == right);
}

void ConfigurationValuesTest::aVariantHoldsAConfiguration()
{
    const Configuration configuration = makeConfiguration({{"a", 1}, {"b", "x"}});
    const QVariant variant = QVariant::fromValue(configuration);
    QCOMPARE(variant.typeName(), "Tarnvel::Application::ManagedConfiguration::Configuration");
    QCOMPARE(QMetaType::type("Tarnvel::Application::ManagedConfiguration::Configuration"),
             variant.userType());

    Configuration held = Configuration::fromVariant(variant);
    QVERIFY(held == configuration);
    QCOMPARE(entries(held), (Map {{"a", 1}, {"b", "x"}}));
    QVERIFY(held.set("a", 2));
    QCOMPARE(Configuration::fromVariant(variant).get("a"), QVariant(1));
    QVERIFY(Configuration::fromVariant(QVariant::fromValue(Configuration())).isEmpty());
}

void ConfigurationValuesTest::aVariantOfAnotherTypeGivesAnEmptyConfiguration_data()
{
    QTest::addColumn<QVariant>("variant");
    QTest::newRow("invalid") << QVariant();
    QTest::newRow("QVariantMap") << QVariant(QVariantMap {{"a", 1}});
    QTest::newRow("QVariantHash") << QVariant(QVariantHash {{"a", 1}});
    QTest::newRow("int") << QVariant(1);
    QTest::newRow("string") << QVariant("a");
    QTest::newRow("QStringList") << QVariant(QStringList {"a"});
    QTest::newRow("a list of configurations")
        << QVariant::fromValue(QList<Configuration> {makeConfiguration({{"a", 1}})});
    QTest::newRow("pointer to a configuration") << QVariant::fromValue<Configuration *>(nullptr);
    QTest::newRow("QDBusVariant of a configuration")
        << QVariant::fromValue(QDBusVariant(QVariant::fromValue(makeConfiguration({{"a", 1}}))));
}

void ConfigurationValuesTest::aVariantOfAnotherTypeGivesAnEmptyConfiguration()
{
    QFETCH(QVariant, variant);

    MessageLog log;
    QVERIFY(Configuration::fromVariant(variant).isEmpty());
    QCOMPARE(log.take(), QStringList());
}

void ConfigurationValuesTest::anApplicationsConverterIsUsed()
{
    const QVariant theme = QVariant::fromValue(Theme {"dark"});
    QVERIFY(Configuration::fromVariant(theme).isEmpty());
    QVERIFY((QMetaType::registerConverter<Theme, Configuration>(&Theme::toConfiguration)));
    QCOMPARE(entries(Configuration::fromVariant(theme)), (Map {{"theme", "dark"}}));
    QVERIFY(Configuration::fromVariant(QVariant::fromValue(Theme {"broken"})).isEmpty());
    QVERIFY(!Configuration().set("a", theme));
}

void ConfigurationValuesTest::anAdoptedMapIsNotChecked()
{
    const Map map {{"", QVariant()},
                   {"a", 1},
                   {"double", 1.5},
                   {"list", QVariantList {1, "x"}},
                   {"map", QVariantMap {{"a", 1}}}};
    Configuration configuration(new ConfigurationPrivate(map));
    QVERIFY(entries(configuration).isSharedWith(map));
    QCOMPARE(configuration.get("double"), QVariant(1.5));
    QVERIFY(configuration.containsKey(""));
    QVERIFY(!configuration.get("").isValid());

    QVERIFY(!configuration.set("double", 2.5));
    QCOMPARE(configuration.get("double"), QVariant(1.5));
    QVERIFY(configuration.set("double", 2));
    QCOMPARE(configuration.get("double"), QVariant(2));
    QCOMPARE(map.value("double"), QVariant(1.5));
}

void ConfigurationValuesTest::adoptedDataIsOwned()
{
    const ConfigurationPrivate original({{"a", 1}});
    auto *adopted = new ConfigurationPrivate(original);
    QVERIFY(adopted->set("b", 2));
    QVERIFY(!adopted->set("b", 2.5));
    QVERIFY(adopted->containsKey("b"));
    QCOMPARE(adopted->get("b"), QVariant(2));
    QVERIFY(!adopted->isEmpty());
    QVERIFY(!original.containsKey("b"));

    const Configuration configuration(adopted);
    QVERIFY(adopted->set("c", 3));
    QCOMPARE(entries(configuration), (Map {{"a", 1}, {"b", 2}, {"c", 3}}));
}

void ConfigurationValuesTest::adoptingNothingMakesAnEmptiedConfiguration()
{
    Configuration configuration(static_cast<ConfigurationPrivate *>(nullptr));
    const QByteArray text = abortMessage([&configuration] { entries(configuration); });
    QVERIFY2(text.contains("the configuration has been moved from"), text.constData());
    configuration = makeConfiguration({{"a", 1}});
    QCOMPARE(entries(configuration), (Map {{"a", 1}}));
}

QTEST_GUILESS_MAIN(ConfigurationValuesTest)

#include "configuration_values_test.moc"
