// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "answers.h"
#include "bus_fixture.h"
#include "description.h"
#include "message_log.h"
#include "scenario/scenario_reader.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QRegularExpression>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>
#include <Tarnvel/ManagedConfiguration/xpath.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

QString contentOf(const QString &page)
{
    QFile file(QStringLiteral(DOCS_DIR "/") + page);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qUtf8Printable(page), qUtf8Printable(file.errorString()));
    return QString::fromUtf8(file.readAll());
}

// The texts in backticks, joined by commas; null for a word such as "none".
QString textOf(const QString &cell)
{
    static const QRegularExpression code("(`+)(.*?)\\1");
    if (cell == "(empty)")
        return "";
    QStringList texts;
    for (auto matches = code.globalMatch(cell); matches.hasNext();)
        texts.append(matches.next().captured(2));
    return texts.isEmpty() ? QString() : texts.join(", ");
}

QStringList cellsOf(const QString &row)
{
    QStringList cells;
    const QStringList columns = row.mid(2, row.size() - 4).split(" | ");
    for (const QString &column : columns)
        cells.append(textOf(column));
    return cells;
}

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
    return Tarnvel::Sandbox::parseScenario("w.json", text.arg(json).toUtf8(), &scenario).isEmpty()
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
    const int type = QMetaType::type(name.toLatin1());
    if (type == QMetaType::UnknownType)
        qFatal("there is no type %s", qUtf8Printable(name));
    return QVariant(type, nullptr);
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
            QString header;
            const QStringList lines = contentOf(page).split('\n');
            for (const QString &line : lines) {
                if (!line.startsWith('|'))
                    header.clear();
                else if (header.isEmpty())
                    header = line;
                else if (!line.startsWith("|--"))
                    QTest::addRow("%s: %s", page, qUtf8Printable(line)) << header << cellsOf(line);
            }
        }
    }

    void eachRowHolds()
    {
        static const QMap<QString, QStringList (TablesTest::*)(const QStringList &)> rows {
            {"| D-Bus type | on the wire | in C++ | in JSON |", &TablesTest::value},
            {"| empty list of type | on the wire | read back |", &TablesTest::emptyList},
            {"| D-Bus type | on the wire | warning |", &TablesTest::unreadValue},
            {"| D-Bus type | on the wire | in C++ |", &TablesTest::unreadDictionary},
            {"| unsupported type | use instead |", &TablesTest::refusedType},
            {"| in JSON | why it is refused |", &TablesTest::refusedJson},
            {"| path | steps |", &TablesTest::steps},
            {"| path | warning |", &TablesTest::invalidPath},
            {"| path | value |", &TablesTest::valueByPath},
            {"| path | last warning |", &TablesTest::noValueByPath},
            {"| key | why no path reaches it |", &TablesTest::unreachableKey},
            {"| organization name | application name | object path |", &TablesTest::identity},
            {"| organization name | application name | invalid object path |",
             &TablesTest::invalidIdentity},
        };
        QFETCH(const QString, header);
        QFETCH(const QStringList, cells);

        QVERIFY2(rows.contains(header), qPrintable("nothing checks the table " + header));
        MessageLog log;
        QStringList found = (this->*rows.value(header))(cells);
        const QString userType = QVariant::typeToName(QVariant::UserType);
        const QStringList warnings = log.take();
        if (header.contains("warning"))
            found.append(
                warnings.value(warnings.count() - 1).replace(userType, QStringLiteral("…")));
        QCOMPARE(found, cells.mid(0, found.count()));
    }

private:
    // Each of these functions returns the first cells of a row as the library makes them.

    QStringList value(const QStringList &cells)
    {
        const QString &wire = cells.at(1);
        const QVariant value = read(wire);
        const QString json = QStringLiteral("{\"key\": %1}").arg(cells.at(3));
        const bool isSame = wireFromJson(json) == QStringLiteral("{'key': <%1>}").arg(wire);
        return {typeOf(wire), sent(value), describe(value), isSame ? cells.at(3) : "other JSON"};
    }

    QStringList emptyList(const QStringList &cells)
    {
        const QString wire = sent(valueOfType(cells.at(0)));
        return {cells.at(0), wire, textOf(read(wire))};
    }

    QStringList unreadValue(const QStringList &cells)
    {
        const bool isRead = read(cells.at(1)).isValid();
        return {typeOf(cells.at(1)), isRead ? "a value that is read" : cells.at(1)};
    }

    QStringList unreadDictionary(const QStringList &cells)
    {
        return {typeOf(cells.at(1)), cells.at(1), describe(read(cells.at(1)))};
    }

    QStringList refusedType(const QStringList &cells)
    {
        const bool isStored = Configuration().set("key", valueOfType(cells.at(0)));
        return {isStored ? "a type that is stored" : cells.at(0)};
    }

    QStringList refusedJson(const QStringList &cells)
    {
        const QString json = QStringLiteral("{\"key\": %1}").arg(cells.at(0));
        if (QJsonDocument::fromJson(json.toUtf8()).isNull())
            return {"no JSON"};
        return {wireFromJson(json).isNull() ? cells.at(0) : "JSON that is accepted"};
    }

    QStringList steps(const QStringList &cells)
    {
        const Xpath xpath(cells.at(0));
        QStringList steps;
        for (const XpathAccess &access : xpath.accesses())
            steps.append(access.type() == XpathAccess::Key
                             ? "key " + access.toKey()
                             : "index " + QString::number(access.toIndex()));
        return {cells.at(0), steps.join(", ")};
    }

    QStringList invalidPath(const QStringList &cells)
    {
        return {Xpath(cells.at(0)).isValid() ? "a valid path" : cells.at(0)};
    }

    QStringList valueByPath(const QStringList &cells)
    {
        const QString json = contentOf("paths.md").section("```json\n", 1).section("```", 0, 0);
        Configuration example = Configuration::fromVariant(read(wireFromJson(json)));
        return {cells.at(0), textOf(example.getByXpath(cells.at(0)))};
    }

    QStringList noValueByPath(const QStringList &cells)
    {
        return {valueByPath(cells).at(1).isNull() ? cells.at(0) : "a path to a value"};
    }

    QStringList unreachableKey(const QStringList &cells)
    {
        Configuration configuration;
        configuration.set(cells.at(0), 7);
        return {configuration.getByXpath(cells.at(0)).isValid() ? "a reachable key" : cells.at(0)};
    }

    QStringList identity(const QStringList &cells)
    {
        const Error error = errorAs(cells.at(0), cells.at(1));
        const QString path = error ? error.message() : m_service.calls().last().path;
        return {cells.at(0), cells.at(1), path};
    }

    QStringList invalidIdentity(const QStringList &cells)
    {
        const QString message = errorAs(cells.at(0), cells.at(1)).message();
        return {cells.at(0), cells.at(1), message.section("Invalid object path: ", 1)};
    }

    // The value that the library reads if the service keeps this one.
    QVariant read(const QString &wire)
    {
        m_service.replyWith(QStringLiteral("({'key': <%1>, 'other': <1>},)").arg(wire));
        Answers answers;
        ConfigurationManager::instance()->getConfiguration(answers.forReading());
        if (!answers.waitFor(1) || answers.at(0).configuration.get("other") != 1)
            qFatal("%s was not read", qUtf8Printable(wire));
        return answers.at(0).configuration.get("key");
    }

    // The value that the service receives if the library sends this one.
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
