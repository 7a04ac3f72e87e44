// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "answers.h"
#include "bus_fixture.h"
#include "configuration_manager_p.h"
#include "configuration_p.h"
#include "description.h"
#include "message_log.h"

#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusVariant>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include <limits>
#include <sys/resource.h>
#include <vector>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;
using Tarnvel::Testing::MethodCall;

class WireFormatTest : public QObject
{
    Q_OBJECT

public:
    explicit WireFormatTest(BusFixture &fixture) : m_service(fixture.service) { }

private Q_SLOTS:
    void aReceivedValueIsStoredByItsKind_data();
    void aReceivedValueIsStoredByItsKind();
    void aFileDescriptorIsLeftOut();
    void anEmptyArrayHasNoItemToLookUp();
    void theDeepestReplyThatTheBusCarriesIsRead_data();
    void theDeepestReplyThatTheBusCarriesIsRead();
    void aHugeUnsupportedArrayIsNotTakenIn();
    void theLastStorableOfEntriesWithOneKeyCounts_data();
    void theLastStorableOfEntriesWithOneKeyCounts();
    void keysArriveAndLeaveUnchanged_data();
    void keysArriveAndLeaveUnchanged();
    void aStoredValueIsSentAsItsType_data();
    void aStoredValueIsSentAsItsType();
    void textThatDBusCannotCarryIsChangedOnItsWay_data();
    void textThatDBusCannotCarryIsChangedOnItsWay();
    void entriesAreSentInOrderOfTheirKeys();
    void anEmptyConfigurationIsSentAsAnEmptyDictionary();
    void aReceivedConfigurationGoesBackUnchanged();
    void aConfigurationInsideAVariantIsTakenAsItIs();
    void theTypeIsRegisteredUnderItsWholeName();

private:
    FakeService &m_service;
    ConfigurationManager m_manager;
};

