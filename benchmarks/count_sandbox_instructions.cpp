// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// What the simulated service of the sandbox takes for many settings: callgrind counts the
// instructions, as for count_instructions. On its own, the program prints milliseconds of processor
// time.

#include "bus_connection.h"
#include "endpoint.h"
#include "measure.h"
#include "private_bus.h"
#include "scenario/scenario_reader.h"
#include "service/simulated_service.h"

#include <QtCore/QCoreApplication>

using namespace Tarnvel;
using namespace Tarnvel::Benchmarks;
using namespace Tarnvel::Sandbox;

namespace {

QByteArray applicationText(const QByteArray &name, int count, int firstValue)
{
    QByteArray text = "{\"organization\": \"acme\", \"application\": \"" + name
        + "\", \"configuration\": {\n";
    const QByteArrayList values {QByteArray::number(firstValue), "true", "\"a text\"", "[1, 2, 3]",
                                 "[\"a\", \"b\"]"};
    for (int index = 0; index < count; ++index) {
        const QByteArray key = QByteArray::number(index).rightJustified(6, '0');
        text += (index == 0 ? "\"setting_" : ",\n\"setting_") + key
            + "\": " + values.at(index % values.size());
    }
    return text + "}}";
}

QByteArray scenarioText(const QByteArrayList &applications)
{
    return "{\"applications\": [" + applications.join(",\n") + "]}";
}

Scenario parse(const QByteArray &text, EntryCache *cache)
{
    Scenario scenario;
    Tools::Diagnostics diagnostics(QStringLiteral("scenario.json"), text);
    parseScenario(text, &scenario, &diagnostics, cache);
    if (!diagnostics.isEmpty())
        qFatal("the scenario is wrong");
    return scenario;
}

void measureReading()
{
    QByteArrayList applications;
    for (int index = 0; index < 5000; ++index)
        applications.append(applicationText("viewer" + QByteArray::number(index), 5, 1));
    const QByteArray text = scenarioText(applications);
    measure(QStringLiteral("sandbox.read_5000_applications"), 1, [&text] {
        EntryCache cache;
        parse(text, &cache);
    });
}

// Without a connection: how often the thread that writes to it wakes up depends on chance.
void measureEdit(int count)
{
    Log log;
    SimulatedService service({}, &log, [] {});
    const QByteArray texts[] = {scenarioText({applicationText("viewer", count, 1)}),
                                scenarioText({applicationText("viewer", count, 2)})};
    EntryCache cache;
    int next = 0;
    measure(QStringLiteral("sandbox.edit_%1").arg(count), 2, [&] {
        service.apply(parse(texts[next], &cache));
        next = 1 - next;
    });
}

void setValue(GDBusConnection *connection, int value)
{
    const auto end = [](GObject *source, GAsyncResult *result, gpointer isAnswered) {
        g_autoptr(GError) error = nullptr;
        g_autoptr(GVariant)
            reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
        if (!reply)
            qFatal("%s", error->message);
        *static_cast<bool *>(isAnswered) = true;
    };
    const QByteArray change = QStringLiteral("({'setting_000000': <%1>},)").arg(value).toUtf8();
    bool isAnswered = false;
    g_dbus_connection_call(
        connection, DBus::serviceName,
        qUtf8Printable(DBus::applicationPath(QStringLiteral("acme"), QStringLiteral("viewer"))),
        DBus::applicationInterface, DBus::changeConfigurationMethod,
        g_variant_new_parsed(change.constData()), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, end,
        &isAnswered);
    while (!isAnswered)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    Testing::PrivateBus bus;
    Log log;
    SimulatedService service({}, &log, [] {});
    if (!bus.start().isNull() || service.open(bus.address()))
        qFatal("the bus or the service cannot be started");
    g_autoptr(GDBusConnection) connection = Testing::openConnection(bus.address(), nullptr);
    if (!connection)
        qFatal("the bus cannot be reached");

    measureReading();
    int value = 0;
    for (const int count : {10, 100000}) {
        measureEdit(count);
        EntryCache cache;
        service.apply(parse(scenarioText({applicationText("viewer", count, 1)}), &cache));
        measure(QStringLiteral("sandbox.set_in_%1").arg(count), 100,
                [&] { setValue(connection, ++value); });
    }
}
