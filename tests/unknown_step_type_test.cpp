// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtTest/QtTest>

#include <Tarnvel/ManagedConfiguration/Configuration>
#include <Tarnvel/ManagedConfiguration/Xpath>

#include "abort.h"

using namespace Tarnvel::Application::ManagedConfiguration;
using Tarnvel::Testing::abortMessage;

namespace {

int timesAsked = 0;

} // namespace

// No path gives a step of a third kind. The dynamic linker prefers the program's definition to the
// library's, so this one makes every step such a step.
XpathAccess::Type XpathAccess::type() const
{
    ++timesAsked;
    return static_cast<Type>(2);
}

class UnknownStepTypeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPathWithoutStepsIsNotAffected();
    void anUnknownStepTypeEndsTheProcess();
};

void UnknownStepTypeTest::aPathWithoutStepsIsNotAffected()
{
    QTest::ignoreMessage(QtWarningMsg,
                         "Attempt to use a non-valid xpath to get a value from the configuration "
                         "(xpath=\"/\")");
    QVERIFY(!Configuration().getByXpath("/").isValid());
    QCOMPARE(timesAsked, 0);
}

void UnknownStepTypeTest::anUnknownStepTypeEndsTheProcess()
{
    Configuration configuration;
    QVERIFY(configuration.set("a", 1));
    const QByteArray text = abortMessage([&configuration] { configuration.getByXpath("a"); });
    QVERIFY2(text.contains("Q_UNREACHABLE was reached"), text.constData());
}

QTEST_GUILESS_MAIN(UnknownStepTypeTest)

#include "unknown_step_type_test.moc"