void WireFormatTest::aReceivedValueIsStoredByItsKind_data()
{
    QTest::addColumn<QString>("sent");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QStringList>("warnings");

    const auto row = [](const char *name, const QString &sent, const QString &stored,
                        const QStringList &warnings = {}) {
        QTest::newRow(name) << sent << stored << warnings;
    };
    const QString leftOut = QStringLiteral("invalid");
    const auto unsupported = [](const char *type) {
        return QStringList(QStringLiteral("Unsupported type for arrays:  ") + QLatin1String(type));
    };

    // One name stands for all types that are not built into Qt; which one, the process decides.
    const QStringList userType = unsupported(QVariant::typeToName(QVariant::UserType));

    row("least int32", "int32 -2147483648", "int -2147483648");
    row("greatest int32", "int32 2147483647", "int 2147483647");
    row("boolean true", "true", "bool true");
    row("boolean false", "false", "bool false");
    row("empty string", "''", "QString \"\"");
    row("string", "'grün'", "QString \"grün\"");
    row("byte", "byte 7", leftOut);
    row("int16", "int16 7", leftOut);
    row("uint16", "uint16 7", leftOut);
    row("uint32", "uint32 7", leftOut);
    row("int64", "int64 7", leftOut);
    row("uint64", "uint64 7", leftOut);
    row("double", "7.5", leftOut);
    row("object path", "objectpath '/a'", leftOut);
    row("signature", "signature 'a{sv}'", leftOut);
    row("variant of int32", "<7>", leftOut);
    row("variant of dictionary", "<{'a': <1>}>", leftOut);
    row("variant of variant", "<<7>>", leftOut);
    row("structure", "(7, 'seven')", leftOut);
    row("structure of a dictionary", "({'a': <1>},)", leftOut);

    row("empty dictionary", "@a{sv} {}", "{}");
    row("dictionary", "{'a': <1>, 'b': <'x'>}", "{\"a\": int 1, \"b\": QString \"x\"}");
    row("dictionary of unsupported values", "{'a': <7.5>, 'b': <(1, 2)>}", "{}");
    row("dictionary of dictionaries", "{'a': <{'b': <{'c': <[1]>}>}>}",
        "{\"a\": {\"b\": {\"c\": QList<int> [1]}}}");

    row("empty dictionary of strings", "@a{ss} {}", "{}");
    row("dictionary of strings", "{'a': 'x', 'b': 'y'}", "{}");
    row("dictionary of int32", "{'a': 1}", "{}");
    row("dictionary of doubles", "{'a': 1.5}", "{}");
    row("dictionary of structures", "{'a': (1, 'x')}", "{}");
    row("dictionary of arrays", "{'a': [1]}", "{}");
    row("dictionary of plain dictionaries", "{'a': {'b': <1>}}", "{}");
    row("dictionary with int32 keys", "{1: <'x'>}", "{}");
    row("dictionary with int64 keys and values", "{int64 1: int64 2}", "{}");
    row("dictionary with byte keys", "{byte 1: <1>}", "{}");
    row("dictionary with double keys", "{1.5: <1>}", "{}");
    row("dictionary with object path keys", "{objectpath '/a': <1>}", "{}");
    row("dictionary with signature keys", "{signature 's': <1>}", "{}");
    row("foreign dictionary among entries", "{'a': <1>, 'b': <{'x': 'y'}>, 'c': <2>}",
        "{\"a\": int 1, \"b\": {}, \"c\": int 2}");
    row("foreign dictionary in a structure", "({'x': 'y'}, 1)", leftOut);
    row("foreign dictionary in a variant", "<{'x': 'y'}>", leftOut);
    row("array of foreign dictionaries", "[{'x': 'y'}]", leftOut, userType);

    row("empty array of strings", "@as []", "QStringList []");
    row("array of strings", "['b', 'a', '']", "QStringList [\"b\", \"a\", \"\"]");
    row("empty array of int32", "@ai []", leftOut);
    row("array of int32", "[3, -1, 2147483647]", "QList<int> [3, -1, 2147483647]");
    row("empty array of booleans", "@ab []", leftOut);
    row("array of booleans", "[true, false]", "QList<bool> [true, false]");
    row("empty array of bytes", "@ay []", leftOut);
    row("array of bytes", "[byte 1, 2]", leftOut);
    for (const char *type : {"an", "aq", "au", "ax", "at", "ad", "ao", "ag", "av", "aas", "aai",
                             "a(i)", "aa{sv}", "aav"})
        row(qPrintable(QStringLiteral("empty array ") + QLatin1String(type)),
            QStringLiteral("@%1 []").arg(QLatin1String(type)), leftOut);
    row("array of int16", "@an [1, 2]", leftOut, unsupported("short"));
    row("array of uint16", "@aq [1, 2]", leftOut, unsupported("ushort"));
    row("array of uint32", "@au [1, 2]", leftOut, unsupported("uint"));
    row("array of int64", "@ax [1, 2]", leftOut, unsupported("qlonglong"));
    row("array of uint64", "@at [1, 2]", leftOut, unsupported("qulonglong"));
    row("array of doubles", "[1.5, 2.5]", leftOut, unsupported("double"));
    row("array of object paths", "[objectpath '/a']", leftOut, userType);
    row("array of signatures", "[signature 's']", leftOut, userType);
    row("array of variants", "[<1>, <'x'>]", leftOut, userType);
    row("array of string arrays", "[['a'], ['b']]", leftOut, unsupported("QStringList"));
    row("array of byte arrays", "[[byte 1]]", leftOut, unsupported("QByteArray"));
    row("array of int32 arrays", "[[1], [2]]", leftOut, userType);
    row("array of structures", "[(1, 'x')]", leftOut, userType);
    row("array of dictionaries", "[{'a': <1>}]", leftOut, userType);
    row("unsupported array in a dictionary", "{'a': <[1.5]>, 'b': <1>}", "{\"b\": int 1}",
        unsupported("double"));
}

void WireFormatTest::aReceivedValueIsStoredByItsKind()
{
    QFETCH(const QString, sent);
    QFETCH(const QString, stored);
    QFETCH(const QStringList, warnings);

    m_service.answerWith(QStringLiteral("({'before': <1>, 'key': <%1>, 'later': <2>},)").arg(sent));
    Answers answers;
    MessageLog log;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));

    QCOMPARE(log.take(), warnings);
    QCOMPARE(answers.at(0).error.message(), QString());
    QVERIFY(!answers.at(0).error);
    const Configuration configuration = answers.at(0).configuration;
    QCOMPARE(describe(configuration.get("key")), stored);
    QCOMPARE(configuration.containsKey("key"), stored != QLatin1String("invalid"));
    QCOMPARE(describe(configuration.get("before")), QStringLiteral("int 1"));
    QCOMPARE(describe(configuration.get("later")), QStringLiteral("int 2"));
}

