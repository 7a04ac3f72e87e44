// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "message_log.h"
#include "qt_version.h"

#include <QtCore/QDebug>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/xpath.h>

#include <functional>
#include <limits>
#include <malloc.h>
#include <type_traits>
#include <utility>

using namespace Tarnvel::Application::ManagedConfiguration;
using Tarnvel::Testing::MessageLog;
using Tarnvel::Testing::onQt6;

namespace {

static_assert(XpathAccess::Index == 0 && XpathAccess::Key == 1);
static_assert(!std::is_convertible_v<QString, Xpath>);
static_assert(!std::is_convertible_v<QString, XpathAccess>);
static_assert(!std::is_convertible_v<int, XpathAccess>);
static_assert(!std::is_invocable_v<std::equal_to<>, const Xpath &, const Xpath &>);
static_assert(!std::is_invocable_v<std::equal_to<>, const XpathAccess &, const XpathAccess &>);
static_assert(std::is_reference_v<decltype(std::declval<XpathAccess>().toKey())>);
static_assert(std::is_reference_v<decltype(std::declval<Xpath>().toString())>);
static_assert(std::is_reference_v<decltype(std::declval<Xpath>().accesses())>);

static_assert(sizeof(Xpath) == (onQt6 ? 6 : 2) * sizeof(void *));
static_assert(sizeof(XpathAccess) == 8 + (onQt6 ? 3 : 1) * sizeof(void *));

const char indexFormat[] = "The xpath part has an invalid index format: ";
const char leadingBracket[] = "The xpath part cannot have the ‘[’ character at the beginning: ";
const char closingBracket[] = "The ']' character can only be at the end of an xpath part: ";
const char invalidIndex[] = "The xpath part contains an invalid index: ";

// As QDebug writes a string.
QString quoted(const QString &text)
{
    QString result;
    QDebug(&result).nospace() << text;
    return result;
}

QString describe(const XpathAccess &access)
{
    if (access.type() == XpathAccess::Key && access.toIndex() == 0)
        return "key:" + access.toKey();
    if (access.type() == XpathAccess::Index && access.toKey().isNull())
        return "index:" + QString::number(access.toIndex());
    return "a step that is neither a key nor an index alone";
}

QStringList describe(const QList<XpathAccess> &accesses)
{
    QStringList steps;
    for (const XpathAccess &access : accesses)
        steps.append(describe(access));
    return steps;
}

void addPathRow(const QString &text, const QStringList &steps)
{
    QTest::newRow(qUtf8Printable(quoted(text.left(40)))) << text << steps << QStringList();
}

void addKeyRow(const QString &key)
{
    addPathRow(key, {"key:" + key});
}

void addFaultRow(const QString &text, const char *message, const QString &culprit)
{
    QTest::newRow(qUtf8Printable(quoted(text)))
        << text << QStringList()
        << QStringList(message + quoted(culprit) + " (xpath=" + quoted(text) + ')');
}

} // namespace

class PathParsingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anIndexStepTakesAnyInt();
    void aKeyStepTakesAnyString();
    void aTextGivesItsStepsOrOneWarning_data();
    void aTextGivesItsStepsOrOneWarning();
    void thePathOfManySeparatorsTakesLittleMemory();
};

void PathParsingTest::anIndexStepTakesAnyInt()
{
    using Limits = std::numeric_limits<int>;
    for (const int index : {Limits::min(), -1, 0, 7, Limits::max()})
        QCOMPARE(describe(XpathAccess(index)), "index:" + QString::number(index));
}

void PathParsingTest::aKeyStepTakesAnyString()
{
    for (const QString &key : {QString(), QString(""), QString("a/b[1]"), QString("größe 😀")}) {
        const XpathAccess access(key);
        QCOMPARE(describe(access), "key:" + key);
        QCOMPARE(access.toKey().isNull(), key.isNull());
    }
}

