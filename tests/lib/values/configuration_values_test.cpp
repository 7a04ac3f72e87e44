// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "abort.h"
#include "configuration_p.h"
#include "description.h"
#include "message_log.h"
#include "qt_version.h"

#include <QtCore/QProcess>
#include <QtDBus/QDBusVariant>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration.h>

#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

using Map = QMap<QString, QVariant>;
using Action = std::function<void()>;

namespace {

static_assert(
    !std::is_invocable_v<std::not_equal_to<>, const Configuration &, const Configuration &>);
static_assert(std::is_nothrow_move_constructible_v<Configuration>);
static_assert(std::is_nothrow_move_assignable_v<Configuration>);
static_assert(std::has_virtual_destructor_v<Configuration>);
static_assert(!QTypeInfo<Configuration>::isRelocatable);

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

// The private object of a configuration, behind its virtual table; null in an emptied one.
const ConfigurationPrivate *privateObject(const Configuration &configuration)
{
    const ConfigurationPrivate *object = nullptr;
    std::memcpy(&object, reinterpret_cast<const char *>(&configuration) + sizeof(void *),
                sizeof(void *));
    return object;
}

// The source of a move construction.
class Emptied : public Configuration
{
public:
    Emptied()
    {
        Configuration taker(std::move(static_cast<Configuration &>(*this)));
    }

    using Configuration::operator=;
};

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
    void anAcceptedValueReplacesAnother_data();
    void anAcceptedValueReplacesAnother();
    void aRefusedValueLeavesTheOldOne_data();
    void aRefusedValueLeavesTheOldOne();
    void keysAreDistinctAndInOrderOfTheirCodeUnits();

    void aCopySharesItsEntriesUntilOneSideIsWritten();
    void moveConstructionEmptiesItsSource();
    void moveAssignmentExchangesThePrivateObjects();
    void assigningAConfigurationToItselfChangesNothing();
    void anEmptiedConfigurationCanBeAssignedTo();
    void usingAnEmptiedConfigurationEndsTheProcess_data();
    void usingAnEmptiedConfigurationEndsTheProcess();

    void equalityFollowsTheEntries_data();
    void equalityFollowsTheEntries();

    void aVariantHoldsAConfiguration();
    void aVariantOfAnotherTypeGivesAnEmptyConfiguration();
    void anApplicationsConverterIsUsed();

    void anAdoptedMapIsNotChecked();
    void anAdoptedPrivateObjectIsUsedItself();
};

void ConfigurationValuesTest::aNewConfigurationIsEmpty()
{
    const Configuration configuration;
    QVERIFY(configuration.isEmpty());
    for (const QString &key : {QString(), QString("a")}) {
        QVERIFY(!configuration.containsKey(key));
        QVERIFY(!configuration.get(key).isValid());
    }
    QVERIFY(entries(configuration).isEmpty());
}