void WireFormatTest::aFileDescriptorIsLeftOut()
{
    m_service.answerThrough([](const MethodCall &call) {
        call.reply(parseValue("({'file': <handle 0>, 'later': <2>},)"), {0});
    });
    Answers answers;
    MessageLog log;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));

    QCOMPARE(log.take(), QStringList());
    QCOMPARE(describe(answers.at(0).configuration), QStringLiteral("{\"later\": int 2}"));
}

void WireFormatTest::anEmptyArrayHasNoItemToLookUp()
{
    m_service.answerWith("({'key': <@ai []>, 'texts': <@as []>},)");
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    const Configuration &configuration = answers.at(0).configuration;

    const QString failure = QStringLiteral("Error when getting a value from configuration by the ");
    MessageLog log;
    QVERIFY(!configuration.getByXpath("key[0]").isValid());
    QCOMPARE(log.take(),
             QStringList(failure
                         + "\"key[0]\" xpath. The current value to be processed does not contain "
                           "the \"key\" key"));
    QVERIFY(!configuration.getByXpath("texts[0]").isValid());
    QCOMPARE(log.take(),
             QStringList(failure
                         + "\"texts[0]\" xpath. The current sequence to be processed does not "
                           "contain enough items to access item at index 0"));
}

void WireFormatTest::theDeepestReplyThatTheBusCarriesIsRead_data()
{
    QTest::addColumn<QString>("sent");
    QTest::addColumn<QString>("stored");

    const auto nested = [](int levels, const QString &opening, const QString &innermost,
                           const QString &closing) {
        return opening.repeated(levels) + innermost + closing.repeated(levels);
    };
    // The dictionary of the reply, its entry and the variant take three of the 64 containers.
    if (isOnDBusDaemon())
        QTest::newRow("dictionaries")
            << nested(20, "{'k': <", "[1]", ">}") << nested(20, "{\"k\": ", "QList<int> [1]", "}");
    QTest::newRow("dictionaries without a list")
        << nested(20, "{'k': <", "1", ">}") << nested(20, "{\"k\": ", "int 1", "}");
    QTest::newRow("variants") << nested(60, "<", "1", ">") << "invalid";
    QTest::newRow("arrays") << nested(32, "[", "1", "]") << "invalid";
    QTest::newRow("structures") << nested(32, "(", "1", ",)") << "invalid";
    QTest::newRow("arrays of structures") << nested(30, "[(", "1", ",)]") << "invalid";
    QTest::newRow("foreign dictionaries") << nested(15, "{'k': ", "'x'", "}") << "{}";
    QTest::newRow("a foreign dictionary in dictionaries")
        << nested(19, "{'k': <", "{'x': 1}", ">}") << nested(19, "{\"k\": ", "{}", "}");
}

void WireFormatTest::theDeepestReplyThatTheBusCarriesIsRead()
{
    QFETCH(const QString, sent);
    QFETCH(const QString, stored);

    m_service.answerWith(QStringLiteral("({'key': <%1>, 'later': <2>},)").arg(sent));
    Answers answers;
    MessageLog log;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.at(0).error.message(), QString());
    QCOMPARE(describe(answers.at(0).configuration.get("key")), stored);
    QCOMPARE(describe(answers.at(0).configuration.get("later")), QStringLiteral("int 2"));
}

void WireFormatTest::aHugeUnsupportedArrayIsNotTakenIn()
{
    // A million structures: 8 MiB on the wire, hundreds as values of the bus layer.
    constexpr int elements = 1024 * 1024;
    constexpr long budgetKibibytes = 96L * 1024;
    m_service.answerThrough([](const MethodCall &call) {
        const std::vector<guint32> structures(elements, 0);
        GVariantBuilder entries;
        g_variant_builder_init(&entries, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&entries, "{sv}", "key",
                              g_variant_new_from_data(G_VARIANT_TYPE("a(u)"), structures.data(),
                                                      structures.size() * sizeof(guint32), TRUE,
                                                      nullptr, nullptr));
        call.reply(g_variant_new("(a{sv})", &entries));
    });
    const auto peakKibibytes = [] {
        rusage usage {};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    };
    const long before = peakKibibytes();
    Answers answers;
    MessageLog log;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QVERIFY(!answers.at(0).error);
    QCOMPARE(log.take().count(), 1);
    const long grown = peakKibibytes() - before;
    qInfo("%ld KiB", grown);
    QVERIFY(grown < budgetKibibytes);
}

