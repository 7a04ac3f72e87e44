// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "answers.h"
#include "bus_fixture.h"
#include "description.h"
#include "endpoint.h"
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

const char bothWaysTable[] = "| D-Bus type | on the wire | in C++ | in JSON |";
const char readOtherwiseTable[] = "| stored | on the wire | read back |";
const char notReadTable[] = "| D-Bus type | on the wire | warning |";
const char dictionariesTable[] = "| D-Bus type | on the wire | in C++ |";
const char notStoredTable[] = "| refused | instead |";
const char noJsonTable[] = "| in JSON | why it is refused |";
const char stepsTable[] = "| path | steps |";
const char mistakesTable[] = "| path | warning |";
const char pathValuesTable[] = "| path | value |";
const char misfitsTable[] = "| path | last warning |";
const char beyondPathsTable[] = "| what | why |";
const char identitiesTable[] = "| organization name | application name | object path |";
const char badIdentitiesTable[] = "| organization name | application name | no object path |";

QStringList linesOf(const QString &page)
{
    QFile file(QStringLiteral(DOCS_DIR "/") + page);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qUtf8Printable(page), qUtf8Printable(file.errorString()));
    return QString::fromUtf8(file.readAll()).split('\n');
}

// What stands in backticks, several joined by commas; a null text for a word that stands for
// nothing.
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

// Adds a row for each of the rows of all tables in the page with this header.
void addRows(const QString &page, const QString &header)
{
    QTest::addColumn<QStringList>("cells");
    bool isInside = false;
    const QStringList lines = linesOf(page);
    for (const QString &line : lines) {
        if (line == header || !line.startsWith('|')) {
            isInside = line == header;
            continue;
        }
        if (!isInside || line.startsWith("|--"))
            continue;
        QStringList cells;
        const QStringList codes = line.mid(2, line.size() - 4).split(" | ");
        for (const QString &code : codes)
            cells.append(textOf(code));
        QTest::newRow(qUtf8Printable(line)) << cells;
    }
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

QString jsonOf(const QString &page)
{
    const QStringList lines = linesOf(page);
    const int begin = lines.indexOf("```json") + 1;
    return lines.mid(begin, lines.indexOf("```", begin) - begin).join('\n');
}

// The value that a page describes in this way.
QVariant valueOf(const QString &description)
{
    const QVariantList values {
        QVariant::fromValue(QList<QString> {"b", "a"}), QVariant::fromValue(QList<QString>()),
        QVariant::fromValue(QList<int>()), QVariant::fromValue(QList<bool>())};
    for (const QVariant &value : values) {
        if (describe(value) == description)
            return value;
    }
    return {};
}

} // namespace

class DocumentationTablesTest : public QObject
{
    Q_OBJECT

public:
    explicit DocumentationTablesTest(BusFixture &fixture) : m_service(fixture.service) { }

private Q_SLOTS:
    void everyTableIsChecked_data();
    void everyTableIsChecked();

    void aValueTravelsBothWaysAndInJson_data();
    void aValueTravelsBothWaysAndInJson();
    void aValueIsReadOtherwiseThanSent_data();
    void aValueIsReadOtherwiseThanSent();
    void aForeignValueIsNotRead_data();
    void aForeignValueIsNotRead();
    void aForeignDictionaryIsReadAsEmpty_data();
    void aForeignDictionaryIsReadAsEmpty();
    void aForeignTypeIsNotStored_data();
    void aForeignTypeIsNotStored();
    void otherJsonIsRefused_data();
    void otherJsonIsRefused();

    void aPathHasItsSteps_data();
    void aPathHasItsSteps();
    void aMistakeInAPathHasItsWarning_data();
    void aMistakeInAPathHasItsWarning();
    void aPathLeadsToItsValue_data();
    void aPathLeadsToItsValue();
    void aPathThatDoesNotFitHasItsWarning_data();
    void aPathThatDoesNotFitHasItsWarning();
    void noPathReachesSomeKeys_data();
    void noPathReachesSomeKeys();

