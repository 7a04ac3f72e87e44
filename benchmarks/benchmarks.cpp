// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// Measures the times of the library and the alternatives to it with Google Benchmark; see --help.
// The names are "<what>/<client>/<payload>".

#include "clients/client.h"
#include "configuration_manager_p.h"
#include "fixture.h"
#include "payloads.h"
#include "references/by_hand.h"
#include "references/step_by_step_lookup.h"

#include <QtCore/QElapsedTimer>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMetaType>

#include <benchmark/benchmark.h>
#include <string>
#include <sys/resource.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Benchmarks;

namespace {

std::string nameOf(const char *what, const QString &client, const QString &payload)
{
    return QStringLiteral("%1/%2/%3").arg(QLatin1String(what), client, payload).toStdString();
}

QString mixedPayload(const char *kind, const benchmark::State &state)
{
    return QStringLiteral("%1_%2").arg(QLatin1String(kind)).arg(state.range(0));
}

void decode(benchmark::State &state, const QString &payload)
{
    const QVariant received = receive(payload);
    for (auto _ : state)
        benchmark::DoNotOptimize(qdbus_cast<Configuration>(received));
}

void decodeByHand(benchmark::State &state, const QString &payload)
{
    const QVariant received = receive(payload);
    for (auto _ : state)
        benchmark::DoNotOptimize(readByHand(received.value<QDBusArgument>()));
}

template<typename Value>
void encodeValue(benchmark::State &state, const Value &value)
{
    for (auto _ : state) {
        QDBusArgument argument;
        argument << value;
        benchmark::DoNotOptimize(argument);
    }
}

void encode(benchmark::State &state, const QString &payload)
{
    encodeValue(state, qdbus_cast<Configuration>(receive(payload)));
}

void encodeByHand(benchmark::State &state, const QString &payload)
{
    encodeValue(state, readByHand(receive(payload).value<QDBusArgument>()));
}

using MeasurePayload = void (*)(benchmark::State &, const QString &);

void registerWire(const char *what, const char *client, MeasurePayload measure)
{
    for (const char *payload : {"small", "large", "fleet"}) {
        benchmark::RegisterBenchmark(nameOf(what, client, payload).c_str(),
                                     [=](benchmark::State &state) { measure(state, payload); });
    }
    for (const char *kind : {"mixed", "unsorted"}) {
        const auto onCount = [=](benchmark::State &state) {
            measure(state, mixedPayload(kind, state));
            state.SetComplexityN(state.range(0));
        };
        benchmark::RegisterBenchmark(nameOf(what, client, kind).c_str(), onCount)
            ->Arg(10)
            ->Arg(100)
            ->Arg(1000)
            ->Arg(20000)
            ->Arg(100000)
            ->Complexity();
    }
}

using LookUp = QVariant (*)(const Configuration &, const QString &);

void registerLookups(const char *client, LookUp lookUp)
{
    const auto byIndex = [=](benchmark::State &state) {
        const auto configuration = qdbus_cast<Configuration>(receive(mixedPayload("list", state)));
        for (auto _ : state)
            benchmark::DoNotOptimize(lookUp(configuration, QStringLiteral("list[7]")));
        state.SetComplexityN(state.range(0));
    };
    benchmark::RegisterBenchmark(nameOf("lookup", client, "by list length").c_str(), byIndex)
        ->Arg(10)
        ->Arg(1000)
        ->Arg(100000)
        ->Complexity();
    const auto byDepth = [=](benchmark::State &state) {
        const auto configuration = qdbus_cast<Configuration>(receive(QStringLiteral("large")));
        const QString path = QStringLiteral("general/")
                                 .repeated(static_cast<int>(state.range(0)) - 1)
            + QLatin1String("maximum");
        for (auto _ : state)
            benchmark::DoNotOptimize(lookUp(configuration, path));
        state.SetComplexityN(state.range(0));
    };
    benchmark::RegisterBenchmark(nameOf("lookup", client, "by depth").c_str(), byDepth)
        ->DenseRange(1, 6)
        ->Complexity();
}

using MakeClient = Read (*)(const QString &);

void registerRoundTrips(const QString &client, MakeClient makeClient)
{
    for (const char *payload : {"small", "large", "fleet", "mixed_20000"}) {
        const auto measure = [=](benchmark::State &state) {
            const Read read = makeClient(payload);
            const int entries = countEntries(payload);
            for (auto _ : state) {
                if (read() != entries)
                    state.SkipWithError("not all entries were read");
            }
        };
        // The D-Bus libraries have threads of their own.
        benchmark::RegisterBenchmark(nameOf("round trip", client, payload).c_str(), measure)
            ->MeasureProcessCPUTime()
            ->UseRealTime();
    }
}

double childProcessSeconds()
{
    constexpr double microsecond = 1e-6;
    rusage usage {};
    getrusage(RUSAGE_CHILDREN, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * microsecond;
}

void registerFirst(const QString &client, const QString &program)
{
    const auto measure = [=](benchmark::State &state) {
        constexpr double nanosecond = 1e-9;
        const double before = childProcessSeconds();
        for (auto _ : state) {
            QElapsedTimer timer;
            timer.start();
            if (QProcess::execute(program, {}) != 0)
                state.SkipWithError("the program failed");
            state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) * nanosecond);
        }
        state.counters["processor_ms"] = benchmark::Counter((childProcessSeconds() - before) * 1e3,
                                                            benchmark::Counter::kAvgIterations);
    };
    constexpr int processes = 20;
    benchmark::RegisterBenchmark(nameOf("first configuration", client, "small").c_str(), measure)
        ->Iterations(processes)
        ->UseManualTime();
}

void registerAll()
{
    registerWire("decode", "library", decode);
    registerWire("decode", "by hand", decodeByHand);
    registerWire("encode", "library", encode);
    registerWire("encode", "by hand", encodeByHand);
    registerLookups("library", [](const Configuration &configuration, const QString &path) {
        return configuration.getByXpath(path);
    });
    registerLookups("step by step", getByXpathStepByStep);
    const QString first = QStringLiteral(FIRST_CONFIGURATION);
    const auto registerClient = [&first](const QString &client, MakeClient makeClient,
                                         const char *program) {
        registerRoundTrips(client, makeClient);
        registerFirst(client, first + QLatin1String(program));
    };
    registerClient("library", makeTarnvelClient, "tarnvel");
    registerClient("Qt D-Bus by hand", makeQtDBusClient, "qtdbus");
    registerClient("GDBus", makeGDBusClient, "gdbus");
#ifdef HAS_SDBUS
    registerClient("sdbus-c++", makeSdbusClient, "sdbus");
#endif
}

} // namespace

int main(int argc, char *argv[])
{
    benchmark::Initialize(&argc, argv);
    BenchmarkFixture fixture(argc, argv);
    qRegisterMetaType<Configuration>();
    qDBusRegisterMetaType<Configuration>();
    registerAll();
    benchmark::RunSpecifiedBenchmarks();
}
