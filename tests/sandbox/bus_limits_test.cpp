// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "endpoint.h"
#include "private_bus.h"
#include "raw_service.h"
#include "scenario/scenario.h"
#include "scenario/variant.h"

#include <QtTest/QTest>

#include <gio/gio.h>
#include <memory>
#include <optional>

using namespace Tarnvel;
using namespace Tarnvel::Sandbox;
using Tarnvel::Testing::MethodCall;
using Tarnvel::Testing::PrivateBus;
using Tarnvel::Testing::RawService;

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

// A scenario of one application with a value of \a type.
QByteArray scenarioOf(const QByteArray &type, const QByteArray &value)
{
    return R"({"applications": [{"organization": "acme", "application": "viewer", "configuration":)"
           R"( {"a": {"$type": ")"
        + type + R"(", "value": )" + value + "}}}]}";
}

} // namespace

// Holds the rules of the scenario file against a real bus.
class BusLimitsTest : public QObject
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

void BusLimitsTest::init()
{
    m_bus = std::make_unique<PrivateBus>();
    QCOMPARE(m_bus->start(), QString());
    m_service = std::make_unique<RawService>([this](const MethodCall &call) {
        GVariant *const configuration = m_configuration.get();
        call.reply(g_variant_new_tuple(&configuration, 1));
    });
    QCOMPARE(m_service->open(m_bus->address()), QString());
    const auto flags = static_cast<GDBusConnectionFlags>(
        G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
        | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    m_client = g_dbus_connection_new_for_address_sync(m_bus->address().toUtf8().constData(), flags,
                                                      nullptr, nullptr, nullptr);
    QVERIFY(m_client);
}

void BusLimitsTest::cleanup()
{
    g_dbus_connection_close_sync(m_client, nullptr, nullptr);
    g_clear_object(&m_client);
    m_service.reset();
    m_bus.reset();
    m_configuration.reset();
    m_outcome.reset();
}

// Waits for the outcome of a GetConfiguration that is answered with \a configuration.
void BusLimitsTest::ask(const Variant &configuration)
{
    m_configuration = configuration;
    m_outcome = std::make_shared<Outcome>();
    g_dbus_connection_call(m_client, DBus::serviceName, path, DBus::applicationInterface,
                           DBus::getConfigurationMethod, nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE,
                           G_MAXINT, nullptr, takeAnswer, new std::shared_ptr<Outcome>(m_outcome));
    QTRY_VERIFY_WITH_TIMEOUT(m_outcome->isThere, 60000);
}

void BusLimitsTest::whatTheFileMayHoldPassesTheBus_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("value");

    const auto repeated = [](const char *text, int count) {
        return QByteArray(text).repeated(count);
    };
    const QByteArray variant = R"({"$type": "v", "value": )";
    QTest::newRow("empty signature") << QByteArray("g") << QByteArray(R"("")");
    QTest::newRow("longest signature") << QByteArray("g") << '"' + repeated("i", 255) + '"';
    QTest::newRow("signature with the most arrays")
        << QByteArray("g") << '"' + repeated("a", 32) + "i\"";
    QTest::newRow("signature with the most structures")
        << QByteArray("g") << '"' + repeated("(", 32) + 'i' + repeated(")", 32) + '"';
    QTest::newRow("longest type") << '(' + repeated("y", 253) + ')'
                                  << '[' + repeated("1,", 252) + "1]";
    QTest::newRow("most arrays") << repeated("a", 32) + 'i'
                                 << repeated("[", 32) + '1' + repeated("]", 32);
    QTest::newRow("most structures") << repeated("(", 32) + 'i' + repeated(")", 32)
                                     << repeated("[", 32) + '1' + repeated("]", 32);
    QTest::newRow("most variants")
        << QByteArray("v") << variant.repeated(60) + '1' + repeated("}", 60);
    QTest::newRow("dictionaries in variants")
        << QByteArray("a{iv}")
        << repeated(R"([[1, {"$type": "a{iv}", "value": )", 19) + R"([[1, "x"]])"
            + repeated("}]]", 19);
    QTest::newRow("file descriptors in a signature") << QByteArray("g") << QByteArray("\"h\"");
    QTest::newRow("object paths as keys")
        << QByteArray("a{oa{gb}}") << QByteArray(R"({"/": {"": true}, "/a_B9": {"ii": false}})");
    QTest::newRow("characters beyond the 16 bits, and none")
        << QByteArray("s") << QByteArray(R"("\udbff\udfff\ufffe\uffff")");
}

void BusLimitsTest::whatTheFileMayHoldPassesTheBus()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, value);

    Scenario scenario;
    QString mistake;
    QVERIFY2(parseScenario("w.json", scenarioOf(type, value), &scenario, &mistake),
             qPrintable(mistake));
    QCOMPARE(scenario.size(), 1);
    ask(scenario.first().configuration);
    QCOMPARE(m_outcome->error, QString());
    QVERIFY(m_outcome->answer);
    const Variant answer = adopt(g_variant_get_child_value(m_outcome->answer.get(), 0));
    QVERIFY(areEqual(answer, scenario.first().configuration));
}

void BusLimitsTest::whatTheFileMayNotHoldDoesNotPassTheBus_data()
{
    QTest::addColumn<Variant>("configuration");

    QTest::newRow("too many variants") << configurationWith(variants(62));
    QTest::newRow("22 configurations") << configurations(22, false);
    QTest::newRow("too many arrays")
        << configurationWith(parsed(QStringLiteral("@%1i []").arg(QString(33, 'a'))));
    QTest::newRow("too many structures")
        << configurationWith(parsed(QString(33, '(') + '1' + QStringLiteral(",)").repeated(33)));
}

void BusLimitsTest::whatTheFileMayNotHoldDoesNotPassTheBus()
{
    QFETCH(Variant, configuration);

    QVERIFY(configuration);
    ask(configuration);
    QCOMPARE(m_outcome->error, QString("org.freedesktop.DBus.Error.NoReply"));
}

void BusLimitsTest::theLargestConfigurationPassesTheBus()
{
    ask(configurationOfText(largestSize()));
    QCOMPARE(m_outcome->error, QString());
    QVERIFY(m_outcome->answer);
}

void BusLimitsTest::aConfigurationThatIsTooLargeDoesNotPassTheBus()
{
    // The names on this bus are shorter than those that have to be reckoned with.
    constexpr int difference = 16;
    ask(configurationOfText(largestSize() + difference));
    QCOMPARE(m_outcome->error, QString("org.freedesktop.DBus.Error.NoReply"));
}

QTEST_GUILESS_MAIN(BusLimitsTest)

#include "bus_limits_test.moc"
