// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "configuration_manager_p.h"
#include "message_log.h"
#include "qt_version.h"

#include <QtDBus/QDBusPendingCall>

#include <limits>
#include <malloc.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

using Map = QMap<QString, QVariant>;

namespace {

QVariant makeNested(const Map &map)
{
    return QVariant::fromValue(makeConfiguration(map));
}

QString nested(int levels, const QString &opening, const QString &innermost, const QString &closing)
{
    return opening.repeated(levels) + innermost + closing.repeated(levels);
}

} // namespace

class WireFormatTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void aReceivedValueIsStoredByItsKind_data();
    void aReceivedValueIsStoredByItsKind();
    void aFileDescriptorIsLeftOut();
    void aConfigurationIsSentInOrderOfItsKeys_data();
    void aConfigurationIsSentInOrderOfItsKeys();
    void aReceivedConfigurationGoesBackUnchanged_data();
    void aReceivedConfigurationGoesBackUnchanged();
    void writingContinuesAfterTheConfiguration();
    void readingAddsToTheConfigurationAndContinuesAfterIt();
    void aReadReplyIsFreed();
    void aConfigurationInsideAVariantIsTakenAsItIs();

private:
    ConfigurationManager m_manager;
};

void WireFormatTest::aReceivedValueIsStoredByItsKind_data()
{
    QTest::addColumn<QString>("sent");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QStringList>("warnings");

    const auto row = [](const QString &sent, const QString &stored,
                        const QStringList &warnings = {}) {
        QTest::newRow(qUtf8Printable(sent.left(60))) << sent << stored << warnings;
    };
    const QString leftOut = "invalid";
    const auto unsupported = [](const QString &type) {
        return QStringList("Unsupported type for arrays:  " + type);
    };
    const QStringList userType = unsupported(sharedTypeName());

    row("int32 -2147483648", "int -2147483648");
    row("int32 2147483647", "int 2147483647");
    row("true", "bool true");
    row("false", "bool false");
    row("''", "QString \"\"");
    row("'grün'", "QString \"grün\"");
    for (const char *sent :
         {"byte 7", "int16 7", "uint16 7", "uint32 7", "int64 7", "uint64 7", "7.5",
          "objectpath '/a'", "signature 'a{sv}'", "<7>", "<{'a': <1>}>", "<{'x': 'y'}>", "<<7>>",
          "(7, 'seven')", "({'a': <1>},)", "({'x': 'y'}, 1)", "[byte 1, 2]"})
        row(sent, leftOut);

    row("@a{sv} {}", "{}");
    row("{'a': <1>, 'b': <'x'>}", R"({"a": int 1, "b": QString "x"})");
    row("{'a': <7.5>, 'b': <(1, 2)>}", "{}");
    row("{'a': <{'b': <{'c': <[1]>}>}>}", R"({"a": {"b": {"c": QList<int> [1]}}})");
    row("{'a': <[1.5]>, 'b': <1>}", "{\"b\": int 1}", unsupported("double"));
    // Of dictionaries of other kinds nothing is read.
    for (const char *sent :
         {"@a{ss} {}", "{'a': 'x', 'b': 'y'}", "{'a': 1}", "{'a': 1.5}", "{'a': (1, 'x')}",
          "{'a': [1]}", "{'a': {'b': <1>}}", "{1: <'x'>}", "{int64 1: int64 2}", "{byte 1: <1>}",
          "{1.5: <1>}", "{handle 0: <1>}", "{objectpath '/a': 1}", "{signature 's': 'x'}"})
        row(sent, "{}");
    row("{objectpath '/a': <1>, '/b': <'x'>}", R"({"/a": int 1, "/b": QString "x"})");
    row("{signature 'a{sv}': <1>, '': <2>}", R"({"": int 2, "a{sv}": int 1})");
    row("{'a': <{objectpath '/b': <{signature 's': <[1]>}>}>}",
        R"({"a": {"/b": {"s": QList<int> [1]}}})");
    row("{'a': <1>, 'b': <{'x': 'y'}>, 'c': <2>}", R"({"a": int 1, "b": {}, "c": int 2})");
    // Of entries with one key, the last that can be stored counts.
    row("[{'a', <7.5>}, {'a', <1>}]", "{\"a\": int 1}");
    row("[{'a', <1>}, {'a', <7.5>}]", "{\"a\": int 1}");
    row("[{'b', <1>}, {'a', <2>}, {'b', <'later'>}]", R"({"a": int 2, "b": QString "later"})");

    row("@as []", "QStringList []");
    row("['b', 'a', '']", R"(QStringList ["b", "a", ""])");
    row("[3, -1, 2147483647]", "QList<int> [3, -1, 2147483647]");
    row("[true, false]", "QList<bool> [true, false]");
    for (const char *type : {"ai", "ab", "ay", "an", "aq", "au", "ax", "at", "ad", "ao", "ag", "av",
                             "aas", "aai", "a(i)", "aa{sv}", "aav"})
        row(QString("@%1 []").arg(type), leftOut);
    row("@an [1, 2]", leftOut, unsupported("short"));
    row("@aq [1, 2]", leftOut, unsupported("ushort"));
    row("@au [1, 2]", leftOut, unsupported("uint"));
    row("@ax [1, 2]", leftOut, unsupported("qlonglong"));
    row("@at [1, 2]", leftOut, unsupported("qulonglong"));
    row("[1.5, 2.5]", leftOut, unsupported("double"));
    row("[['a'], ['b']]", leftOut, unsupported("QStringList"));
    row("[[byte 1]]", leftOut, unsupported("QByteArray"));
    for (const char *sent : {"[objectpath '/a']", "[signature 's']", "[<1>, <'x'>]", "[[1], [2]]",
                             "[(1, 'x')]", "[{'a': <1>}]", "[{'x': 'y'}]"})
        row(sent, leftOut, userType);

    // The deepest replies. The dictionary, its entry and the variant take three of 64 containers.
    if (isOnDBusDaemon())
        row(nested(20, "{'k': <", "[1]", ">}"), nested(20, "{\"k\": ", "QList<int> [1]", "}"));
    row(nested(20, "{'k': <", "1", ">}"), nested(20, "{\"k\": ", "int 1", "}"));
    row(nested(60, "<", "1", ">"), leftOut);
    row(nested(32, "[", "1", "]"), leftOut, userType);
    row(nested(32, "(", "1", ",)"), leftOut);
    row(nested(30, "[(", "1", ",)]"), leftOut, userType);
    row(nested(15, "{'k': ", "'x'", "}"), "{}");
    row(nested(19, "{'k': <", "{'x': 1}", ">}"), nested(19, "{\"k\": ", "{}", "}"));
}

