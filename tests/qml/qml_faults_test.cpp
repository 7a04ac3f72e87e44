// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "document_tables.h"
#include "program.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Tarnvel::Testing;

namespace {

const QString before = QStringLiteral(R"("theme": "light", "zoom": 100)");

// The documentation's example of a fault, which affects each read from the start, or happens at
// once.
QString exampleOf(const QString &fault)
{
    const QString section = contentOf("sandbox.md").section("\n### " + fault + '\n', 1);
    QString example = section.section("```json\n", 1).section("\n```", 0, 0);
    example.replace("ChangeConfiguration", "GetConfiguration");
    static const QRegularExpression call(R"(, "call": \d)");
    return example.remove(call).replace(R"("time": 0.5)", R"("time": 0)");
}

} // namespace

class QmlFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachFaultIsDocumented();
    void eachFaultLeadsToItsStatus_data();
    void eachFaultLeadsToItsStatus();

private:
    static QVector<Row> documentedFaults()
    {
        QVector<Row> faults;
        const QVector<Row> rows = rowsOf("qml.md");
        for (const Row &row : rows) {
            if (row.header.startsWith("| fault |"))
                faults.append(row);
        }
        return faults;
    }

    bool write(const QString &configuration, const QString &fault)
    {
        const auto text = QStringLiteral(R"({"applications": [{"organization": "acme",)"
                                         R"( "application": "viewer", "configuration": {%1},)"
                                         R"( "faults": [%2]}]})");
        QFile file(m_scenario);
        return file.open(QIODevice::WriteOnly)
            && file.write(text.arg(configuration, fault).toUtf8()) > 0;
    }

    // Reads up to a line with \a text, and collects the lines of the application.
    bool waitForLine(Program &sandbox, const QString &text)
    {
        QString line;
        do {
            line = sandbox.readErrorLine();
            if (line.startsWith("qml: "))
                m_lines.append(line);
        } while (!line.contains(text) && !line.startsWith("no line: "));
        return line.contains(text);
    }

    QTemporaryDir m_directory;
    QString m_scenario = m_directory.filePath("scenario.json");
    QStringList m_lines;
};

void QmlFaultsTest::eachFaultIsDocumented()
{
    Program sandbox("managed-configuration-sandbox");
    const Outcome outcome = sandbox.run({"--list-faults"});
    QCOMPARE(outcome.status, 0);
    const QVector<Row> rows = documentedFaults();
    QVERIFY(!rows.isEmpty());
    for (const Row &row : rows)
        QVERIFY2(outcome.output.contains(row.cells().constFirst()), qUtf8Printable(row.line));
    QCOMPARE(rows.count(), outcome.output.count('\n'));
}

void QmlFaultsTest::eachFaultLeadsToItsStatus_data()
{
    QTest::addColumn<QStringList>("cells");

    const QVector<Row> rows = documentedFaults();
    for (const Row &row : rows)
        QTest::newRow(qUtf8Printable(row.cells().constFirst())) << row.cells();
}

void QmlFaultsTest::eachFaultLeadsToItsStatus()
{
    QFETCH(const QStringList, cells);
    const QString &name = cells.at(0);
    const QString fault = exampleOf(name);
    const bool isTimed = fault.contains("\"time\"");
    const QString status = QString("qml: status %1 %2")
                               .arg(cells.at(1) == "Ready" ? "1" : "2", cells.at(2));

    QVERIFY(write(before, isTimed ? QString() : fault));
    Program sandbox("managed-configuration-sandbox");
    sandbox.setVariable("QML2_IMPORT_PATH", MODULES);
    sandbox.start({"--scenario", m_scenario, "--", APPLICATION});
    m_lines.clear();
    QVERIFY(waitForLine(sandbox, "qml: "));
    QCOMPARE(m_lines, QStringList(status));
    if (!isTimed)
        return;

    QVERIFY(waitForLine(sandbox, "qml: changed"));
    QVERIFY(write(before, fault));
    QVERIFY(waitForLine(sandbox, "(fault " + name + ")"));
    QStringList changes("qml: changed theme,zoom");
    if (name == "replace")
        changes.append(changes.constFirst());
    while (m_lines.count() <= changes.count())
        QVERIFY(waitForLine(sandbox, "qml: "));
    // Nothing else comes before this, but a flood shows other states until it is over.
    QVERIFY(write(R"("last": 1)", {}));
    QVERIFY(waitForLine(sandbox, "qml: changed last,theme,zoom"));
    const QStringList states = m_lines.filter("status");
    QCOMPARE(states.last(), status);
    QVERIFY(states.count() == 1 || name == "flood");
    QCOMPARE(m_lines.filter("changed"), changes << m_lines.last());
}

QTEST_GUILESS_MAIN(QmlFaultsTest)

#include "qml_faults_test.moc"
