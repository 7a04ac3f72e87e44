// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_connection.h"
#include "endpoint.h"
#include "private_bus.h"
#include "raw_service.h"
#include "scenario/scenario_reader.h"
#include "scenario/variant.h"

#include <QtTest/QTest>

using namespace Tarnvel;
using namespace Tarnvel::Sandbox;
using namespace Tarnvel::Testing;

Q_DECLARE_METATYPE(Tarnvel::Sandbox::Variant)

namespace {

constexpr int timeoutMs = 300000;

// The longest text in the largest configuration; the rest of the 32 MiB is the frame of a reply.
constexpr int longestText = 32 * 1024 * 1024 - 89;

// What a call has returned: a configuration, or an error.
struct Result
{
    Variant configuration;
    QString error;
};

// The a{sv} that holds \a value under "a".
Variant configurationWith(const Variant &value)
{
    return makeConfiguration({{"a", value}});
}

Variant configurationOfText(int size)
{
    return configurationWith(adopt(g_variant_new_string(QByteArray(size, 'x').constData())));
}

Variant parsed(const QByteArray &text)
{
    return adopt(g_variant_parse(nullptr, text.constData(), nullptr, nullptr, nullptr));
}

QByteArray repeated(const char *text, int count)
{
    return QByteArray(text).repeated(count);
}

QByteArray nested(int count, const char *begin, const char *middle, const char *end)
{
    return repeated(begin, count) + middle + repeated(end, count);
}

// A scenario of one application with the value that \a text describes.
QByteArray scenarioOf(const QByteArray &text)
{
    return R"({"applications": [{"organization": "acme", "application": "viewer", "configuration":)"
           R"( {"a": {"$gvariant": ")"
        + text + R"("}}}]})";
}

} // namespace

// What a scenario may hold passes a real bus, and what it may not hold does not.
class BusLimitsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void whatAScenarioMayHoldPasses_data();
    void whatAScenarioMayHoldPasses();
    void whatAScenarioMayNotHoldDoesNotPass_data();
    void whatAScenarioMayNotHoldDoesNotPass();
    void theLargestConfigurationPasses();

private:
    Result read(const Variant &configuration);

    PrivateBus m_bus;
    std::unique_ptr<RawService> m_service;
    GDBusConnection *m_client = nullptr;
};

void BusLimitsTest::initTestCase()
{
    QCOMPARE(m_bus.start(), QString());
    m_client = openConnection(m_bus.address(), nullptr);
    QVERIFY(m_client);
}

void BusLimitsTest::cleanupTestCase()
{
    m_service.reset();
    closeConnection(m_client);
    g_clear_object(&m_client);
}

// Calls a service that replies with \a configuration.
Result BusLimitsTest::read(const Variant &configuration)
{
    m_service = std::make_unique<RawService>([configuration](const MethodCall &call) {
        GVariant *const value = configuration.get();
        call.reply(g_variant_new_tuple(&value, 1));
    });
    const QString failure = m_service->open(m_bus.address());
    if (!failure.isNull())
        return {{}, failure};

    GAsyncResult *pending = nullptr;
    g_dbus_connection_call(
        m_client, DBus::serviceName, "/acme_2eviewer", DBus::applicationInterface,
        DBus::getConfigurationMethod, nullptr, G_VARIANT_TYPE("(a{sv})"), G_DBUS_CALL_FLAGS_NONE,
        G_MAXINT, nullptr,
        [](GObject *, GAsyncResult *result, gpointer data) {
            *static_cast<GAsyncResult **>(data) = static_cast<GAsyncResult *>(g_object_ref(result));
        },
        &pending);
    if (!QTest::qWaitFor([&pending] { return pending; }, timeoutMs))
        qFatal("the call has not returned");
    const std::shared_ptr<GAsyncResult> result(pending, g_object_unref);
    g_autoptr(GError) error = nullptr;
    g_autoptr(GVariant) reply = g_dbus_connection_call_finish(m_client, pending, &error);
    if (reply)
        return {adopt(g_variant_get_child_value(reply, 0)), {}};
    g_autofree gchar *name = g_dbus_error_get_remote_error(error);
    return {{}, QString::fromUtf8(name ? name : error->message)};
}

void BusLimitsTest::whatAScenarioMayHoldPasses_data()
{
    QTest::addColumn<QByteArray>("text");

    const auto row = [](const char *name, const QByteArray &text) { QTest::newRow(name) << text; };
    row("empty signature", "signature ''");
    row("longest signature", "signature '" + repeated("i", 255) + "'");
    row("signature with the most arrays", "signature '" + repeated("a", 32) + "i'");
    row("signature with the most structures", "signature '" + nested(32, "(", "i", ")") + "'");
    row("longest type", "@(" + repeated("y", 253) + ") (" + repeated("1,", 252) + "1)");
    row("most arrays", nested(32, "[", "1", "]"));
    row("most structures", nested(32, "(", "1", ",)"));
    row("most variants", nested(61, "<", "1", ">"));
    row("dictionaries in variants", nested(20, "{1: <", "'x'", ">}"));
    row("file descriptors in a signature", "signature 'h'");
    row("object paths as keys", "@a{oa{gb}} {'/': {'': true}, '/a_B9': {'ii': false}}");
    row("characters beyond the 16 bits, and none", R"('\udbff\udfff\ufffe\uffff')");
}

void BusLimitsTest::whatAScenarioMayHoldPasses()
{
    QFETCH(QByteArray, text);
    Scenario scenario;
    for (const auto &failure : parseScenario("s.json", scenarioOf(text), &scenario))
        QFAIL(qPrintable(failure.text()));
    QCOMPARE(scenario.size(), 1);
    const Result result = read(scenario.first().configuration);
    QCOMPARE(result.error, QString());
    QVERIFY(areEqual(result.configuration, scenario.first().configuration));
}

void BusLimitsTest::whatAScenarioMayNotHoldDoesNotPass_data()
{
    QTest::addColumn<Variant>("configuration");

    QTest::newRow("too many variants") << configurationWith(parsed(nested(62, "<", "1", ">")));
    QTest::newRow("too many configurations") << parsed(nested(22, "{'a': <", "1", ">}"));
    QTest::newRow("too many arrays") << configurationWith(parsed('@' + repeated("a", 33) + "i []"));
    QTest::newRow("too many structures") << configurationWith(parsed(nested(33, "(", "1", ",)")));
    // The names on this bus are shorter than those that must be expected.
    QTest::newRow("too long a text") << configurationOfText(longestText + 16);
}

void BusLimitsTest::whatAScenarioMayNotHoldDoesNotPass()
{
    QFETCH(Variant, configuration);
    QCOMPARE(read(configuration).error, QString("org.freedesktop.DBus.Error.NoReply"));
}

void BusLimitsTest::theLargestConfigurationPasses()
{
    const Variant largest = configurationOfText(longestText);
    QVERIFY(!isTooLarge(largest));
    QVERIFY(isTooLarge(configurationOfText(longestText + 1)));
    const Result result = read(largest);
    QCOMPARE(result.error, QString());
    QVERIFY(areEqual(result.configuration, largest));
}

QTEST_GUILESS_MAIN(BusLimitsTest)

#include "bus_limits_test.moc"