    void anIdentityHasItsPath_data();
    void anIdentityHasItsPath();
    void anIdentityWithoutAPathIsRefused_data();
    void anIdentityWithoutAPathIsRefused();

private:
    Configuration read(const QString &wire);
    QString sent(const Configuration &configuration);

    FakeService &m_service;
};

Configuration DocumentationTablesTest::read(const QString &wire)
{
    m_service.answerWith(QStringLiteral("(%1,)").arg(wire));
    Answers answers;
    ConfigurationManager::instance()->getConfiguration(answers.forReading());
    if (!answers.waitFor(1) || answers.at(0).error)
        qFatal("%s was not read", qUtf8Printable(wire));
    return answers.at(0).configuration;
}

QString DocumentationTablesTest::sent(const Configuration &configuration)
{
    m_service.answerWith("()");
    Answers answers;
    ConfigurationManager::instance()->changeConfiguration(configuration, answers.forChanging());
    if (!answers.waitFor(1) || answers.at(0).error)
        qFatal("a configuration was not sent");
    return m_service.calls().last().arguments;
}

void DocumentationTablesTest::everyTableIsChecked_data()
{
    QTest::addColumn<QStringList>("tables");

    QTest::newRow("values.md") << QStringList {bothWaysTable,     readOtherwiseTable, notReadTable,
                                               dictionariesTable, notStoredTable,     noJsonTable};
    QTest::newRow("paths.md") << QStringList {stepsTable, mistakesTable, pathValuesTable,
                                              misfitsTable, beyondPathsTable};
    QTest::newRow("identity.md") << QStringList {identitiesTable, identitiesTable,
                                                 badIdentitiesTable, identitiesTable};
}

void DocumentationTablesTest::everyTableIsChecked()
{
    QFETCH(const QStringList, tables);

    const QStringList lines = linesOf(QTest::currentDataTag());
    QStringList found;
    for (int i = 1; i < lines.size(); ++i) {
        if (lines.at(i).startsWith("|--"))
            found.append(lines.at(i - 1));
    }
    QCOMPARE(found, tables);
}

void DocumentationTablesTest::aValueTravelsBothWaysAndInJson_data()
{
    addRows("values.md", bothWaysTable);
}

void DocumentationTablesTest::aValueTravelsBothWaysAndInJson()
{
    QFETCH(const QStringList, cells);

    const QString wire = QStringLiteral("{'key': <%1>}").arg(cells.at(1));
    g_autoptr(GVariant) value = parseValue(cells.at(1));
    QCOMPARE(QString(g_variant_get_type_string(value)), cells.at(0));
    MessageLog log;
    const Configuration configuration = read(wire);
    QCOMPARE(describe(configuration.get("key")), cells.at(2));
    QCOMPARE(sent(configuration), QStringLiteral("(%1,)").arg(wire));
    QCOMPARE(wireFromJson(QStringLiteral("{\"key\": %1}").arg(cells.at(3))), wire);
    QCOMPARE(log.take(), QStringList());
}

void DocumentationTablesTest::aValueIsReadOtherwiseThanSent_data()
{
    addRows("values.md", readOtherwiseTable);
}

void DocumentationTablesTest::aValueIsReadOtherwiseThanSent()
{
    QFETCH(const QStringList, cells);

    const QVariant value = valueOf(cells.at(0));
    const QString wire = QStringLiteral("{'key': <%1>}").arg(cells.at(1));
    const QString readBack = cells.at(2).isNull() ? describe(QVariant()) : cells.at(2);
    MessageLog log;
    Configuration configuration;
    QVERIFY(configuration.set("key", value));
    QCOMPARE(sent(configuration), QStringLiteral("(%1,)").arg(wire));
    QCOMPARE(describe(read(wire).get("key")), readBack);
    QCOMPARE(log.take(), QStringList());
}

void DocumentationTablesTest::aForeignValueIsNotRead_data()
{
    addRows("values.md", notReadTable);
}