void PathParsingTest::aTextGivesItsStepsOrOneWarning_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("warnings");

    const QStringList empty("Attempt to process an empty xpath");
    QTest::newRow("null") << QString() << QStringList() << empty;
    QTest::newRow("empty") << QString("") << QStringList() << empty;
    for (const int slashes : {1, 2, 3, 100000})
        addPathRow(QString(slashes, '/'), {});

    // A key is taken as it stands.
    for (const char *key : {"a", "A", " ", " a b ", "a\nb\t", "12", "-1", "\"it's\"", "a\\b", "..",
                            "a(1){2}<3>", "a%2Fb", "größe 日本 😀"})
        addKeyRow(key);
    addKeyRow(QString::fromUtf8("a\0b", 3));
    addKeyRow(QString(100000, 'k'));

    addPathRow("a/b/c", {"key:a", "key:b", "key:c"});
    addPathRow("/a//b/", {"key:a", "key:b"});
    addPathRow("///a[1]////b//", {"key:a", "index:1", "key:b"});
    addPathRow(QString("a/").repeated(1000), QVector<QString>(1000, "key:a").toList());
    addPathRow("a[0]", {"key:a", "index:0"});
    addPathRow("list[10]/x", {"key:list", "index:10", "key:x"});
    addPathRow(" a b [3]", {"key: a b ", "index:3"});
    // An index is what QString::toInt() takes for a decimal number.
    addPathRow("a[-0]", {"key:a", "index:0"});
    addPathRow("a[+1]", {"key:a", "index:1"});
    addPathRow("a[\u00A0 \u30001\u2007]", {"key:a", "index:1"});
    addPathRow("a[\u22120]", {"key:a", "index:0"});
    addPathRow("a[\t1\n]", {"key:a", "index:1"});
    addPathRow("a[010]", {"key:a", "index:10"});
    addPathRow("a[00000000002147483647]", {"key:a", "index:2147483647"});
    // Without "[", the whole part is the key and all before the "]" the index.
    addPathRow("12]", {"key:12]", "index:12"});
    addPathRow("a/0]/b", {"key:a", "key:0]", "index:0", "key:b"});

    // The first check that fails decides on the message ...
    for (const char *part : {"[", "][", "a[1", "a]1[", "[1", "]a[", "x]["})
        addFaultRow(part, indexFormat, part);
    for (const char *part : {"[1]", "[]", "[1]b", "[x]"})
        addFaultRow(part, leadingBracket, part);
    for (const char *part : {"a[1]b", "a[1] ", "a[1][2]", "a[1]]", "1]a", "a[x]b"})
        addFaultRow(part, closingBracket, part);
    addFaultRow("]", invalidIndex, "");
    addFaultRow("x]", invalidIndex, "x");
    addFaultRow("-1]", invalidIndex, "-1");
    addFaultRow("a[b[1]", invalidIndex, "b[1");
    const QString withNul = QString("1") + QChar(0) + '2';
    addFaultRow("a[" + withNul + ']', invalidIndex, withNul);
    for (const char *index :
         {"", "-1", "-2147483648", "2147483648", "4294967296", "999999999999", "x", "1.5", "0x1",
          "1e3", "1,000", "- 1", "\u0661", "日😀", "\"", "\\", "\n"})
        addFaultRow(QString("a[") + index + ']', invalidIndex, index);
    // ... and the first part that fails ends the parse.
    addFaultRow("x/[1]", leadingBracket, "[1]");
    addFaultRow("good/a[x]/more", invalidIndex, "x");
    addFaultRow("good/a]b/[1]", closingBracket, "a]b");
    addFaultRow("//a[//", indexFormat, "a[");
    addFaultRow("a[1/2]", indexFormat, "a[1");
}

void PathParsingTest::aTextGivesItsStepsOrOneWarning()
{
    QFETCH(const QString, text);
    QFETCH(const QStringList, steps);
    QFETCH(const QStringList, warnings);

    MessageLog log;
    const Xpath xpath(text);
    QCOMPARE(log.take(), warnings);
    QCOMPARE(describe(xpath.accesses()), steps);
    QCOMPARE(xpath.isValid(), !steps.isEmpty());
    QCOMPARE(xpath.toString(), text);
    QCOMPARE(xpath.toString().isNull(), text.isNull());
}

void PathParsingTest::thePathOfManySeparatorsTakesLittleMemory()
{
    const auto bytesInUse = [] {
        const struct mallinfo2 heap = mallinfo2();
        return heap.uordblks + heap.hblkhd;
    };
    if (bytesInUse() == 0)
        return QTest::qSkip("a sanitizer's allocator does not count", __FILE__, __LINE__);
    const QString text = QString(1024 * 1024, '/') + "a[1]";
    const auto before = bytesInUse();
    const Xpath xpath(text);
    const auto after = bytesInUse();
    QCOMPARE(xpath.accesses().size(), 2);
    QVERIFY2(after < before + 4096,
             qPrintable(QString("from %1 to %2 bytes").arg(before).arg(after)));
}

QTEST_GUILESS_MAIN(PathParsingTest)

#include "path_parsing_test.moc"