void WireFormatTest::aReceivedValueIsStoredByItsKind()
{
    QFETCH(const QString, sent);
    QFETCH(const QString, stored);
    QFETCH(const QStringList, warnings);

    MessageLog log;
    m_service.replyWith(QString("({'before': <1>, 'key': <%1>, 'later': <2>},)").arg(sent));
    const QString key = stored == "invalid" ? QString() : "\"key\": " + stored + ", ";
    QCOMPARE(awaitRead(m_manager), "{\"before\": int 1, " + key + "\"later\": int 2}");
    QCOMPARE(log.take(), warnings);
}

void WireFormatTest::aFileDescriptorIsLeftOut()
{
    m_service.replyThrough([](const auto &call) {
        call.reply(parseValue("({'file': <handle 0>, 'later': <2>},)"), {0});
    });
    MessageLog log;
    QCOMPARE(awaitRead(m_manager), "{\"later\": int 2}");
    QCOMPARE(log.take(), QStringList());
}

void WireFormatTest::aConfigurationIsSentInOrderOfItsKeys_data()
{
    QTest::addColumn<Map>("map");
    QTest::addColumn<QString>("sent");
    const auto row = [](const Map &map, const QString &sent) {
        QTest::newRow(qUtf8Printable(sent)) << map << sent;
    };
    row({}, "@a{sv} {}");
    row({{"b", 1}, {"", 1}, {"a", 1}, {"Z", 1}, {"ä", 1}, {"aa", 1}},
        "{'': <1>, 'Z': <1>, 'a': <1>, 'aa': <1>, 'b': <1>, 'ä': <1>}");
    row({{"null", QString()}}, "{'null': <''>}");
    row({{"int", std::numeric_limits<int>::min()}}, "{'int': <-2147483648>}");
    row({{"none", makeList<int>({})}}, "{'none': <@ai []>}");
    row({{"none", makeList<bool>({})}}, "{'none': <@ab []>}");
    row({{"none", QStringList()}}, "{'none': <@as []>}");
    // Qt D-Bus of Qt 5 does not support QList<QString>: it is sent as a QStringList.
    row({{"unknown", makeList<QString>({})}}, "{'unknown': <@as []>}");
    row({{"unknown", makeList<QString>({"b", ""})}}, "{'unknown': <['b', '']>}");
    row({{"nested", makeNested({{"unknown", makeList<QString>({"b"})}, {"z", 1}})}},
        "{'nested': <{'unknown': <['b']>, 'z': <1>}>}");
    // D-Bus carries no NUL and no half of a surrogate pair.
    row({{"cut", QString::fromUtf8("ab\0", 3)}}, "{'cut': <'ab'>}");
    row({{"cut", QString::fromUtf8("a\0b", 3)}}, "{'cut': <'a'>}");
    row({{"high", QString(QChar(0xD83D))}}, "{'high': <'?'>}");
    row({{"low", QString(QChar(0xDE00)) + 'a'}}, "{'low': <'?a'>}");
    row({{"noncharacter", QString(QChar(0xFFFE))}}, "{'noncharacter': <'\\ufffe'>}");
}

