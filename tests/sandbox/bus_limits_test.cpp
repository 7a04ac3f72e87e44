// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_connection.h"
#include "bus_limits.h"
#include "endpoint.h"
#include "private_bus.h"
#include "raw_service.h"
#include "scenario/scenario_reader.h"

#include <QtTest/QTest>

using namespace Tarnvel;
using namespace Tarnvel::Sandbox;
using namespace Tarnvel::Testing;

namespace {

constexpr int timeoutMs = 300000;

// The longest text in the largest configuration; the rest of the message is the frame of a reply.
constexpr int longestText = DBus::maximumMessageSize - 89;

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

// A scenario accepts exactly the values that a real bus carries.
class BusLimitsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void whatPassesTheBusIsAccepted_data();
    void whatPassesTheBusIsAccepted();

private:
    PrivateBus m_bus;
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
    closeConnection(m_client);
    g_clear_object(&m_client);
}

void BusLimitsTest::whatPassesTheBusIsAccepted_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("passes");

    const auto row = [](const char *name, const QByteArray &text, bool passes = true) {
        QTest::newRow(name) << text << passes;
    };
    row("empty signature", "signature ''");
    row("longest signature", "signature '" + repeated("i", 255) + "'");
    row("signature with the most arrays", "signature '" + repeated("a", 32) + "i'");
    row("signature with the most structures", "signature '" + nested(32, "(", "i", ")") + "'");
    row("longest type", "@(" + repeated("y", 253) + ") (" + repeated("1,", 252) + "1)");
    row("most arrays", nested(32, "[", "1", "]"));
    row("too many arrays", '@' + repeated("a", 33) + "i []", false);
    row("most structures", nested(32, "(", "1", ",)"));
    row("too many structures", nested(33, "(", "1", ",)"), false);
    row("most variants", nested(61, "<", "1", ">"));
    row("too many variants", nested(62, "<", "1", ">"), false);
    row("too many configurations", nested(21, "{'a': <", "1", ">}"), false);
    row("dictionaries in variants", nested(20, "{1: <", "'x'", ">}"));
    row("file descriptors in a signature", "signature 'h'");
    row("object paths as keys", "@a{oa{gb}} {'/': {'': true}, '/a_B9': {'ii': false}}");
    row("characters beyond the 16 bits, and none", "'\U0010ffff\ufffe\uffff'");
    row("longest text", '\'' + repeated("x", longestText) + '\'');
    // The names on this bus are shorter than the longest possible one.
    row("too long a text", '\'' + repeated("x", longestText + 16) + '\'', false);
}

void BusLimitsTest::whatPassesTheBusIsAccepted()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, passes);
    Scenario scenario;
    QCOMPARE(parseScenario("s.json", scenarioOf(text), &scenario).isEmpty(), passes);

    const Variant configuration = adopt(g_variant_parse(
        nullptr, QByteArray("{'a': <" + text + ">}").constData(), nullptr, nullptr, nullptr));
    RawService service([&configuration](const MethodCall &call) {
        GVariant *const value = configuration.get();
        call.reply(g_variant_new_tuple(&value, 1));
    });
    QCOMPARE(service.open(m_bus.address()), QString());
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
    QCOMPARE(bool(reply), passes);
    if (!passes) {
        QVERIFY(g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY));
        return;
    }
    g_autoptr(GVariant) received = g_variant_get_child_value(reply, 0);
    QVERIFY(g_variant_equal(received, configuration.get()));
    QVERIFY(g_variant_equal(received, scenario.first().configuration.get()));
}

QTEST_GUILESS_MAIN(BusLimitsTest)

#include "bus_limits_test.moc"
