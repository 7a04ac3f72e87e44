// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "endpoint.h"
#include "private_bus.h"
#include "raw_service.h"

#include <QtCore/QProcess>
#include <QtTest/QTest>

#include <unistd.h>

#include <csignal>

using namespace Tarnvel;
using Tarnvel::Testing::Caller;
using Tarnvel::Testing::MethodCall;
using Tarnvel::Testing::PrivateBus;
using Tarnvel::Testing::RawService;

namespace {

constexpr int timeoutMs = 20000;

} // namespace

class RawServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void theCallerIsTheProcessThatCalled();
    void nothingIsKnownOfACallerThatHasLeft();
    void nothingIsKnownOfACallerWhenTheBusIsGone();
    void aLostConnectionIsReportedOnce();
    void aConnectionClosedOnPurposeIsNotReported();
    void aServiceThatLostItsBusCanBeOpenedAgain();
    void aBusThatHangsIsGivenUp();
    void anAnnouncementWithoutAConnectionIsHarmless_data();
    void anAnnouncementWithoutAConnectionIsHarmless();

private:
    void call();

    QScopedPointer<PrivateBus> m_bus;
    QScopedPointer<RawService> m_service;
    QScopedPointer<QProcess> m_process;
    QList<MethodCall> m_calls;
    int m_losses = 0;
};

void RawServiceTest::initTestCase()
{
    // What GLib only complains of otherwise.
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING));
}

void RawServiceTest::init()
{
    m_calls.clear();
    m_losses = 0;
    m_process.reset(new QProcess);
    m_bus.reset(new PrivateBus);
    QVERIFY2(m_bus->start(), qPrintable(m_bus->errorString()));
    m_service.reset(new RawService([this](const MethodCall &call) { m_calls.append(call); },
                                   [this] { ++m_losses; }));
    QVERIFY2(m_service->open(m_bus->address()), qPrintable(m_service->errorString()));
    QVERIFY(m_service->isOpen());
}

void RawServiceTest::cleanup()
{
    m_calls.clear();
    m_service.reset();
    m_process->kill();
    m_process->waitForFinished(timeoutMs);
}

// Runs until the call has arrived.
void RawServiceTest::call()
{
    const int count = m_calls.size();
    m_process->start(
        "gdbus",
        {"call", "--address", m_bus->address(), "--dest", DBus::serviceName, "--object-path",
         "/acme_2eviewer", "--method",
         QStringLiteral("%1.%2").arg(DBus::applicationInterface, DBus::getConfigurationMethod)});
    QVERIFY2(m_process->waitForStarted(timeoutMs), qPrintable(m_process->errorString()));
    QTRY_COMPARE_WITH_TIMEOUT(m_calls.size(), count + 1, timeoutMs);
}

void RawServiceTest::theCallerIsTheProcessThatCalled()
{
    call();
    const Caller caller = m_calls.last().caller();
    QCOMPARE(caller.processId, m_process->processId());
    QVERIFY(caller.userId.has_value());
    QCOMPARE(*caller.userId, geteuid());

    m_calls.last().reply(nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(m_process->state(), QProcess::NotRunning, timeoutMs);
    QCOMPARE(m_process->exitCode(), 0);
}

void RawServiceTest::nothingIsKnownOfACallerThatHasLeft()
{
    call();
    m_process->kill();
    QVERIFY(m_process->waitForFinished(timeoutMs));
    // The bus may learn of it later than of the question.
    QTRY_COMPARE(m_calls.last().caller().processId, 0);
    QVERIFY(!m_calls.last().caller().userId.has_value());
}

void RawServiceTest::nothingIsKnownOfACallerWhenTheBusIsGone()
{
    call();
    m_bus->stop();
    QCOMPARE(m_calls.last().caller().processId, 0);
    QVERIFY(!m_calls.last().caller().userId.has_value());
}

void RawServiceTest::aLostConnectionIsReportedOnce()
{
    m_bus->stop();
    QCOMPARE(m_losses, 0);
    QTRY_COMPARE(m_losses, 1);
    QVERIFY(!m_service->isOpen());
    m_service->close();
    m_service.reset();
    QCoreApplication::processEvents();
    QCOMPARE(m_losses, 1);
}

void RawServiceTest::aConnectionClosedOnPurposeIsNotReported()
{
    m_service->close();
    QVERIFY(!m_service->isOpen());
    QVERIFY(m_service->open(m_bus->address()));
    call();
    QCOMPARE(m_losses, 0);
}

void RawServiceTest::aServiceThatLostItsBusCanBeOpenedAgain()
{
    m_bus->stop();
    QTRY_COMPARE(m_losses, 1);
    QVERIFY2(m_bus->start(), qPrintable(m_bus->errorString()));
    QVERIFY2(m_service->open(m_bus->address()), qPrintable(m_service->errorString()));
    call();
    m_bus->stop();
    QTRY_COMPARE(m_losses, 2);
}

void RawServiceTest::aBusThatHangsIsGivenUp()
{
    m_service->close();
    const auto daemon = static_cast<pid_t>(m_bus->processId());
    QCOMPARE(kill(daemon, SIGSTOP), 0);
    const bool isOpened = m_service->open(m_bus->address());
    QCOMPARE(kill(daemon, SIGCONT), 0);
    QVERIFY(!isOpened);
    QVERIFY(!m_service->isOpen());
    QCOMPARE(m_service->errorString(), QString("Operation was cancelled"));
    QVERIFY2(m_service->open(m_bus->address()), qPrintable(m_service->errorString()));
}

void RawServiceTest::anAnnouncementWithoutAConnectionIsHarmless_data()
{
    QTest::addColumn<bool>("isLost");
    QTest::addColumn<bool>("isNoticed");

    QTest::newRow("closed") << false << true;
    QTest::newRow("lost") << true << true;
    QTest::newRow("lost, and not noticed yet") << true << false;
}

void RawServiceTest::anAnnouncementWithoutAConnectionIsHarmless()
{
    QFETCH(bool, isLost);
    QFETCH(bool, isNoticed);
    if (isLost)
        m_bus->stop();
    else
        m_service->close();
    if (isNoticed)
        QTRY_VERIFY(!m_service->isOpen());
    const std::shared_ptr<GVariant> arguments(
        g_variant_ref_sink(g_variant_new("(s)", "an argument")), g_variant_unref);
    m_service->announceChange("/acme_2eviewer");
    m_service->announceChange("/acme_2eviewer", arguments.get());
    m_service->announceChange("/acme_2eviewer", g_variant_new("(s)", "an argument"));
    QCOMPARE(QString(g_variant_get_type_string(arguments.get())), QString("(s)"));
}

QTEST_GUILESS_MAIN(RawServiceTest)

#include "raw_service_test.moc"
