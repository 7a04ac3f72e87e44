// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "endpoint.h"
#include "private_bus.h"
#include "raw_service.h"
#include "scenario/scenario_reader.h"
#include "scenario/variant.h"

#include <QtTest/QTest>

#include <gio/gio.h>
#include <memory>
#include <optional>

using namespace Tarnvel;
using namespace Tarnvel::Sandbox;

Q_DECLARE_METATYPE(Tarnvel::Sandbox::Variant)

namespace {

const char path[] = "/acme_2eviewer";

// What became of a call: the error's name, or empty.
struct Outcome
{
    bool isThere = false;
    QString error;
    Variant answer;
};

void takeAnswer(GObject *connection, GAsyncResult *result, gpointer data)
{
    const std::unique_ptr<std::shared_ptr<Outcome>> owner(
        static_cast<std::shared_ptr<Outcome> *>(data));
    Outcome *const outcome = owner->get();
    g_autoptr(GError) error = nullptr;
    GVariant *const answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result,
                                                           &error);
    if (answer)
        outcome->answer = adopt(answer);
    else if (g_autofree gchar *name = g_dbus_error_get_remote_error(error))
        outcome->error = QString::fromUtf8(name);
    else
        outcome->error = QString::fromUtf8(error->message);
    outcome->isThere = true;
}

// The a{sv} that holds \a value under "a".
Variant configurationWith(const Variant &value)
{
    return makeConfiguration({{"a", value}});
}

Variant configurationOfText(int size)
{
    return configurationWith(adopt(g_variant_new_string(QByteArray(size, 'x').constData())));
}

// The size of the largest text in a configuration that is not too large.
int largestSize()
{
    constexpr int limit = 32 * 1024 * 1024;
    int fitting = limit - 1024;
    int tooLarge = limit;
    while (tooLarge - fitting > 1) {
        const int middle = (fitting + tooLarge) / 2;
        (isTooLarge(configurationOfText(middle)) ? tooLarge : fitting) = middle;
    }
    return fitting;
}

// A value of a type that GLib's text format knows.
Variant parsed(const QString &text)
{
    GVariant *const value = g_variant_parse(nullptr, text.toUtf8().constData(), nullptr, nullptr,
                                            nullptr);
    return value ? adopt(value) : Variant();
}

// As many variants inside one another, and an integer.
Variant variants(int count)
{
    Variant value = adopt(g_variant_new_int32(1));
    for (int index = 0; index < count; ++index)
        value = adopt(g_variant_new_variant(value.get()));
    return value;
}

// As many configurations inside one another, the last with an entry or empty.
Variant configurations(int levels, bool isLastEmpty)
{
    Variant configuration = isLastEmpty ? makeConfiguration({})
                                        : configurationWith(adopt(g_variant_new_int32(1)));
    for (int level = 1; level < levels; ++level)
        configuration = configurationWith(configuration);
    return configuration;
}

// A scenario of one application with the value that \a text describes.
QByteArray scenarioOf(const QByteArray &text)
{
    return R"({"applications": [{"organization": "acme", "application": "viewer", "configuration":)"
           R"( {"a": {"$gvariant": ")"
        + text + R"("}}}]})";
}

} // namespace

// Holds the rules of the scenario file against a real bus.
class ScenarioOnTheBusTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void whatTheFileMayHoldPassesTheBus_data();
    void whatTheFileMayHoldPassesTheBus();
    void whatTheFileMayNotHoldDoesNotPassTheBus_data();
    void whatTheFileMayNotHoldDoesNotPassTheBus();
    void theLargestConfigurationPassesTheBus();
    void aConfigurationThatIsTooLargeDoesNotPassTheBus();

private:
    void ask(const Variant &configuration);

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<RawService> m_service;
    GDBusConnection *m_client = nullptr;
    Variant m_configuration;
    std::shared_ptr<Outcome> m_outcome;
};