void DocumentationTablesTest::aForeignValueIsNotRead()
{
    QFETCH(const QStringList, cells);

    const QString userType = QVariant::typeToName(QVariant::UserType);
    g_autoptr(GVariant) value = parseValue(cells.at(1));
    QCOMPARE(QString(g_variant_get_type_string(value)), cells.at(0));
    MessageLog log;
    const Configuration configuration = read(
        QStringLiteral("{'key': <%1>, 'other': <1>}").arg(cells.at(1)));
    QCOMPARE(describe(configuration), QStringLiteral("{\"other\": int 1}"));
    QStringList warnings;
    if (!cells.at(2).isNull())
        warnings.append(QString(cells.at(2)).replace(QStringLiteral("…"), userType));
    QCOMPARE(log.take(), warnings);
}

void DocumentationTablesTest::aForeignDictionaryIsReadAsEmpty_data()
{
    addRows("values.md", dictionariesTable);
}

void DocumentationTablesTest::aForeignDictionaryIsReadAsEmpty()
{
    QFETCH(const QStringList, cells);

    g_autoptr(GVariant) value = parseValue(cells.at(1));
    QCOMPARE(QString(g_variant_get_type_string(value)), cells.at(0));
    MessageLog log;
    const Configuration configuration = read(QStringLiteral("{'key': <%1>}").arg(cells.at(1)));
    QCOMPARE(describe(configuration.get("key")), cells.at(2));
    QCOMPARE(log.take(), QStringList());
}

void DocumentationTablesTest::aForeignTypeIsNotStored_data()
{
    addRows("values.md", notStoredTable);
}

void DocumentationTablesTest::aForeignTypeIsNotStored()
{
    QFETCH(const QStringList, cells);

    const int type = QMetaType::type(cells.at(0).toLatin1());
    QVERIFY(type != QMetaType::UnknownType);
    MessageLog log;
    Configuration configuration;
    QVERIFY(configuration.set("key", 7));
    QVERIFY(!configuration.set("key", QVariant(type, nullptr)));
    QVERIFY(!configuration.set("key", QVariant()));
    QCOMPARE(describe(configuration), QStringLiteral("{\"key\": int 7}"));
    QCOMPARE(log.take(), QStringList());
}

void DocumentationTablesTest::otherJsonIsRefused_data()
{
    addRows("values.md", noJsonTable);
}

void DocumentationTablesTest::otherJsonIsRefused()
{
    QFETCH(const QStringList, cells);

    const QString json = QStringLiteral("{\"other\": 1, \"key\": %1}");
    QVERIFY(!wireFromJson(json.arg(1)).isNull());
    QVERIFY(!QJsonDocument::fromJson(json.arg(cells.at(0)).toUtf8()).isNull());
    QVERIFY(wireFromJson(json.arg(cells.at(0))).isNull());
}

void DocumentationTablesTest::aPathHasItsSteps_data()
{
    addRows("paths.md", stepsTable);
}

void DocumentationTablesTest::aPathHasItsSteps()
{
    QFETCH(const QStringList, cells);

    MessageLog log;
    const Xpath xpath(cells.at(0));
    QStringList steps;
    for (const XpathAccess &access : xpath.accesses())
        steps.append(access.type() == XpathAccess::Key
                         ? "key " + access.toKey()
                         : "index " + QString::number(access.toIndex()));
    QCOMPARE(steps.join(", "), cells.at(1));
    QCOMPARE(log.take(), QStringList());
}

void DocumentationTablesTest::aMistakeInAPathHasItsWarning_data()
{
    addRows("paths.md", mistakesTable);
}

void DocumentationTablesTest::aMistakeInAPathHasItsWarning()
{
    QFETCH(const QStringList, cells);

    const QStringList warnings = cells.at(1).isNull() ? QStringList() : QStringList(cells.at(1));
    MessageLog log;
    const Xpath xpath(cells.at(0));
    QVERIFY(!xpath.isValid());
    QCOMPARE(log.take(), warnings);
    QVERIFY(!Configuration().getByXpath(cells.at(0)).isValid());
    QCOMPARE(log.take().count(), warnings.count() + 1);
}

void DocumentationTablesTest::aPathLeadsToItsValue_data()
{
    addRows("paths.md", pathValuesTable);
}

