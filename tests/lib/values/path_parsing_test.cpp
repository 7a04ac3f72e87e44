// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QDebug>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtTest/QtTest>

#include <Tarnvel/ManagedConfiguration/Xpath>

#include "message_log.h"

#include <limits>
#include <type_traits>
#include <utility>

using namespace Tarnvel::Application::ManagedConfiguration;
using Tarnvel::Testing::MessageLog;

namespace {

template<typename T, typename = void>
struct HasEquality : std::false_type
{
};

template<typename T>
struct HasEquality<T, decltype(void(std::declval<const T &>() == std::declval<const T &>()))>
    : std::true_type
{
};

static_assert(HasEquality<QString>::value);
static_assert(!HasEquality<Xpath>::value);
static_assert(!HasEquality<XpathAccess>::value);
static_assert(std::is_constructible<Xpath, QString>::value);
static_assert(!std::is_convertible<QString, Xpath>::value);
static_assert(std::is_constructible<XpathAccess, QString>::value);
static_assert(!std::is_convertible<QString, XpathAccess>::value);
static_assert(std::is_constructible<XpathAccess, int>::value);
static_assert(!std::is_convertible<int, XpathAccess>::value);
static_assert(std::is_same<std::underlying_type<XpathAccess::Type>::type, int>::value);
static_assert(std::is_same<decltype(std::declval<XpathAccess>().toKey()), const QString &>::value);
static_assert(std::is_same<decltype(std::declval<Xpath>().toString()), const QString &>::value);
static_assert(
    std::is_same<decltype(std::declval<Xpath>().accesses()), const QList<XpathAccess> &>::value);

const char indexFormatMessage[] = "The xpath part has an invalid index format: ";
const char leadingBracketMessage[] =
    "The xpath part cannot have the \xE2\x80\x98[\xE2\x80\x99 character at the beginning: ";
const char closingBracketMessage[] = "The ']' character can only be at the end of an xpath part: ";
const char invalidIndexMessage[] = "The xpath part contains an invalid index: ";

// "key:a" or "index:0" for each step, so that a failed comparison shows what came out.
QStringList describe(const QList<XpathAccess> &accesses)
{
    QStringList steps;
    for (const XpathAccess &access : accesses) {
        steps.append(access.type() == XpathAccess::Key
                         ? "key:" + access.toKey()
                         : "index:" + QString::number(access.toIndex()));
    }
    return steps;
}

QString quoted(const QString &text)
{
    QString result;
    QDebug(&result).nospace() << text;
    return result;
}

QStringList keys(const QStringList &keys)
{
    QStringList steps;
    for (const QString &key : keys)
        steps.append("key:" + key);
    return steps;
}

} // namespace

class PathParsingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theKindsOfStepHaveTheirNumbers();
    void anIndexStepTakesAnyInt_data();
    void anIndexStepTakesAnyInt();
    void aKeyStepTakesAnyString_data();
    void aKeyStepTakesAnyString();

    void anEmptyPathIsReported_data();
    void anEmptyPathIsReported();
    void separatorsAloneAreNoPath_data();
    void separatorsAloneAreNoPath();
    void aKeyIsTakenAsItStands_data();
    void aKeyIsTakenAsItStands();
    void aPathGivesItsSteps_data();
    void aPathGivesItsSteps();
    void anIndexIsWhatToIntMakesOfIt_data();
    void anIndexIsWhatToIntMakesOfIt();

    void aFaultyPathIsReportedOnce_data();
    void aFaultyPathIsReportedOnce();
    void theFirstFaultyPartEndsTheParse_data();
    void theFirstFaultyPartEndsTheParse();
    void theFirstFailedCheckNamesTheFault_data();
    void theFirstFailedCheckNamesTheFault();
    void messagesQuoteTheirStrings_data();
    void messagesQuoteTheirStrings();
    void everyParseReportsAnew();

    void aCopyOutlivesItsSource();
};