void ScenarioOnTheBusTest::init()
{
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY2(m_bus->start(), qPrintable(m_bus->errorString()));
    m_service = std::make_unique<RawService>([this](const MethodCall &call) {
        GVariant *const configuration = m_configuration.get();
        call.reply(g_variant_new_tuple(&configuration, 1));
    });
    QVERIFY2(m_service->open(m_bus->address()), qPrintable(m_service->errorString()));
    const auto flags = static_cast<GDBusConnectionFlags>(
        G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
        | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    m_client = g_dbus_connection_new_for_address_sync(m_bus->address().toUtf8().constData(), flags,
                                                      nullptr, nullptr, nullptr);
    QVERIFY(m_client);
}

void ScenarioOnTheBusTest::cleanup()
{
    g_dbus_connection_close_sync(m_client, nullptr, nullptr);
    g_clear_object(&m_client);
    m_service.reset();
    m_bus.reset();
    m_configuration.reset();
    m_outcome.reset();
}

// Waits for the outcome of a GetConfiguration that is answered with \a configuration.
void ScenarioOnTheBusTest::ask(const Variant &configuration)
{
    m_configuration = configuration;
    m_outcome = std::make_shared<Outcome>();
    g_dbus_connection_call(m_client, DBus::serviceName, path, DBus::applicationInterface,
                           DBus::getConfigurationMethod, nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE,
                           G_MAXINT, nullptr, takeAnswer, new std::shared_ptr<Outcome>(m_outcome));
    QTRY_VERIFY_WITH_TIMEOUT(m_outcome->isThere, 60000);
}

void ScenarioOnTheBusTest::whatTheFileMayHoldPassesTheBus_data()
{
    QTest::addColumn<QByteArray>("text");

    const auto nested = [](int count, const char *begin, const char *middle, const char *end) {
        return QByteArray(begin).repeated(count) + middle + QByteArray(end).repeated(count);
    };
    const auto signature = [](const QByteArray &types) { return "signature '" + types + "'"; };
    QTest::newRow("empty signature") << signature("");
    QTest::newRow("longest signature") << signature(QByteArray(255, 'i'));
    QTest::newRow("signature with the most arrays") << signature(nested(32, "a", "i", ""));
    QTest::newRow("signature with the most structures") << signature(nested(32, "(", "i", ")"));
    QTest::newRow("longest type") << "@(" + QByteArray(253, 'y') + ") ("
            + nested(252, "1,", "1", "") + ')';
    QTest::newRow("most arrays") << nested(32, "[", "1", "]");
    QTest::newRow("most structures") << nested(32, "(", "1", ",)");
    QTest::newRow("most variants") << nested(61, "<", "1", ">");
    QTest::newRow("dictionaries in variants") << nested(20, "{1: <", "'x'", ">}");
    QTest::newRow("file descriptors in a signature") << signature("h");
    QTest::newRow("object paths as keys")
        << QByteArray("@a{oa{gb}} {'/': {'': true}, '/a_B9': {'ii': false}}");
    QTest::newRow("characters beyond the 16 bits, and none")
        << QByteArray(R"('\udbff\udfff\ufffe\uffff')");
}

void ScenarioOnTheBusTest::whatTheFileMayHoldPassesTheBus()
{
    QFETCH(QByteArray, text);

    Scenario scenario;
    for (const Tarnvel::Tools::Failure &failure :
         parseScenario("w.json", scenarioOf(text), &scenario))
        QFAIL(qPrintable(failure.text()));
    QCOMPARE(scenario.size(), 1);
    ask(scenario.first().configuration);
    QCOMPARE(m_outcome->error, QString());
    QVERIFY(m_outcome->answer);
    const Variant answer = adopt(g_variant_get_child_value(m_outcome->answer.get(), 0));
    QVERIFY(areEqual(answer, scenario.first().configuration));
}

void ScenarioOnTheBusTest::whatTheFileMayNotHoldDoesNotPassTheBus_data()
{
    QTest::addColumn<Variant>("configuration");

    QTest::newRow("too many variants") << configurationWith(variants(62));
    QTest::newRow("22 configurations") << configurations(22, false);
    QTest::newRow("too many arrays")
        << configurationWith(parsed(QStringLiteral("@%1i []").arg(QString(33, 'a'))));
    QTest::newRow("too many structures")
        << configurationWith(parsed(QString(33, '(') + '1' + QStringLiteral(",)").repeated(33)));
}

void ScenarioOnTheBusTest::whatTheFileMayNotHoldDoesNotPassTheBus()
{
    QFETCH(Variant, configuration);

    QVERIFY(configuration);
    ask(configuration);
    QCOMPARE(m_outcome->error, QString("org.freedesktop.DBus.Error.NoReply"));
}

void ScenarioOnTheBusTest::theLargestConfigurationPassesTheBus()
{
    ask(configurationOfText(largestSize()));
    QCOMPARE(m_outcome->error, QString());
    QVERIFY(m_outcome->answer);
}

void ScenarioOnTheBusTest::aConfigurationThatIsTooLargeDoesNotPassTheBus()
{
    // The names on this bus are shorter than those that have to be reckoned with.
    constexpr int difference = 16;
    ask(configurationOfText(largestSize() + difference));
    QCOMPARE(m_outcome->error, QString("org.freedesktop.DBus.Error.NoReply"));
}

QTEST_GUILESS_MAIN(ScenarioOnTheBusTest)

#include "simulated_service_test.moc"