void DocumentationTablesTest::aPathLeadsToItsValue()
{
    QFETCH(const QStringList, cells);

    const Configuration configuration = read(wireFromJson(jsonOf("paths.md")));
    MessageLog log;
    QCOMPARE(describe(configuration.getByXpath(cells.at(0))), cells.at(1));
    QCOMPARE(log.take(), QStringList());
}

void DocumentationTablesTest::aPathThatDoesNotFitHasItsWarning_data()
{
    addRows("paths.md", misfitsTable);
}

void DocumentationTablesTest::aPathThatDoesNotFitHasItsWarning()
{
    QFETCH(const QStringList, cells);

    const Configuration configuration = read(wireFromJson(jsonOf("paths.md")));
    MessageLog log;
    QVERIFY(!configuration.getByXpath(cells.at(0)).isValid());
    const QStringList warnings = log.take();
    QVERIFY(!warnings.isEmpty());
    QCOMPARE(warnings.last(), cells.at(1));
    QCOMPARE(warnings.count(), Xpath(cells.at(0)).isValid() || cells.at(0) == "/" ? 1 : 2);
}

void DocumentationTablesTest::noPathReachesSomeKeys_data()
{
    QTest::addColumn<QString>("key");

    QTest::newRow("empty") << "";
    QTest::newRow("a separator") << "/";
    QTest::newRow("a separator inside") << "a/b";
    QTest::newRow("an index") << "a[0]";
    QTest::newRow("an opening bracket") << "a[b";
    QTest::newRow("a closing bracket") << "a]b";
}

void DocumentationTablesTest::noPathReachesSomeKeys()
{
    QFETCH(const QString, key);

    Configuration configuration;
    QVERIFY(configuration.set(key, 7));
    MessageLog log;
    QCOMPARE(configuration.get(key), QVariant(7));
    QCOMPARE(configuration.getByXpath(key), QVariant());
    QVERIFY(!log.take().isEmpty());
}

void DocumentationTablesTest::anIdentityHasItsPath_data()
{
    addRows("identity.md", identitiesTable);
}

void DocumentationTablesTest::anIdentityHasItsPath()
{
    QFETCH(const QStringList, cells);

    QCOMPARE(Tarnvel::DBus::applicationPath(cells.at(0), cells.at(1)), cells.at(2));
    QCoreApplication::setOrganizationName(cells.at(0));
    QCoreApplication::setApplicationName(cells.at(1));
    m_service.answerWith("(@a{sv} {},)");
    MessageLog log;
    ConfigurationManager manager;
    const bool isComplete = !cells.at(0).isEmpty() && !cells.at(1).isEmpty();
    const QStringList warnings = log.take();
    QCOMPARE(warnings.count(), isComplete ? 0 : 2);
    for (const QString &warning : warnings)
        QVERIFY(linesOf("identity.md").join(' ').contains('`' + warning + '`'));
    Answers answers;
    manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.texts(), QStringList("{}"));
    QCOMPARE(m_service.calls().last().path, cells.at(2));
}

void DocumentationTablesTest::anIdentityWithoutAPathIsRefused_data()
{
    addRows("identity.md", badIdentitiesTable);
}

void DocumentationTablesTest::anIdentityWithoutAPathIsRefused()
{
    QFETCH(const QStringList, cells);

    QCOMPARE(Tarnvel::DBus::applicationPath(cells.at(0), cells.at(1)), cells.at(2));
    QCoreApplication::setOrganizationName(cells.at(0));
    QCoreApplication::setApplicationName(cells.at(1));
    ConfigurationManager manager;
    const int calls = m_service.calls().count();
    Answers answers;
    manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(answers.texts(), QStringList("{} error 1: Invalid object path: " + cells.at(2)));
    QCOMPARE(m_service.calls().count(), calls);
}

int main(int, char *argv[])
{
    // An executable without a name: the application name would otherwise fall back to it.
    int count = 1;
    char noName[] = "";
    char *noNameArguments[] = {noName, nullptr};
    BusFixture fixture(count, noNameArguments);
    DocumentationTablesTest test(fixture);
    return QTest::qExec(&test, QStringList(QString::fromLocal8Bit(argv[0])));
}

#include "documentation_tables_test.moc"