void PathParsingTest::theKindsOfStepHaveTheirNumbers()
{
    QCOMPARE(int(XpathAccess::Index), 0);
    QCOMPARE(int(XpathAccess::Key), 1);
}

void PathParsingTest::anIndexStepTakesAnyInt_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("least") << std::numeric_limits<int>::min();
    QTest::newRow("greatest") << std::numeric_limits<int>::max();
    QTest::newRow("negative") << -1;
    QTest::newRow("zero") << 0;
    QTest::newRow("positive") << 7;
}

void PathParsingTest::anIndexStepTakesAnyInt()
{
    QFETCH(int, index);

    const XpathAccess access(index);
    QCOMPARE(int(access.type()), 0);
    QCOMPARE(access.toIndex(), index);
    QVERIFY(access.toKey().isNull());
}

void PathParsingTest::aKeyStepTakesAnyString_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << QString("");
    QTest::newRow("a path") << QString("a/b[1]");
    QTest::newRow("brackets") << QString("][");
    QTest::newRow("a number") << QString("12");
    QTest::newRow("beyond ASCII") << QString("größe 😀");
}

void PathParsingTest::aKeyStepTakesAnyString()
{
    QFETCH(QString, key);

    const XpathAccess access(key);
    QCOMPARE(int(access.type()), 1);
    QCOMPARE(access.toIndex(), 0);
    QCOMPARE(access.toKey(), key);
    QCOMPARE(access.toKey().isNull(), key.isNull());
}

void PathParsingTest::anEmptyPathIsReported_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << QString("");
}

void PathParsingTest::anEmptyPathIsReported()
{
    QFETCH(QString, text);

    MessageLog log;
    const Xpath xpath(text);
    QCOMPARE(log.take(), QStringList {"Attempt to process an empty xpath"});
    QVERIFY(!xpath.isValid());
    QCOMPARE(xpath.toString(), QString(""));
    QCOMPARE(xpath.toString().isNull(), text.isNull());
    QVERIFY(xpath.accesses().isEmpty());
}

void PathParsingTest::separatorsAloneAreNoPath_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("one") << QString("/");
    QTest::newRow("two") << QString("//");
    QTest::newRow("three") << QString("///");
    QTest::newRow("very many") << QString(100000, '/');
}

void PathParsingTest::separatorsAloneAreNoPath()
{
    QFETCH(QString, text);

    MessageLog log;
    const Xpath xpath(text);
    QCOMPARE(log.take(), QStringList());
    QVERIFY(!xpath.isValid());
    QCOMPARE(xpath.toString(), text);
    QVERIFY(xpath.accesses().isEmpty());
}

void PathParsingTest::aKeyIsTakenAsItStands_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("a blank") << QString(" ");
    QTest::newRow("blanks around") << QString(" a ");
    QTest::newRow("a blank inside") << QString("a b");
    QTest::newRow("a line break") << QString("a\nb\t");
    QTest::newRow("a NUL inside") << QString::fromUtf8("a\0b", 3);
    QTest::newRow("capital") << QString("A");
    QTest::newRow("small") << QString("a");
    QTest::newRow("a number") << QString("12");
    QTest::newRow("a negative number") << QString("-1");
    QTest::newRow("quotes") << QString("\"it's\"");
    QTest::newRow("a backslash") << QString("a\\b");
    QTest::newRow("stops") << QString("..");
    QTest::newRow("other brackets") << QString("a(1){2}<3>");
    QTest::newRow("an escape") << QString("a%2Fb");
    QTest::newRow("beyond ASCII") << QString("größe 日本 😀");
    QTest::newRow("very long") << QString(100000, 'k');
}