void WireFormatTest::theLastStorableOfEntriesWithOneKeyCounts_data()
{
    QTest::addColumn<QString>("entries");
    QTest::addColumn<QString>("stored");

    // What a configuration does not store replaces nothing.
    QTest::newRow("storable last") << "{'a', <7.5>}, {'a', <1>}"
                                   << "{\"a\": int 1}";
    QTest::newRow("storable first") << "{'a', <1>}, {'a', <7.5>}"
                                    << "{\"a\": int 1}";
    QTest::newRow("both storable") << "{'a', <1>}, {'a', <'later'>}"
                                   << "{\"a\": QString \"later\"}";
    QTest::newRow("neither storable") << "{'a', <7.5>}, {'a', <[1.5]>}"
                                      << "{}";
    QTest::newRow("apart, in descending order") << "{'b', <1>}, {'a', <2>}, {'b', <3>}"
                                                << "{\"a\": int 2, \"b\": int 3}";
}

void WireFormatTest::theLastStorableOfEntriesWithOneKeyCounts()
{
    QFETCH(const QString, entries);
    QFETCH(const QString, stored);

    m_service.answerWith(QStringLiteral("([%1],)").arg(entries));
    MessageLog log;
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(describe(answers.at(0).configuration), stored);
}

void WireFormatTest::keysArriveAndLeaveUnchanged_data()
{
    QTest::addColumn<QString>("key");

    QTest::newRow("empty") << "";
    QTest::newRow("path characters") << "a/b[0]";
    QTest::newRow("blank") << " a b ";
    QTest::newRow("not ASCII") << QStringLiteral("größe");
    QTest::newRow("beyond the basic plane") << QStringLiteral("\U0001F600");
    QTest::newRow("long") << QString(100000, QLatin1Char('k'));
}

void WireFormatTest::keysArriveAndLeaveUnchanged()
{
    QFETCH(const QString, key);

    const QString wire = QStringLiteral("({'%1': <1>},)").arg(key);
    m_service.answerWith(wire);
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(describe(answers.at(0).configuration), QStringLiteral("{\"%1\": int 1}").arg(key));

    const int calls = m_service.calls().count();
    Answers changes;
    m_manager.changeConfiguration(answers.at(0).configuration, changes.forChanging());
    QVERIFY(changes.waitFor(1));
    QCOMPARE(m_service.calls().count(), calls + 1);
    QCOMPARE(m_service.calls().last().arguments, wire);
}

void WireFormatTest::aStoredValueIsSentAsItsType_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("wire");

    Configuration inner;
    inner.set("list", QVariant::fromValue(QList<int> {1}));
    Configuration outer;
    outer.set("inner", QVariant::fromValue(inner));

    const auto row = [](const char *name, const QVariant &value, const QString &wire) {
        QTest::newRow(name) << value << wire;
    };
    row("empty QList<int>", QVariant::fromValue(QList<int> {}), "@ai []");
    row("empty QList<bool>", QVariant::fromValue(QList<bool> {}), "@ab []");
    row("empty QStringList", QStringList(), "@as []");
    row("null QString", QString(), "''");
    row("empty configuration", QVariant::fromValue(Configuration()), "@a{sv} {}");
    row("least int", std::numeric_limits<int>::min(), "-2147483648");
    row("int", 7, "7");
    row("bool", true, "true");
    row("QString", QStringLiteral("grün"), "'grün'");
    row("QList<int>", QVariant::fromValue(QList<int> {3, -1}), "[3, -1]");
    row("QList<bool>", QVariant::fromValue(QList<bool> {true, false}), "[true, false]");
    row("empty QList<QString>", QVariant::fromValue(QList<QString> {}), "@as []");
    row("QList<QString>", QVariant::fromValue(QList<QString> {"b", ""}), "['b', '']");
    row("QStringList", QStringList {"b", ""}, "['b', '']");
    row("nested configuration", QVariant::fromValue(outer), "{'inner': <{'list': <[1]>}>}");
}

void WireFormatTest::aStoredValueIsSentAsItsType()
{
    QFETCH(const QVariant, value);
    QFETCH(const QString, wire);

    Configuration configuration;
    QVERIFY(configuration.set("key", value));
    m_service.answerWith("()");
    const int calls = m_service.calls().count();
    Answers answers;
    m_manager.changeConfiguration(configuration, answers.forChanging());
    QVERIFY(answers.waitFor(1));

    QVERIFY(!answers.at(0).error);
    QCOMPARE(m_service.calls().count(), calls + 1);
    QCOMPARE(m_service.calls().last().arguments, QStringLiteral("({'key': <%1>},)").arg(wire));
}