void ConfigurationValuesTest::onlyFourOfTheBuiltInTypesAreStored()
{
    QList<int> accepted;
    int tried = 0;
    for (int type = QMetaType::UnknownType + 1; type < QMetaType::User; ++type) {
        // Types of modules that are not loaded have no size, and neither has void.
        if (!QMetaType::isRegistered(type) || QMetaType(type).sizeOf() == 0)
            continue;
        const QVariant value(QtType(type), nullptr);
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

void ConfigurationValuesTest::anAcceptedValueReplacesAnother_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("stored");
    const auto row = [](const QVariant &value, const QString &stored) {
        QTest::newRow(qUtf8Printable(stored)) << value << stored;
    };
    row(QString(), "QString null");
    row("", "QString \"\"");
    row("größe 😀", "QString \"größe 😀\"");
    row(nullInt(), "int null");
    row(std::numeric_limits<int>::min(), "int -2147483648");
    row(std::numeric_limits<int>::max(), "int 2147483647");
    row(false, "bool false");
    row(true, "bool true");
    row(QStringList(), "QStringList []");
    row(QStringList {"a", "", "b"}, R"(QStringList ["a", "", "b"])");
    row(makeList<int>({}), "QList<int> []");
    row(makeList<int>({1, -1}), "QList<int> [1, -1]");
    if (onQt6)
        row(QVariant::fromValue(QVector<int> {1}), "QList<int> [1]");
    row(makeList<bool>({}), "QList<bool> []");
    row(makeList<bool>({true, false}), "QList<bool> [true, false]");
    row(makeList<QString>({}), textListType + " []");
    row(makeList<QString>({"a", QString()}), textListType + " [\"a\", null]");
    row(QVariant::fromValue(Configuration()), "{}");
    row(QVariant::fromValue(makeConfiguration({{"b", 1}})), "{\"b\": int 1}");
}

void ConfigurationValuesTest::anAcceptedValueReplacesAnother()
{
    QFETCH(const QVariant, value);
    QFETCH(const QString, stored);

    MessageLog log;
    Configuration configuration = makeConfiguration({{"a", 1.5}, {"z", 7}});
    const QChar *const key = entries(configuration).firstKey().constData();
    QVERIFY(configuration.set("a", value));
    QCOMPARE(entries(configuration).firstKey().constData(), key);
    QVERIFY(!configuration.isEmpty());
    QVERIFY(configuration.containsKey("a"));
    QCOMPARE(configuration.get("a").userType(), value.userType());
    QCOMPARE(configuration.get("a").isNull(),
             stored == "int null" || (stored == "QString null" && !onQt6));
    QCOMPARE(describe(configuration), "{\"a\": " + stored + ", \"z\": int 7}");
    QCOMPARE(log.take(), QStringList());
}

void ConfigurationValuesTest::aRefusedValueLeavesTheOldOne_data()
{
    QTest::addColumn<QVariant>("value");
    const auto row = [](const QVariant &value) { QTest::newRow(value.typeName()) << value; };
    QTest::newRow("invalid") << QVariant();
    row(QVariantList {1, 2});
    row(QVariantMap {{"a", 1}});
    row(QVariantHash {{"a", 1}});
    row(1u);
    row(1ll);
    row(1.0);
    row(QByteArray("a"));
    row(QVariant::fromValue(QDBusVariant(1)));
    row(makeList<double>({1}));
    row(makeList<uint>({1}));
    row(makeList<QStringList>({{"a"}}));
    row(makeList<QList<int>>({{1}}));
    row(makeList<Configuration>({{}}));
    if (!onQt6)
        row(QVariant::fromValue(QVector<int> {1}));
    row(QVariant::fromValue(std::vector<int> {1}));
    row(QVariant::fromValue(QProcess::Running));
    row(QVariant::fromValue<Configuration *>(nullptr));
    row(QVariant::fromValue(Theme {"dark"}));
}

void ConfigurationValuesTest::aRefusedValueLeavesTheOldOne()
{
    QFETCH(const QVariant, value);

    MessageLog log;
    Configuration configuration = makeConfiguration({{"a", "old"}});
    QVERIFY(!configuration.set("a", value));
    QVERIFY(!configuration.set("b", value));
    QCOMPARE(describe(configuration), QString("{\"a\": QString \"old\"}"));
    QCOMPARE(log.take(), QStringList());
}

void ConfigurationValuesTest::keysAreDistinctAndInOrderOfTheirCodeUnits()
{
    QStringList ordered = QString(", ,1,10,2,A,Z,[,],a,a b,a/b,a[1],aa,b,é,日").split(',');
    ordered.insert(1, QString(1, '\0'));
    // U+1F600 is written with two units of which the first, D83D, comes before U+FFFD.
    ordered << QString(QChar(0xD83D)) << "😀" << QString(100000, QChar(0xFFFD));
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

void ConfigurationValuesTest::aCopySharesItsEntriesUntilOneSideIsWritten()
{
    Configuration source = makeConfiguration({{"a", 1}});
    Configuration constructed(source);
    Configuration assigned = makeConfiguration({{"old", 2}});
    const ConfigurationPrivate *const former = privateObject(assigned);
    Configuration *const result = &(assigned = source);
    QCOMPARE(result, &assigned);
    QVERIFY(privateObject(constructed) != privateObject(source));
    QVERIFY(privateObject(assigned) != privateObject(source));
    QVERIFY(privateObject(assigned) != former);
    QVERIFY(entries(constructed).isSharedWith(entries(source)));
    QVERIFY(entries(assigned).isSharedWith(entries(source)));

    QVERIFY(!constructed.set("a", 1.5));
    QVERIFY(entries(constructed).isSharedWith(entries(source)));
    QVERIFY(constructed.set("a", 2));
    QVERIFY(entries(assigned).isSharedWith(entries(source)));
    QVERIFY(source.set("b", 3));
    QCOMPARE(entries(source), (Map {{"a", 1}, {"b", 3}}));
    QCOMPARE(entries(constructed), (Map {{"a", 2}}));
    QCOMPARE(entries(assigned), (Map {{"a", 1}}));
}

void ConfigurationValuesTest::moveConstructionEmptiesItsSource()
{
    Configuration source = makeConfiguration({{"a", 1}});
    const ConfigurationPrivate *const moved = privateObject(source);
    const Configuration target(std::move(source));
    QCOMPARE(privateObject(target), moved);
    QVERIFY(!privateObject(source)); // NOLINT(bugprone-use-after-move)
}

void ConfigurationValuesTest::moveAssignmentExchangesThePrivateObjects()
{
    Configuration target = makeConfiguration({{"target", 1}});
    Configuration source = makeConfiguration({{"source", 2}});
    const ConfigurationPrivate *const ofTarget = privateObject(target);
    const ConfigurationPrivate *const ofSource = privateObject(source);

    Configuration *const result = &(target = std::move(source));
    QCOMPARE(result, &target);
    QCOMPARE(privateObject(target), ofSource);
    QCOMPARE(privateObject(source), ofTarget); // NOLINT(bugprone-use-after-move)
    QCOMPARE(entries(source), (Map {{"target", 1}}));
    QCOMPARE(entries(target), (Map {{"source", 2}}));
}

void ConfigurationValuesTest::assigningAConfigurationToItselfChangesNothing()
{
    Configuration owning = makeConfiguration({{"a", 1}});
    Emptied emptied;
    for (Configuration *configuration : {&owning, static_cast<Configuration *>(&emptied)}) {
        Configuration &self = *configuration;
        const ConfigurationPrivate *const before = privateObject(*configuration);
        Configuration *const copied = &(*configuration = self);
        QCOMPARE(copied, configuration);
        QCOMPARE(privateObject(*configuration), before);
        Configuration *const moved = &(*configuration = std::move(self));
        QCOMPARE(moved, configuration);
        QCOMPARE(privateObject(*configuration), before);
    }
}

void ConfigurationValuesTest::anEmptiedConfigurationCanBeAssignedTo()
{
    Configuration source = makeConfiguration({{"a", 1}});
    Emptied copyTarget;
    copyTarget = source;
    QCOMPARE(entries(copyTarget), (Map {{"a", 1}}));

    Emptied moveTarget;
    moveTarget = std::move(source);
    QCOMPARE(entries(moveTarget), (Map {{"a", 1}}));
    QVERIFY(!privateObject(source)); // NOLINT(bugprone-use-after-move)

    // Moving out of an emptied configuration empties the target.
    copyTarget = std::move(source);
    QVERIFY(!privateObject(copyTarget));
    QCOMPARE(entries(source), (Map {{"a", 1}})); // NOLINT(bugprone-use-after-move)
}

void ConfigurationValuesTest::usingAnEmptiedConfigurationEndsTheProcess_data()
{
    QTest::addColumn<Action>("action");
    const auto row = [](const char *name, const Action &action) { QTest::newRow(name) << action; };
    row("copied by construction", [] {
        const Emptied source;
        const auto copy = std::make_unique<Configuration>(source);
    });
    row("copied by assignment", [] {
        const Emptied source;
        Configuration target;
        target = source;
    });
    row("copied to an emptied one", [] {
        const Emptied source;
        Emptied target;
        target = source;
    });
    row("its data", [] { entries(Emptied()); });
    row("adopted without a private object",
        [] { entries(Configuration(static_cast<ConfigurationPrivate *>(nullptr))); });
    row("compared, on the left", [] { Q_UNUSED((Emptied() == Configuration())) });
    row("compared, on the right", [] { Q_UNUSED((Configuration() == Emptied())) });
    row("compared with itself", [] {
        const Emptied emptied;
        Q_UNUSED((emptied == emptied))
    });
}

void ConfigurationValuesTest::usingAnEmptiedConfigurationEndsTheProcess()
{
    QFETCH(const Action, action);

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
        << Map {{"a", shared}} << Map {{"a", separate}} << onQt6;
    QTest::newRow("a list, built twice")
        << Map {{"a", makeList<int>({1})}} << Map {{"a", makeList<int>({1})}} << onQt6;
}

void ConfigurationValuesTest::equalityFollowsTheEntries()
{
    QFETCH(const Map, left);
    QFETCH(const Map, right);
    QFETCH(const bool, areEqual);

    const Configuration a = makeConfiguration(left);
    const Configuration b = makeConfiguration(right);
    QCOMPARE(a == b, areEqual);
    QCOMPARE(b == a, areEqual);
    QVERIFY(a == Configuration(a));
}

void ConfigurationValuesTest::aVariantHoldsAConfiguration()
{
    const Configuration configuration = makeConfiguration({{"a", 1}, {"b", "x"}});
    const QVariant variant = QVariant::fromValue(configuration);
    QCOMPARE(variant.typeName(), "Tarnvel::Application::ManagedConfiguration::Configuration");

    Configuration held = Configuration::fromVariant(variant);
    QVERIFY(held == configuration);
    QVERIFY(held.set("a", 2));
    QCOMPARE(describe(variant), QString("{\"a\": int 1, \"b\": QString \"x\"}"));
}

void ConfigurationValuesTest::aVariantOfAnotherTypeGivesAnEmptyConfiguration()
{
    const QVariant configuration = QVariant::fromValue(makeConfiguration({{"a", 1}}));
    MessageLog log;
    for (const QVariant &variant :
         {QVariant(), QVariant(1), QVariant("a"), QVariant(QVariantMap {{"a", 1}}),
          QVariant::fromValue<Configuration *>(nullptr),
          QVariant::fromValue(QDBusVariant(configuration))})
        QVERIFY2(Configuration::fromVariant(variant).isEmpty(), variant.typeName());
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
                   {"double", 1.5},
                   {"list", QVariantList {1, "x"}},
                   {"map", QVariantMap {{"a", 1}}}};
    Configuration configuration = makeConfiguration(map);
    QVERIFY(entries(configuration).isSharedWith(map));
    QVERIFY(configuration.containsKey(""));
    QVERIFY(!configuration.get("").isValid());
    QCOMPARE(configuration.get("double"), QVariant(1.5));
    QVERIFY(!configuration.set("double", 2.5));
    QVERIFY(entries(configuration).isSharedWith(map));
}

void ConfigurationValuesTest::anAdoptedPrivateObjectIsUsedItself()
{
    const ConfigurationPrivate original({{"a", 1}});
    auto *adopted = new ConfigurationPrivate(original);
    const Configuration configuration(adopted);
    QVERIFY(adopted->set("b", 2));
    QVERIFY(!adopted->set("b", 2.5));
    QVERIFY(adopted->containsKey("b"));
    QCOMPARE(adopted->get("b"), QVariant(2));
    QVERIFY(!adopted->isEmpty());
    QVERIFY(!original.containsKey("b"));
    QCOMPARE(entries(configuration), (Map {{"a", 1}, {"b", 2}}));
}

QTEST_GUILESS_MAIN(ConfigurationValuesTest)

#include "configuration_values_test.moc"