void PathParsingTest::aKeyIsTakenAsItStands()
{
    QFETCH(QString, key);

    MessageLog log;
    const Xpath xpath(key);
    const Xpath indexed(key + "[3]/" + key);
    QCOMPARE(log.take(), QStringList());
    QVERIFY(xpath.isValid());
    QCOMPARE(xpath.toString(), key);
    QCOMPARE(describe(xpath.accesses()), keys({key}));
    QCOMPARE(describe(indexed.accesses()), (QStringList {"key:" + key, "index:3", "key:" + key}));
}

void PathParsingTest::aPathGivesItsSteps_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("steps");
    QTest::newRow("no opening bracket") << "12]" << QStringList {"key:12]", "index:12"};
    QTest::newRow("no opening bracket, between others")
        << "a/0]/b" << QStringList {"key:a", "key:0]", "index:0", "key:b"};
    QTest::newRow("needless separators") << "/a//b/" << keys({"a", "b"});
    QTest::newRow("many needless separators")
        << "///a[1]////b//" << QStringList {"key:a", "index:1", "key:b"};
    QTest::newRow("minus zero") << "a[-0]" << QStringList {"key:a", "index:0"};
    QTest::newRow("zero") << "a[0]" << QStringList {"key:a", "index:0"};
    QTest::newRow("greatest index") << "a[2147483647]" << QStringList {"key:a", "index:2147483647"};
    QTest::newRow("index, then a key")
        << "list[10]/x" << QStringList {"key:list", "index:10", "key:x"};
    QTest::newRow("index after index")
        << "a[1]/b[2]" << QStringList {"key:a", "index:1", "key:b", "index:2"};
    QTest::newRow("key") << "a" << keys({"a"});
    QTest::newRow("keys") << "a/b/c" << keys({"a", "b", "c"});
    QTest::newRow("deep") << QString("a/").repeated(1000)
                          << QString("key:a,").repeated(1000).split(',', Qt::SkipEmptyParts);
}

void PathParsingTest::aPathGivesItsSteps()
{
    QFETCH(QString, text);
    QFETCH(QStringList, steps);

    MessageLog log;
    const Xpath xpath(text);
    QCOMPARE(log.take(), QStringList());
    QVERIFY(xpath.isValid());
    QCOMPARE(xpath.toString(), text);
    QCOMPARE(describe(xpath.accesses()), steps);
    for (const XpathAccess &access : xpath.accesses()) {
        if (access.type() == XpathAccess::Index)
            QVERIFY(access.toKey().isNull());
        else
            QCOMPARE(access.toIndex(), 0);
    }
}

void PathParsingTest::anIndexIsWhatToIntMakesOfIt_data()
{
    QTest::addColumn<QString>("indexText");
    const QStringList texts {"",
                             "+1",
                             " 1",
                             "1 ",
                             "\t1\n",
                             "\u00A01",
                             "0x1",
                             "01",
                             "0b1",
                             "010",
                             "1e3",
                             "1,000",
                             "1.0",
                             "1.5",
                             "1L",
                             "- 1",
                             "+",
                             "-",
                             "--1",
                             "-0",
                             "-1",
                             "\u0661",
                             "\uFF11",
                             "\u00B2",
                             "2147483647",
                             "2147483648",
                             "00000000002147483647",
                             "-2147483648",
                             "-2147483649",
                             "999999999999",
                             "4294967296",
                             "18446744073709551616",
                             QString::fromUtf8("1\0", 2)};
    for (const QString &text : texts)
        QTest::newRow(qUtf8Printable(quoted(text))) << text;
}

void PathParsingTest::anIndexIsWhatToIntMakesOfIt()
{
    QFETCH(QString, indexText);
    bool isNumber = false;
    const int number = indexText.toInt(&isNumber, 10);
    const QString text = "a[" + indexText + ']';

    MessageLog log;
    const Xpath xpath(text);
    if (isNumber && number >= 0) {
        QCOMPARE(log.take(), QStringList());
        QCOMPARE(describe(xpath.accesses()),
                 (QStringList {"key:a", "index:" + QString::number(number)}));
        return;
    }
    QCOMPARE(
        log.take(),
        QStringList {invalidIndexMessage + quoted(indexText) + " (xpath=" + quoted(text) + ')'});
    QVERIFY(!xpath.isValid());
    QCOMPARE(xpath.toString(), text);
}