void WireFormatTest::textThatDBusCannotCarryIsChangedOnItsWay_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("carried");

    QTest::newRow("NUL at the end") << QString::fromUtf8("ab\0", 3) << "ab";
    QTest::newRow("NUL inside") << QString::fromUtf8("a\0b", 3) << "a";
    QTest::newRow("unpaired high surrogate") << QString(QChar(0xD83D)) << "?";
    QTest::newRow("unpaired low surrogate") << QString(QChar(0xDE00)) + QLatin1Char('a') << "?a";
    QTest::newRow("noncharacter") << QString(QChar(0xFFFE)) << QString(QChar(0xFFFE));
}

void WireFormatTest::textThatDBusCannotCarryIsChangedOnItsWay()
{
    QFETCH(const QString, text);
    QFETCH(const QString, carried);

    Configuration configuration;
    configuration.set("key", text);
    QString received;
    m_service.answerThrough([&](const MethodCall &call) {
        const gchar *value = nullptr;
        g_autoptr(GVariant) entries = g_variant_get_child_value(call.arguments(), 0);
        if (g_variant_lookup(entries, "key", "&s", &value))
            received = QString::fromUtf8(value);
        call.reply(nullptr);
    });
    Answers answers;
    m_manager.changeConfiguration(configuration, answers.forChanging());
    QVERIFY(answers.waitFor(1));
    QVERIFY(!answers.at(0).error);
    QCOMPARE(received, carried);
}

void WireFormatTest::entriesAreSentInOrderOfTheirKeys()
{
    Configuration configuration;
    for (const char *key : {"b", "", "a", "Z", "ä", "aa"})
        QVERIFY(configuration.set(QString::fromUtf8(key), 1));
    m_service.answerWith("()");
    Answers answers;
    m_manager.changeConfiguration(configuration, answers.forChanging());
    QVERIFY(answers.waitFor(1));

    QCOMPARE(m_service.calls().last().arguments,
             QStringLiteral("({'': <1>, 'Z': <1>, 'a': <1>, 'aa': <1>, 'b': <1>, 'ä': <1>},)"));
}

void WireFormatTest::anEmptyConfigurationIsSentAsAnEmptyDictionary()
{
    m_service.answerWith("()");
    Answers answers;
    m_manager.changeConfiguration(Configuration(), answers.forChanging());
    QVERIFY(answers.waitFor(1));

    QCOMPARE(m_service.calls().last().arguments, QStringLiteral("(@a{sv} {},)"));
}

void WireFormatTest::aReceivedConfigurationGoesBackUnchanged()
{
    const QString wire = QStringLiteral(
        "({'bool': <true>, 'bools': <[false]>, 'int': <1>, 'ints': <[1, 2]>, "
        "'nested': <{'empty': <@a{sv} {}>, 'strings': <['x']>}>, "
        "'none': <@as []>, 'string': <'x'>},)");
    m_service.answerWith(wire);
    Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    m_manager.changeConfiguration(answers.at(0).configuration, answers.forChanging());
    QVERIFY(answers.waitFor(2));

    QCOMPARE(m_service.calls().last().method, QStringLiteral("ChangeConfiguration"));
    QCOMPARE(m_service.calls().last().arguments, wire);
}

void WireFormatTest::aConfigurationInsideAVariantIsTakenAsItIs()
{
    Configuration configuration;
    configuration.set("key", 1);

    QCOMPARE(describe(qdbus_cast<Configuration>(QVariant::fromValue(configuration))),
             QStringLiteral("{\"key\": int 1}"));
    QCOMPARE(describe(qdbus_cast<Configuration>(QVariant(7))), QStringLiteral("{}"));
}

void WireFormatTest::theTypeIsRegisteredUnderItsWholeName()
{
    const int type = qMetaTypeId<Configuration>();
    QCOMPARE(QMetaType::type("Tarnvel::Application::ManagedConfiguration::Configuration"), type);
    QCOMPARE(QByteArray(QDBusMetaType::typeToSignature(type)), QByteArray("a{sv}"));
}

TARNVEL_BUS_TEST_MAIN(WireFormatTest)

#include "wire_format_test.moc"