void WireFormatTest::aConfigurationIsSentInOrderOfItsKeys()
{
    QFETCH(const Map, map);
    QFETCH(const QString, sent);

    QCOMPARE(awaitChange(m_manager, makeConfiguration(map)), "{}");
    QCOMPARE(m_service.calls().last().arguments, '(' + sent + ",)");
}

void WireFormatTest::aReceivedConfigurationGoesBackUnchanged_data()
{
    QTest::addColumn<QString>("entries");
    QTest::newRow("values") << "'bool': <true>, 'bools': <[true, false]>, 'int': <7>, "
                               "'ints': <[3, -1]>, 'none': <@as []>, 'string': <'grün'>, "
                               "'strings': <['b', '']>";
    QTest::newRow("nested") << "'nested': <{'empty': <@a{sv} {}>, 'inner': <{'list': <[1]>}>}>";
    QTest::newRow("keys") << "'': <1>, ' a b ': <1>, 'a/b[0]': <1>, 'größe': <1>, '😀': <1>";
    QTest::newRow("a long key") << '\'' + QString(100000, 'k') + "': <1>";
}

void WireFormatTest::aReceivedConfigurationGoesBackUnchanged()
{
    QFETCH(const QString, entries);

    const QString reply = "({" + entries + "},)";
    m_service.replyWith(reply);
    const Answers answers;
    m_manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(awaitChange(m_manager, answers.at(0).configuration), "{}");
    QCOMPARE(m_service.calls().last().arguments, reply);
}

void WireFormatTest::writingContinuesAfterTheConfiguration()
{
    QDBusArgument argument;
    QDBusArgument *const result = &(argument << makeConfiguration({{"a", 1}, {"b", 2}}));
    QCOMPARE(result, &argument);
    argument << 7;
    QCOMPARE(argument.currentSignature(), QString("a{sv}i"));
}

void WireFormatTest::readingAddsToTheConfigurationAndContinuesAfterIt()
{
    ConfigurationManagerPrivate requests(&m_manager);
    Configuration configuration = makeConfiguration({{"there", 2}});
    for (const char *sent : {"@a{sv} {}", "{'key': <1>}", "{'x': 'y', 'z': ''}"}) {
        m_service.replyWith('(' + QString(sent) + ", 7)");
        const QDBusPendingCall call = requests.asyncCall("GetConfiguration");
        TRY_VERIFY(call.isFinished());
        const auto argument = call.reply().arguments().value(0).value<QDBusArgument>();
        const QDBusArgument *const result = &(argument >> configuration);
        QCOMPARE(result, &argument);
        int next = 0;
        argument >> next;
        QCOMPARE(next, 7);
    }
    QCOMPARE(describe(configuration), R"({"key": int 1, "there": int 2})");
}

void WireFormatTest::aReadReplyIsFreed()
{
    const auto kibibytesInUse = [] {
        const struct mallinfo2 heap = mallinfo2();
        return int((heap.uordblks + heap.hblkhd) / 1024);
    };
    // Each reply takes at least 256 KiB.
    const QString reply = "({'text': <'" + QString(256 * 1024, 'x')
        + "'>, 'list': <[1]>, 'nested': <{'a': <1>}>, 'other': <{'a': 1}>, 'variant': <<1>>},)";
    constexpr int replies = 32;
    m_service.replyWith(reply);
    awaitRead(m_manager);
    const int before = kibibytesInUse();
    for (int i = 0; i < replies; ++i)
        awaitRead(m_manager);
    const int kept = kibibytesInUse() - before;
    QVERIFY2(kept < replies * 256 / 4, qPrintable(QString("%1 KiB").arg(kept)));
}

void WireFormatTest::aConfigurationInsideAVariantIsTakenAsItIs()
{
    QCOMPARE(describe(qdbus_cast<Configuration>(makeNested({{"key", 1}}))),
             QString("{\"key\": int 1}"));
    QCOMPARE(describe(qdbus_cast<Configuration>(QVariant(7))), QString("{}"));
}

TARNVEL_BUS_TEST_MAIN(WireFormatTest)

#include "wire_format_test.moc"
