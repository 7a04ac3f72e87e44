// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_connection.h"
#include "endpoint.h"
#include "private_bus.h"
#include "raw_service.h"

#include <QtCore/QProcess>
#include <QtTest/QTest>

#include <unistd.h>

#include <csignal>

using namespace Tarnvel;
using namespace Tarnvel::Testing;

namespace {

constexpr int timeoutMs = 300000;

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
    void onlyALostConnectionIsReported();
    void aNameThatIsTakenIsAFailure();
    void aBusThatHangsIsAFailure();
    void anAnnouncementWithoutAConnectionDoesNothing();

private:
    bool call();

    QScopedPointer<PrivateBus> m_bus;
    QScopedPointer<RawService> m_service;
    QScopedPointer<QProcess> m_process;
    QList<MethodCall> m_calls;
    int m_losses = 0;
};

void RawServiceTest::initTestCase()
{
    // What GLib only complains about otherwise.
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING));
}

void RawServiceTest::init()
{
    m_losses = 0;
    m_process.reset(new QProcess);
    m_bus.reset(new PrivateBus);
    QCOMPARE(m_bus->start(), QString());
    m_service.reset(new RawService([this](const MethodCall &call) { m_calls.append(call); },
                                   [this] { ++m_losses; }));
    QCOMPARE(m_service->open(m_bus->address()), QString());
    QVERIFY(m_service->isOpen());
}

void RawServiceTest::cleanup()
{
    m_calls.clear();
    m_service.reset();
    m_process->kill();
    m_process->waitForFinished(timeoutMs);
}

// Lets a process call, and waits until the call has arrived.
bool RawServiceTest::call()
{
    const int count = m_calls.size();
    m_process->start(
        "gdbus",
        {"call", "--address", m_bus->address(), "--dest", DBus::serviceName, "--object-path",
         "/acme_2eviewer", "--method",
         QStringLiteral("%1.%2").arg(DBus::applicationInterface, DBus::getConfigurationMethod)});
    return QTest::qWaitFor([&] { return m_calls.size() > count; }, timeoutMs);
}

void RawServiceTest::theCallerIsTheProcessThatCalled()
{
    QVERIFY(call());
    const Caller caller = m_calls.last().caller();
    QCOMPARE(caller.processId, m_process->processId());
    QCOMPARE(caller.userId, std::optional<quint32>(geteuid()));

    m_calls.last().reply(nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(m_process->state(), QProcess::NotRunning, timeoutMs);
    QCOMPARE(m_process->exitCode(), 0);
}

void RawServiceTest::nothingIsKnownOfACallerThatHasLeft()
{
    QVERIFY(call());
    m_process->kill();
    // The bus may notice only after it has been asked.
    QTRY_COMPARE_WITH_TIMEOUT(m_calls.last().caller().processId, 0, timeoutMs);
    QVERIFY(!m_calls.last().caller().userId);

    m_bus->stop();
    QCOMPARE(m_calls.last().caller().processId, 0);
}

void RawServiceTest::onlyALostConnectionIsReported()
{
    for (const int losses : {1, 2}) {
        m_bus->stop();
        QTRY_COMPARE_WITH_TIMEOUT(m_losses, losses, timeoutMs);
        QVERIFY(!m_service->isOpen());
        QCOMPARE(m_bus->start(), QString());
        QCOMPARE(m_service->open(m_bus->address()), QString());
        QVERIFY(call());
        QCOMPARE(m_losses, losses);
        m_process->kill();
        QVERIFY(m_process->waitForFinished(timeoutMs));
    }
    // Closed on purpose.
    m_service->close();
    QCOMPARE(m_service->open(m_bus->address()), QString());
    QVERIFY(call());
    QCOMPARE(m_losses, 2);
}

void RawServiceTest::aNameThatIsTakenIsAFailure()
{
    RawService second([](const MethodCall &) {});
    QCOMPARE(second.open(m_bus->address()),
             QString("org.brenvik.ManagedConfiguration is owned by another connection"));
    QVERIFY(!second.isOpen());
    m_service->close();
    QCOMPARE(second.open(m_bus->address()), QString());
}

void RawServiceTest::aBusThatHangsIsAFailure()
{
    const auto daemon = static_cast<pid_t>(m_bus->processId());
    QCOMPARE(kill(daemon, SIGSTOP), 0);
    g_autoptr(GError) error = nullptr;
    const GDBusConnection *const connection = openConnection(m_bus->address(), &error, 100);
    QCOMPARE(kill(daemon, SIGCONT), 0);
    QVERIFY(!connection);
    QVERIFY(g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED));
}

void RawServiceTest::anAnnouncementWithoutAConnectionDoesNothing()
{
    const auto announce = [this] {
        GVariant *const arguments = g_variant_new("(s)", "an argument");
        const std::shared_ptr<GVariant> owner(g_variant_ref(arguments), g_variant_unref);
        m_service->announceChange("/acme_2eviewer", arguments);
        return !g_variant_is_floating(arguments);
    };
    m_bus->stop();
    QVERIFY(m_service->isOpen());
    QVERIFY(announce());
    QTRY_VERIFY_WITH_TIMEOUT(!m_service->isOpen(), timeoutMs);
    QVERIFY(announce());
}

QTEST_GUILESS_MAIN(RawServiceTest)

#include "raw_service_test.moc"