void PathParsingTest::aFaultyPathIsReportedOnce_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("culprit");
    QTest::newRow("[") << "[" << indexFormatMessage << "[";
    QTest::newRow("][") << "][" << indexFormatMessage << "][";
    QTest::newRow("a[1") << "a[1" << indexFormatMessage << "a[1";
    QTest::newRow("a]1[") << "a]1[" << indexFormatMessage << "a]1[";
    QTest::newRow("[1]") << "[1]" << leadingBracketMessage << "[1]";
    QTest::newRow("[]") << "[]" << leadingBracketMessage << "[]";
    QTest::newRow("x/[1]") << "x/[1]" << leadingBracketMessage << "[1]";
    QTest::newRow("a[1]b") << "a[1]b" << closingBracketMessage << "a[1]b";
    QTest::newRow("a[1] ") << "a[1] " << closingBracketMessage << "a[1] ";
    QTest::newRow("a[1][2]") << "a[1][2]" << closingBracketMessage << "a[1][2]";
    QTest::newRow("a[1]]") << "a[1]]" << closingBracketMessage << "a[1]]";
    QTest::newRow("1]a") << "1]a" << closingBracketMessage << "1]a";
    QTest::newRow("]") << "]" << invalidIndexMessage << "";
    QTest::newRow("x]") << "x]" << invalidIndexMessage << "x";
    QTest::newRow("a[]") << "a[]" << invalidIndexMessage << "";
    QTest::newRow("a[-1]") << "a[-1]" << invalidIndexMessage << "-1";
    QTest::newRow("a[-2147483648]") << "a[-2147483648]" << invalidIndexMessage << "-2147483648";
    QTest::newRow("a[2147483648]") << "a[2147483648]" << invalidIndexMessage << "2147483648";
    QTest::newRow("a[999999999999]") << "a[999999999999]" << invalidIndexMessage << "999999999999";
    QTest::newRow("a[x]") << "a[x]" << invalidIndexMessage << "x";
    QTest::newRow("a[1.5]") << "a[1.5]" << invalidIndexMessage << "1.5";
    QTest::newRow("a[0x1]") << "a[0x1]" << invalidIndexMessage << "0x1";
    QTest::newRow("a[b[1]") << "a[b[1]" << invalidIndexMessage << "b[1";
    QTest::newRow("-1]") << "-1]" << invalidIndexMessage << "-1";
}

void PathParsingTest::aFaultyPathIsReportedOnce()
{
    QFETCH(QString, text);
    QFETCH(QString, message);
    QFETCH(QString, culprit);

    MessageLog log;
    const Xpath xpath(text);
    QCOMPARE(log.take(), QStringList {message + '"' + culprit + "\" (xpath=\"" + text + "\")"});
    QVERIFY(!xpath.isValid());
    QCOMPARE(xpath.toString(), text);
    QVERIFY(xpath.accesses().isEmpty());
}

void PathParsingTest::theFirstFaultyPartEndsTheParse_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("warning");
    QTest::newRow("after a good part")
        << "good/a[x]/more"
        << "The xpath part contains an invalid index: \"x\" (xpath=\"good/a[x]/more\")";
    QTest::newRow("before another faulty part")
        << "good/a]b/[1]"
        << "The ']' character can only be at the end of an xpath part: \"a]b\" "
           "(xpath=\"good/a]b/[1]\")";
    QTest::newRow("among separators") << "//a[//"
                                      << "The xpath part has an invalid index format: \"a[\" "
                                         "(xpath=\"//a[//\")";
    QTest::newRow("brackets on both sides of a separator")
        << "a[1/2]"
        << "The xpath part has an invalid index format: \"a[1\" (xpath=\"a[1/2]\")";
}

