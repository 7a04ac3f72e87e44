// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "message_log.h"
#include "qt_version.h"

#include <QtCore/QDate>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusVariant>

#include <dlfcn.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

/*! What Qt D-Bus returns instead of the elements that it has read. */
QVariantList &replacements()
{
    static QVariantList elements;
    return elements;
}

} // namespace

// The library reads the elements of an array through this function, and the dynamic linker prefers
// this definition to that of Qt D-Bus. On the bus, all elements of an array have the same type,
// here integers.
QVariant QDBusArgument::asVariant() const
{
    using AsVariant = QVariant (*)(const QDBusArgument *);
    static const auto original = reinterpret_cast<AsVariant>(
        dlsym(RTLD_NEXT, "_ZNK13QDBusArgument9asVariantEv"));
    const QVariant element = original(this);
    const bool isElement = element.userType() == QMetaType::Int;
    return isElement && !replacements().isEmpty() ? replacements().takeFirst() : element;
}

class MixedArrayElementsTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void theFirstElementDecidesTheKindOfTheList_data();
    void theFirstElementDecidesTheKindOfTheList();

private:
    ConfigurationManager m_manager;
};

void MixedArrayElementsTest::theFirstElementDecidesTheKindOfTheList_data()
{
    QTest::addColumn<QVariantList>("elements");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QStringList>("warnings");

    const auto row = [](const char *name, const QVariantList &elements, const QString &stored,
                        const QStringList &warnings = {}) {
        QTest::newRow(name) << elements << (stored.isEmpty() ? "{}" : "{\"key\": " + stored + '}')
                            << warnings;
    };
    const auto unexpected = [](const QString &type) {
        return "Array element has unexpected type:  " + type;
    };
    const QVariant userType = QVariant::fromValue(QDBusVariant(1));

    row("int, then what converts", {1, 2.6, true, "3", qlonglong(4)}, "QList<int> [1, 3, 1, 3, 4]");
    row("int, then a conversion that fails", {1, "x", 2}, "QList<int> [1, 0, 2]");
    row("int, then what cannot convert", {1, userType, QDate(2020, 1, 1), 2}, "QList<int> [1, 2]",
        {unexpected(sharedTypeName()), unexpected("QDate")});
    row("bool, then what converts", {true, 0, "false", "x"},
        "QList<bool> [true, false, false, true]");
    row("bool, then what cannot convert", {false, QDate(2020, 1, 1)}, "QList<bool> [false]",
        {unexpected("QDate")});
    row("string", {"a", "", "b"}, textListType + R"( ["a", "", "b"])");
    row("string, then what converts", {"a", 1, true, 2.5},
        textListType + R"( ["a", "1", "true", "2.5"])");
    row("string, then what cannot convert", {"a", userType, QVariantMap()},
        textListType + " [\"a\"]", {unexpected(sharedTypeName()), unexpected("QVariantMap")});
    row("unsupported first, whatever follows", {2.5, 1, 2}, "",
        {QStringLiteral("Unsupported type for arrays:  double")});
}

void MixedArrayElementsTest::theFirstElementDecidesTheKindOfTheList()
{
    QFETCH(const QVariantList, elements);
    QFETCH(const QString, stored);
    QFETCH(const QStringList, warnings);

    const QString original = QStringList(QVector<QString>(elements.count(), "0").toList())
                                 .join(QLatin1Char(','));
    m_service.replyWith(QStringLiteral("({'key': <[%1]>},)").arg(original));
    replacements() = elements;
    MessageLog log;
    QCOMPARE(awaitRead(m_manager), stored);
    QCOMPARE(log.take(), warnings);
    // Behind a first element that makes no list, nothing is read.
    QCOMPARE(replacements().isEmpty(), stored != "{}");
}

TARNVEL_BUS_TEST_MAIN(MixedArrayElementsTest)

#include "mixed_array_elements_test.moc"
