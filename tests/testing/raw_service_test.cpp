// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_connection.h"
#include "endpoint.h"
#include "private_bus.h"
#include "raw_service.h"
#include "waiting.h"

#include <QtCore/QProcess>

#include <unistd.h>

#include <csignal>

using namespace Tarnvel;
using namespace Tarnvel::Testing;

class RawServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        // Otherwise, GLib only logs these.
        g_log_set_always_fatal(
            static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING));
        m_losses = 0;
        m_process.reset(new QProcess);
        m_bus.reset(new PrivateBus);
        QCOMPARE(m_bus->start(), QString());
        m_service.reset(new RawService([this](const MethodCall &call) { m_calls.append(call); },
                                       [this] { ++m_losses; }));
        QCOMPARE(m_service->open(m_bus->address()), QString());
        QVERIFY(m_service->isOpen());
    }

    void cleanup()
    {
        m_calls.clear();
        m_service.reset();
        m_process->kill();
        m_process->waitForFinished(waitTimeoutMs);
    }

    void theCallerIsTheProcessThatCalled()
    {
        QVERIFY(call());
        const Caller caller = m_calls.last().caller();
        QCOMPARE(caller.processId, m_process->processId());
        QCOMPARE(caller.userId, std::optional<quint32>(geteuid()));

        m_calls.last().reply(nullptr);
        TRY_COMPARE(m_process->state(), QProcess::NotRunning);
        QCOMPARE(m_process->exitCode(), 0);
    }

    void nothingIsKnownOfACallerThatHasLeft()
    {
        QVERIFY(call());
        m_process->kill();
        // The bus may notice only after it has been asked.
        TRY_COMPARE(m_calls.last().caller().processId, 0);
        QVERIFY(!m_calls.last().caller().userId);

        m_bus->stop();
        QCOMPARE(m_calls.last().caller().processId, 0);
    }

    void onlyALostConnectionIsReported()
    {
        for (const int losses : {1, 2}) {
            m_bus->stop();
            TRY_COMPARE(m_losses, losses);
            QVERIFY(!m_service->isOpen());
            QCOMPARE(m_bus->start(), QString());
            QCOMPARE(m_service->open(m_bus->address()), QString());
            QVERIFY(call());
            QCOMPARE(m_losses, losses);
            m_process->kill();
            QVERIFY(m_process->waitForFinished(waitTimeoutMs));
        }
        // Closed on purpose.
        m_service->close();
        QCOMPARE(m_service->open(m_bus->address()), QString());
        QVERIFY(call());
        QCOMPARE(m_losses, 2);
    }

    void aNameThatIsTakenIsAFailure()
    {
        RawService second([](const MethodCall &) {});
        QCOMPARE(second.open(m_bus->address()),
                 QString("org.brenvik.ManagedConfiguration is owned by another connection"));
        QVERIFY(!second.isOpen());
        m_service->close();
        QCOMPARE(second.open(m_bus->address()), QString());
    }

    void aBusThatHangsIsAFailure()
    {
        const auto daemon = static_cast<pid_t>(m_bus->processId());
        QCOMPARE(kill(daemon, SIGSTOP), 0);
        g_autoptr(GError) error = nullptr;
        const GDBusConnection *const connection = openConnection(m_bus->address(), &error, 100);
        QCOMPARE(kill(daemon, SIGCONT), 0);
        QVERIFY(!connection);
        QVERIFY(g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED));
    }

    void anAnnouncementWithoutAConnectionDoesNothing()
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
        TRY_VERIFY(!m_service->isOpen());
        QVERIFY(announce());
    }

private:
    // Lets a process call, and waits until the call has arrived.
    bool call()
    {
        const int count = m_calls.size();
        m_process->start("gdbus",
                         {"call", "--address", m_bus->address(), "--dest", DBus::serviceName,
                          "--object-path", "/acme_2eviewer", "--method",
                          QStringLiteral("%1.%2").arg(DBus::applicationInterface,
                                                      DBus::getConfigurationMethod)});
        return QTest::qWaitFor([&] { return m_calls.size() > count; }, waitTimeoutMs);
    }

    QScopedPointer<PrivateBus> m_bus;
    QScopedPointer<RawService> m_service;
    QScopedPointer<QProcess> m_process;
    QList<MethodCall> m_calls;
    int m_losses = 0;
};

QTEST_GUILESS_MAIN(RawServiceTest)

#include "raw_service_test.moc"