void PathParsingTest::theFirstFaultyPartEndsTheParse()
{
    QFETCH(QString, text);
    QFETCH(QString, warning);

    MessageLog log;
    const Xpath xpath(text);
    QCOMPARE(log.take(), QStringList {warning});
    QVERIFY(!xpath.isValid());
    QVERIFY(xpath.accesses().isEmpty());
}

void PathParsingTest::theFirstFailedCheckNamesTheFault_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("message");
    QTest::newRow("format before leading bracket") << "[1" << indexFormatMessage;
    QTest::newRow("format before closing bracket") << "]a[" << indexFormatMessage;
    QTest::newRow("format before invalid index") << "x][" << indexFormatMessage;
    QTest::newRow("leading before closing bracket") << "[1]b" << leadingBracketMessage;
    QTest::newRow("leading bracket before invalid index") << "[x]" << leadingBracketMessage;
    QTest::newRow("closing bracket before invalid index") << "a[x]b" << closingBracketMessage;
}

void PathParsingTest::theFirstFailedCheckNamesTheFault()
{
    QFETCH(QString, text);
    QFETCH(QString, message);

    MessageLog log;
    const Xpath xpath(text);
    QCOMPARE(log.take(), QStringList {message + '"' + text + "\" (xpath=\"" + text + "\")"});
    QVERIFY(!xpath.isValid());
}

void PathParsingTest::messagesQuoteTheirStrings_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("warning");
    QTest::newRow("a quote")
        << "a\"[x\"]"
        << R"(The xpath part contains an invalid index: "x\"" (xpath="a\"[x\"]"))";
    QTest::newRow("a backslash")
        << "a\\["
        << R"(The xpath part has an invalid index format: "a\\[" (xpath="a\\["))";
    QTest::newRow("a line break")
        << "a\n]b"
        << R"(The ']' character can only be at the end of an xpath part: "a\n]b" (xpath="a\n]b"))";
    QTest::newRow("a NUL")
        << QString::fromUtf8("[\0]", 3)
        << "The xpath part cannot have the ‘[’ character at the beginning: \"[\\u0000]\" "
           "(xpath=\"[\\u0000]\")";
    QTest::newRow("beyond ASCII")
        << "größe[日😀]"
        << "The xpath part contains an invalid index: \"日😀\" (xpath=\"größe[日😀]\")";
}

void PathParsingTest::messagesQuoteTheirStrings()
{
    QFETCH(QString, text);
    QFETCH(QString, warning);

    MessageLog log;
    const Xpath xpath(text);
    QCOMPARE(log.take(), QStringList {warning});
    QCOMPARE(xpath.toString(), text);
}

void PathParsingTest::everyParseReportsAnew()
{
    const QString warning = "The xpath part contains an invalid index: \"\" (xpath=\"]\")";

    MessageLog log;
    const Xpath first("]");
    const Xpath second("]");
    const Xpath copy(second); // NOLINT(performance-unnecessary-copy-initialization)
    QCOMPARE(log.take(), (QStringList {warning, warning}));
    QVERIFY(!copy.isValid());
    QVERIFY(copy.accesses().isEmpty());
    QCOMPARE(log.take(), QStringList());
}

void PathParsingTest::aCopyOutlivesItsSource()
{
    Xpath xpath("a[1]");
    const Xpath copy(xpath);
    xpath = Xpath("b/c");
    QCOMPARE(copy.toString(), QString("a[1]"));
    QCOMPARE(describe(copy.accesses()), (QStringList {"key:a", "index:1"}));
    QCOMPARE(xpath.toString(), QString("b/c"));
    QCOMPARE(describe(xpath.accesses()), keys({"b", "c"}));
}

QTEST_GUILESS_MAIN(PathParsingTest)

#include "path_parsing_test.moc"
