// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "program.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

using namespace Tarnvel::Testing;

namespace {

const char schema[] = R"({"type": "object", "additionalProperties": false,
  "x-organization": "acme.labs", "x-application": "viewer", "properties": {
    "zoom": {"type": "integer", "default": 100, "minimum": 25, "maximum": 400},
    "theme": {"type": "string", "enum": ["light", "dark"], "default": "light"},
    "[odd]": {"type": "boolean"},
    "sizes": {"type": "array", "items": {"type": "integer"}, "default": [1]},
    "flags": {"type": "array", "items": {"type": "boolean"}, "minItems": 1, "default": [true]},
    "names": {"type": "array", "items": {"type": "string"}},
    "old": {"type": "object", "x-deprecated": "none", "additionalProperties": false,
      "properties": {"a": {"type": "array", "items": {"type": "string"}}}},
    "network": {"type": "object", "additionalProperties": false, "properties": {
      "proxy": {"type": "string", "x-deprecated": "use\nproxies"},
      "port": {"type": "integer"}}}}})";

const auto correct = QStringLiteral(
    "  what to do: correct the value; until then, the application uses the default\n");
const auto removed = QStringLiteral(
    "  what to do: remove the setting; the application does not know it\n");
const auto agreement = QStringLiteral("schema: all settings agree with it\n");

} // namespace

class ClientSchemaTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void settingsAreChecked_data()
    {
        QTest::addColumn<QString>("configuration");
        QTest::addColumn<QString>("problems");
        QTest::addColumn<int>("status");

        const auto row = [](const char *configuration, const QString &problems, int status) {
            QTest::newRow(configuration) << QString(configuration) << problems << status;
        };
        row("@a{sv} {}", agreement, 0);
        row("{'zoom': <25>, 'theme': <'dark'>, '[odd]': <true>, 'sizes': <[1]>, 'flags': <[true]>, "
            "'names': <@as []>, 'network': <{'port': <-2147483648>}>}",
            agreement, 0);
        row("{'network': <{'proxy': <''>}>, 'old': <{'a': <@as []>}>}", agreement, 0);
        row("{'old': <{'a': <['']>}>}", "schema: old: deprecated: none\n", 0);
        row("{'network': <{'proxy': <'p'>}>}",
            "schema: network/proxy: deprecated: use\\u000aproxies\n", 0);
        row("{'zom': <1>, 'x\\ny': <1>}",
            "schema: x\\u000ay: unknown setting\n" + removed
                + "schema: zom: unknown setting\n  what to do: did you mean \"zoom\"?\n",
            65);
        row("{'zoom': <401>, 'network': <{'proxy': <'p'>, 'port': <'80'>}>}",
            "schema: network/port: expected an integer, found a string\n" + correct
                + "schema: network/proxy: deprecated: use\\u000aproxies\n"
                  "schema: zoom: 401 is above 400\n"
                + correct,
            65);
        row("{'theme': <'blue'>}",
            "schema: theme: \"blue\" is not one of \"light\", \"dark\"\n" + correct, 65);
        // What applications do not see.
        row("{'zoom': <0.5>, '[odd]': <byte 1>, 'network': <{'port': <int64 1>}>, 'x': <0.5>}",
            "schema: \"[odd]\": expected true or false, found D-Bus type y (byte)\n" + correct
                + "schema: network/port: expected a 32-bit integer, found D-Bus type x (int64)\n"
                + correct + "schema: x: unknown setting\n" + removed
                + "schema: zoom: expected a 32-bit integer, found D-Bus type d (double)\n"
                + correct,
            65);
        row("{'sizes': <@ai []>}", agreement, 0);
        row("{'flags': <@ab []>}", "schema: flags: the list has fewer than 1 items\n" + correct,
            65);
        row("{'flags': <@ai []>}",
            "schema: flags: expected a list of booleans, found D-Bus type ai (empty list)\n"
                + correct,
            65);
        row("{'sizes': <@as []>}",
            "schema: sizes: expected a list of integers, found an empty list of strings\n"
                + correct,
            65);
        row("{'network': <{'a': 1}>, 'names': <@a{sv} {}>}",
            "schema: names: expected a list, found an object\n" + correct
                + "schema: network: expected a JSON object, found D-Bus type a{si}\n" + correct,
            65);
    }

    void settingsAreChecked()
    {
        QFETCH(QString, configuration);
        m_service.replyWith(QString("(%1,)").arg(configuration));
        const Outcome outcome = check({"--schema", write(schema)});
        QTEST(outcome.output.section('\n', 5), "problems");
        QTEST(outcome.status, "status");
    }

    void theSchemaHasTheIdentity_data()
    {
        QTest::addColumn<QStringList>("identity");
        QTest::addColumn<QString>("errors");
        QTest::addColumn<int>("status");

        QTest::newRow("none") << QStringList() << "" << 0;
        QTest::newRow("half") << QStringList {"--application=viewer"} << "" << 0;
        QTest::newRow("same") << clientArguments({}) << "" << 0;
        QTest::newRow("other") << QStringList {"--application=editor"}
                               << "managed-configuration: the schema is for acme.labs/viewer, not "
                                  "for acme.labs/editor\n"
                                  "managed-configuration: what to do: see managed-configuration "
                                  "--help\n"
                               << 64;
    }

    void theSchemaHasTheIdentity()
    {
        QFETCH(QStringList, identity);
        m_service.replyWith("(@a{sv} {},)");
        const Outcome outcome = check(identity + QStringList {"--schema", write(schema)});
        QTEST(outcome.errors, "errors");
        QTEST(outcome.status, "status");
        if (outcome.status == 0)
            QCOMPARE(m_service.calls().last().path, BusFixture::path);
    }

    void theSchemaIsReadFirst()
    {
        const QString file = write(QByteArray(schema).replace("\"maximum\"", "\"maximun\""));
        Outcome outcome = check({"--schema", file});
        QVERIFY2(outcome.errors.startsWith("managed-configuration: " + file
                                           + ":3:64: unknown member \"maximun\" of a setting of "),
                 qPrintable(outcome.errors));
        QCOMPARE(outcome.status, 65);
        QVERIFY(QFile::remove(file));
        outcome = check({"--schema", file});
        QCOMPARE(outcome.errors,
                 "managed-configuration: " + file + ": No such file or directory\n");
        QCOMPARE(outcome.status, 66);
        QCOMPARE(outcome.output, QString());
        QVERIFY(m_service.calls().isEmpty());
    }

    void nothingIsCheckedWithoutAReply()
    {
        m_service.stop();
        const Outcome outcome = check({"--schema", write(schema)});
        QVERIFY(outcome.output.endsWith("configuration: not read\n"
                                        "  what to do: fix the problem above first\n"));
        QCOMPARE(outcome.status, 69);
    }

private:
    QString write(const QByteArray &text) const
    {
        const QString name = m_directory.filePath("s.json");
        QFile file(name);
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("%s", qUtf8Printable(file.errorString()));
        return name;
    }

    static Outcome check(const QStringList &arguments)
    {
        return Program("managed-configuration").run(arguments + QStringList {"check"});
    }

    QTemporaryDir m_directory;
};

TARNVEL_BUS_TEST_MAIN(ClientSchemaTest)

#include "client_schema_test.moc"
