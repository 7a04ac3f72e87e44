// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "answers.h"
#include "bus_fixture.h"
#include "description.h"
#include "document_tables.h"
#include "message_log.h"
#include "qt_version.h"
#include "scenario/scenario_reader.h"

#include <QtCore/QJsonDocument>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>
#include <Tarnvel/ManagedConfiguration/xpath.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

const auto entry = QStringLiteral("{\"key\": %1}");

QString print(GVariant *value)
{
    g_autofree gchar *text = g_variant_print(value, TRUE);
    return QString::fromUtf8(text);
}

QString wireFromJson(const QString &json)
{
    const QString text = R"({"applications": [{"organization": "acme", "application": "viewer",)"
                         R"( "configuration": %1}]})";
    Tarnvel::Sandbox::Scenario scenario;
    return Tarnvel::Sandbox::parseScenario("s.json", text.arg(json).toUtf8(), &scenario).isEmpty()
        ? print(scenario.first().configuration.get())
        : QString();
}

QString typeOf(const QString &wire)
{
    g_autoptr(GVariant) value = parseValue(wire);
    return g_variant_get_type_string(value);
}

QString textOf(const QVariant &value)
{
    return value.isValid() ? describe(value) : QString();
}

QVariant valueOfType(const QString &name)
{
    const int type = typeOfName(name.toLatin1());
    if (type == QMetaType::UnknownType)
        qFatal("there is no type %s", qUtf8Printable(name));
    return QVariant(QtType(type), nullptr);
}

QString steps(const QString &path)
{
    QStringList steps;
    const Xpath xpath(path);
    for (const XpathAccess &access : xpath.accesses())
        steps.append(access.type() == XpathAccess::Key
                         ? "key " + access.toKey()
                         : "index " + QString::number(access.toIndex()));
    return steps.join(", ");
}

} // namespace

class TablesTest : public QObject
{
    Q_OBJECT

public:
    explicit TablesTest(FakeService &service) : m_service(service) { }

private Q_SLOTS:
    void eachRowHolds_data()
    {
        QTest::addColumn<QString>("header");
        QTest::addColumn<QStringList>("cells");

        for (const char *page : {"values.md", "paths.md", "identity.md"}) {
            const QVector<Row> rows = rowsOf(page);
            for (const Row &row : rows)
                QTest::addRow("%s: %s", page, qUtf8Printable(row.line))
                    << row.header << row.cells();
        }
    }

    void eachRowHolds()
    {
        QFETCH(const QString, header);
        QFETCH(const QStringList, cells);

        MessageLog log;
        QStringList found = make(header, cells);
        const QStringList warnings = log.take();
        if (header.contains("warning"))
            found.append(warnings.value(warnings.count() - 1)
                             .replace(sharedTypeName(), QStringLiteral("…")));
        QCOMPARE(found, cells.mid(0, found.count()));
    }

private:
    // The first cells of a row as the library makes them.
    QStringList make(const QString &header, const QStringList &cells)
    {
        const QString &cell = cells.at(0);
        const QString &second = cells.at(1);
        if (header == "| D-Bus type | on the wire | in C++ | in JSON |") {
            const QVariant value = read(second);
            const bool isSame = wireFromJson(entry.arg(cells.at(3)))
                == QString("{'key': <%1>}").arg(second);
            return {typeOf(second), sent(value), describe(value),
                    isSame ? cells.at(3) : "other JSON"};
        }
        if (header == "| empty list of type | on the wire | read back |") {
            const QString empty = sent(valueOfType(cell));
            return {cell, empty, textOf(read(empty))};
        }
        if (header == "| D-Bus type | on the wire | warning |")
            return {typeOf(second), read(second).isValid() ? "a value that is read" : second};
        if (header == "| D-Bus type | on the wire | in C++ |")
            return {typeOf(second), second, describe(read(second))};
        if (header == "| path | steps |")
            return {cell, steps(cell)};
        if (header == "| path | value |")
            return {cell, textOf(valueByPath(cell))};
        if (header == "| organization name | application name | object path |") {
            const Error error = errorAs(cell, second);
            return {cell, second, error ? error.message() : m_service.calls().last().path};
        }
        if (header == "| organization name | application name | invalid object path |") {
            const QString message = errorAs(cell, second).message();
            return {cell, second, message.section("Invalid object path: ", 1)};
        }
        return {isRefused(header, cell) ? cell : "not refused"};
    }

    bool isRefused(const QString &header, const QString &cell)
    {
        if (header == "| unsupported type | use instead |")
            return !Configuration().set("key", valueOfType(cell));
        if (header == "| in JSON | why it is refused |")
            return !QJsonDocument::fromJson(entry.arg(cell).toUtf8()).isNull()
                && wireFromJson(entry.arg(cell)).isNull();
        if (header == "| path | warning |")
            return !Xpath(cell).isValid();
        if (header == "| path | last warning |")
            return !valueByPath(cell).isValid();
        if (header == "| key | why no path reaches it |")
            return !makeConfiguration({{cell, 7}}).getByXpath(cell).isValid();
        qFatal("nothing checks the table %s", qUtf8Printable(header));
    }

    QVariant valueByPath(const QString &path)
    {
        const QString json = contentOf("paths.md").section("```json\n", 1).section("```", 0, 0);
        return Configuration::fromVariant(read(wireFromJson(json))).getByXpath(path);
    }

    // The value that the library reads if the service keeps \a wire.
    QVariant read(const QString &wire)
    {
        m_service.replyWith(QStringLiteral("({'key': <%1>, 'other': <1>},)").arg(wire));
        Answers answers;
        ConfigurationManager::instance()->getConfiguration(answers.forReading());
        if (!answers.waitFor(1) || answers.at(0).configuration.get("other") != 1)
            qFatal("%s was not read", qUtf8Printable(wire));
        return answers.at(0).configuration.get("key");
    }

    // The value that the service receives if the library sends \a value.
    QString sent(const QVariant &value)
    {
        Configuration configuration;
        configuration.set("key", value);
        m_service.replyWith("()");
        Answers answers;
        ConfigurationManager::instance()->changeConfiguration(configuration, answers.forChanging());
        if (!answers.waitFor(1) || answers.at(0).error)
            qFatal("a configuration was not sent");
        return m_service.calls().last().arguments.section("({'key': <", 1).chopped(4);
    }

    // How a request of an application with these names ends.
    Error errorAs(const QString &organization, const QString &application)
    {
        QCoreApplication::setOrganizationName(organization);
        QCoreApplication::setApplicationName(application);
        m_service.replyWith("(@a{sv} {},)");
        ConfigurationManager manager;
        Answers answers;
        manager.getConfiguration(answers.forReading());
        if (!answers.waitFor(1))
            qFatal("no answer");
        return answers.at(0).error;
    }

    FakeService &m_service;
};

int main(int, char *argv[])
{
    // An executable without a name: the application name would otherwise fall back to it.
    int count = 1;
    char noName[] = "";
    char *noNameArguments[] = {noName, nullptr};
    BusFixture fixture(count, noNameArguments);
    TablesTest test(fixture.service);
    return QTest::qExec(&test, QStringList(QString::fromLocal8Bit(argv[0])));
}

#include "documentation_tables_test.moc"
