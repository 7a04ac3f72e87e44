// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QObject>
#include <QtCore/QScopeGuard>
#include <QtCore/QString>
#include <QtTest/QtTest>

#include <Tarnvel/ManagedConfiguration/Configuration>
#include <Tarnvel/ManagedConfiguration/Xpath>

#include "abort.h"

using namespace Tarnvel::Application::ManagedConfiguration;
using Tarnvel::Testing::abortMessage;

namespace {

int timesAsked = 0;
bool isTypeUnknown = false;
bool isIndexNegative = false;

} // namespace

// No path gives a step of a third kind, nor one with a negative index. The dynamic linker prefers
// the program's definitions to the library's, so these make such steps.
XpathAccess::Type XpathAccess::type() const
{
    ++timesAsked;
    return isTypeUnknown ? static_cast<Type>(2) : m_type;
}

int XpathAccess::toIndex() const
{
    return isIndexNegative ? -1 : m_index;
}

class ImpossibleStepsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPathWithoutStepsIsNotAffected();
    void anUnknownStepTypeEndsTheProcess();
    void aNegativeIndexIsOutsideTheList_data();
    void aNegativeIndexIsOutsideTheList();
};

void ImpossibleStepsTest::aPathWithoutStepsIsNotAffected()
{
    QTest::ignoreMessage(QtWarningMsg,
                         "Attempt to use a non-valid xpath to get a value from the configuration "
                         "(xpath=\"/\")");
    QVERIFY(!Configuration().getByXpath("/").isValid());
    QCOMPARE(timesAsked, 0);
}

void ImpossibleStepsTest::anUnknownStepTypeEndsTheProcess()
{
    isTypeUnknown = true;
    const auto reset = qScopeGuard([] { isTypeUnknown = false; });
    Configuration configuration;
    QVERIFY(configuration.set("a", 1));
    const QByteArray text = abortMessage([&configuration] { configuration.getByXpath("a"); });
    QVERIFY2(text.contains("Q_UNREACHABLE was reached"), text.constData());
}

void ImpossibleStepsTest::aNegativeIndexIsOutsideTheList_data()
{
    QTest::addColumn<QVariant>("list");

    QTest::newRow("empty") << QVariant::fromValue(QList<int>());
    QTest::newRow("integers") << QVariant::fromValue(QList<int> {1});
    QTest::newRow("booleans") << QVariant::fromValue(QList<bool> {true});
    QTest::newRow("strings") << QVariant(QStringList {"a"});
    QTest::newRow("list of strings") << QVariant::fromValue(QList<QString> {"a"});
}

void ImpossibleStepsTest::aNegativeIndexIsOutsideTheList()
{
    QFETCH(QVariant, list);
    isIndexNegative = true;
    const auto reset = qScopeGuard([] { isIndexNegative = false; });
    Configuration configuration;
    QVERIFY(configuration.set("a", list));
    QTest::ignoreMessage(QtWarningMsg,
                         "Error when getting a value from configuration by the \"a[0]\" xpath. The "
                         "current sequence to be processed does not contain enough items to access "
                         "item at index -1");
    QVERIFY(!configuration.getByXpath("a[0]").isValid());
}

QTEST_GUILESS_MAIN(ImpossibleStepsTest)

#include "impossible_steps_test.moc"
