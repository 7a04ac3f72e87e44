// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "message_log.h"

#include <QtDBus/QDBusError>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/error.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

constexpr int threads = 8;
constexpr int rounds = 200;

/*! Runs \a work in all threads at once, each with its number; true if it returned true in all. */
bool inAllThreads(const std::function<bool(int)> &work)
{
    std::atomic<bool> isStarted {false};
    std::atomic<int> successes {0};
    std::vector<std::thread> running;
    running.reserve(threads);
    for (int number = 0; number < threads; ++number)
        running.emplace_back([&, number] {
            while (!isStarted)
                std::this_thread::yield();
            if (work(number))
                ++successes;
        });
    isStarted = true;
    for (std::thread &thread : running)
        thread.join();
    return successes == threads;
}

Configuration sample()
{
    Configuration inner;
    inner.set("list", QVariant::fromValue(QList<int> {1, 2, 3}));
    inner.set("names", QStringList {"a", "b"});
    Configuration configuration;
    configuration.set("inner", QVariant::fromValue(inner));
    configuration.set("number", 1);
    return configuration;
}

bool use(Configuration &configuration, int number)
{
    Configuration inner = Configuration::fromVariant(configuration.get("inner"));
    inner.set("own", number);
    configuration.set("number", number);
    configuration.set("inner", QVariant::fromValue(inner));
    const Configuration copy(configuration);
    const bool isRefused = !configuration.set("refused", 1.5);
    return isRefused && copy == configuration && copy.getByXpath("inner/own").toInt() == number
        && copy.getByXpath("inner/list[2]").toInt() == 3
        && copy.getByXpath("inner/names[1]").toString() == QLatin1String("b")
        && copy.get("number").toInt() == number;
}

} // namespace

class ConfigurationThreadsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // First, so that all threads meet the one-time tables before they are built.
    void theFirstUseMayBeInSeveralThreadsAtOnce();
    void copiesOfOneConfigurationMayBeUsedInDifferentThreads();
    void oneConfigurationMayBeReadInSeveralThreads();
};

void ConfigurationThreadsTest::theFirstUseMayBeInSeveralThreadsAtOnce()
{
    QVERIFY(inAllThreads([](int number) {
        Configuration configuration = sample();
        const QDBusError noReply(QDBusError::NoReply, QStringLiteral("late"));
        return use(configuration, number) && errorFromDBus(noReply).code() == Error::Internal;
    }));
}

void ConfigurationThreadsTest::copiesOfOneConfigurationMayBeUsedInDifferentThreads()
{
    const Configuration original = sample();
    std::vector<Configuration> copies(threads, original);
    QVERIFY(inAllThreads([&copies](int number) {
        for (int round = 0; round < rounds; ++round) {
            if (!use(copies[number], number + round))
                return false;
        }
        return true;
    }));
    QCOMPARE(original.get("number"), QVariant(1));
}

void ConfigurationThreadsTest::oneConfigurationMayBeReadInSeveralThreads()
{
    const Configuration original = sample();
    MessageLog log;
    QVERIFY(inAllThreads([&original](int) {
        for (int round = 0; round < rounds; ++round) {
            if (original.getByXpath("inner/list[0]").toInt() != 1
                || original.getByXpath("inner/missing").isValid())
                return false;
        }
        return true;
    }));
    QCOMPARE(log.take().count(), threads * rounds);
}

QTEST_GUILESS_MAIN(ConfigurationThreadsTest)

#include "configuration_threads_test.moc"
