// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "description.h"
#include "generatedsettings.h"
#include "heap.h"

#include <QtTest/QTest>

#include <functional>

using namespace Tarnvel::Testing;

using Entries = QMap<QString, QVariant>;

namespace {

// Without those of the first call, in which Qt registers types.
template<typename Getter>
qint64 allocations(const Entries &entries, Getter getter)
{
    const GeneratedSettings settings(makeConfiguration(entries));
    qint64 before = 0;
    for (int time = 0; time < 2; ++time) {
        before = Tarnvel::Benchmarks::readHeap().allocations;
        getter(settings);
    }
    return Tarnvel::Benchmarks::readHeap().allocations - before;
}

} // namespace

class GeneratedClassAllocationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCounterCounts();
    void aGetterAllocatesNoMoreThanItsValue_data();
    void aGetterAllocatesNoMoreThanItsValue();
};

void GeneratedClassAllocationsTest::theCounterCounts()
{
    QCOMPARE(allocations({{"text", "a"}},
                         [](const auto &one) { return QString(one.text() + QLatin1Char('b')); }),
             1);
}

void GeneratedClassAllocationsTest::aGetterAllocatesNoMoreThanItsValue_data()
{
    QTest::addColumn<QVariantMap>("entries");
    QTest::addColumn<int>("ofLists");
    QTest::newRow("absent") << Entries() << 3;
    QTest::newRow("mistyped") << Entries {{"zoom", "a"}, {"copies", "a"}, {"visible", 1},
                                          {"theme", 1},  {"name", 1},     {"text", 1},
                                          {"sizes", 1},  {"days", 1},     {"files", 1}}
                              << 3;
    QTest::newRow("not allowed") << Entries {{"zoom", 1},
                                             {"copies", 3},
                                             {"theme", "l"},
                                             {"name", "a"},
                                             {"sizes", makeList<int>({1, 0})},
                                             {"files", QStringList {"c"}}}
                                 << 3;
    QTest::newRow("allowed") << Entries {{"zoom", 50},
                                         {"copies", 1},
                                         {"visible", false},
                                         {"theme", "light"},
                                         {"name", "ab"},
                                         {"text", "t"},
                                         {"sizes", makeList<int>({1, 2})},
                                         {"days", makeList<bool>({false})},
                                         {"files", QStringList {"a"}}}
                             << 0;
}

void GeneratedClassAllocationsTest::aGetterAllocatesNoMoreThanItsValue()
{
    QFETCH(const QVariantMap, entries);
    QFETCH(const int, ofLists);
    const auto readScalars = [](const GeneratedSettings &one) {
        one.zoom();
        one.copies();
        one.visible();
        one.theme();
        one.name();
        one.text();
    };
    QCOMPARE(allocations(entries, readScalars), 0);
    // With Qt 5, a list allocates each item that is larger than a pointer, but no QString.
    const auto readLists = [](const GeneratedSettings &one) {
        one.sizes();
        one.days();
        one.files();
    };
    QCOMPARE(allocations(entries, readLists), ofLists);
}

QTEST_GUILESS_MAIN(GeneratedClassAllocationsTest)

#include "generated_class_allocations_test.moc"
