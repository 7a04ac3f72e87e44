// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "abort.h"
#include "message_log.h"

#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/xpath.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

// No path gives a step of a third kind, nor one with a negative index. The dynamic linker prefers
// the program's definitions to the library's, so these make such steps.
static bool isKindUnknown = false;

XpathAccess::Type XpathAccess::type() const
{
    return isKindUnknown ? static_cast<Type>(2) : m_type;
}

int XpathAccess::toIndex() const
{
    return -1;
}

class ImpossibleStepsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aStepOfAnUnknownKindEndsTheProcess();
    void aNegativeIndexIsOutsideTheList();
};

void ImpossibleStepsTest::aStepOfAnUnknownKindEndsTheProcess()
{
    Configuration configuration;
    QVERIFY(configuration.set("a", 1));
    const QByteArray text = abortMessage([&configuration] {
        isKindUnknown = true;
        configuration.getByXpath("a");
    });
    QVERIFY2(text.contains("Q_UNREACHABLE was reached"), text.constData());
}

void ImpossibleStepsTest::aNegativeIndexIsOutsideTheList()
{
    Configuration configuration;
    QVERIFY(configuration.set("a", QStringList {"x"}));
    MessageLog log;
    QVERIFY(!configuration.getByXpath("a[0]").isValid());
    QCOMPARE(log.take(),
             QStringList("Error when getting a value from configuration by the \"a[0]\" xpath. The "
                         "current sequence to be processed does not contain enough items to access "
                         "item at index -1"));
}

QTEST_GUILESS_MAIN(ImpossibleStepsTest)

#include "impossible_steps_test.moc"
