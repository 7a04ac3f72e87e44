// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "report/expectation_reader.h"
#include "scenario/scenario_reader.h"

#include <QtCore/QJsonDocument>
#include <QtTest/QTest>

using namespace Tarnvel::Sandbox;

namespace {

QJsonObject object(const QByteArray &text)
{
    return QJsonDocument::fromJson(text).object();
}

const char expected[] = R"({"calls": [
  {"method": "GetConfiguration", "within": 2},
  {"application": "acme/viewer", "path": "/acme_2eviewer", "user": 0, "method": "ChangeConfiguration",
   "change": {"a": [1, {"b": null}]}, "outcome": "refused", "error": "Forbidden",
   "message": "no", "fault": "error"}]})";

const char get[] = R"({"event": "call", "method": "GetConfiguration", "time": 2})";
const char change[] =
    R"({"event": "call", "method": "ChangeConfiguration", "time": 3, "application": "acme/viewer",
        "path": "/acme_2eviewer", "user": 0, "change": {"a": [1, {"b": null}]}, "outcome": "refused",
        "error": "Forbidden", "message": "no", "fault": "error", "text": "all of it"})";

Scenario scenarioOf(const QByteArrayList &applications)
{
    QByteArrayList texts;
    for (const QByteArray &application : applications)
        texts << R"({"organization": "acme", "application": ")" + application
                + R"(", "configuration": {"zoom": 100}})";
    Scenario scenario;
    if (!parseScenario("s", R"({"applications": [)" + texts.join(", ") + "]}", &scenario).isEmpty())
        qFatal("no scenario");
    return scenario;
}

QString textOf(const QVector<Tarnvel::Tools::Failure> &failures)
{
    QStringList texts;
    for (const Tarnvel::Tools::Failure &failure : failures)
        texts << failure.text();
    return texts.join('\n');
}

} // namespace

class ExpectedCallsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void callsMustComeInTheirOrderAndInTime_data();
    void callsMustComeInTheirOrderAndInTime();
    void everyMemberCounts();
    void aDiagnosticHasItsLocation_data();
    void aDiagnosticHasItsLocation();
    void whatCanNeverComeIsADiagnostic_data();
    void whatCanNeverComeIsADiagnostic();
};

void ExpectedCallsTest::callsMustComeInTheirOrderAndInTime_data()
{
    QTest::addColumn<QByteArrayList>("records");
    QTest::addColumn<QString>("missing");

    const QByteArray late = R"({"event": "call", "method": "GetConfiguration", "time": 2.25})";
    const QByteArray announced = R"({"event": "announcement", "method": "GetConfiguration"})";
    const QString first = "calls.json:2:3: the expected call did not come";
    const QString second = "calls.json:3:3: the expected call did not come";
    QTest::newRow("none") << QByteArrayList() << first;
    QTest::newRow("other order") << QByteArrayList {change, get} << second;
    QTest::newRow("only the first") << QByteArrayList {get} << second;
    QTest::newRow("only the second") << QByteArrayList {change} << first;
    QTest::newRow("too late") << QByteArrayList {late, change}
                              << "calls.json:2:3: the expected call came after 2.25 s";
    QTest::newRow("no call") << QByteArrayList {announced, change} << first;
    QTest::newRow("both") << QByteArrayList {get, change} << "";
    QTest::newRow("others between")
        << QByteArrayList {change, get, get, announced, change, get} << "";
}

void ExpectedCallsTest::callsMustComeInTheirOrderAndInTime()
{
    QFETCH(QByteArrayList, records);
    Expectation expectation;
    QVERIFY(
        parseExpectation("calls.json", expected, scenarioOf({"viewer"}), &expectation).isEmpty());
    for (const QByteArray &record : records)
        expectation.record(object(record));
    QTEST(expectation.missing().text(), "missing");
}

void ExpectedCallsTest::everyMemberCounts()
{
    const QStringList members {"application", "path",  "user",    "method", "change",
                               "outcome",     "error", "message", "fault"};
    for (const QString &member : members) {
        Expectation expectation;
        QVERIFY(parseExpectation("calls.json", expected, scenarioOf({"viewer"}), &expectation)
                    .isEmpty());
        expectation.record(object(get));
        QJsonObject record = object(change);
        record.insert(member,
                      member == "change" ? QJsonValue(object(R"({"a": [1, {"b": 0}]})"))
                                         : QJsonValue("other"));
        expectation.record(record);
        record.remove(member);
        expectation.record(record);
        QVERIFY2(expectation.missing(), qPrintable(member));
        expectation.record(object(change));
        QCOMPARE(expectation.missing().text(), QString());
    }
}

void ExpectedCallsTest::aDiagnosticHasItsLocation_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("diagnostics");

    const auto row = [](const char *name, const char *text, const QStringList &diagnostics) {
        QTest::newRow(name) << QByteArray(text) << diagnostics;
    };
    row("list", "[]", {"1:1: expected an object, found a list"});
    row("no calls", R"({"x": 1})",
        {R"(1:1: "calls" is missing)", R"(1:2: unknown member "x" of an expectation)"});
    row("calls not a list", R"({"calls": {}})", {"1:11: expected a list, found an object"});
    row("calls of other kinds", "{\"calls\":\n [1, {\"metod\": 1, \"within\": \"2\"}]}",
        {"2:3: expected an object, found 1", R"(2:7: unknown member "metod" of a call)",
         R"(2:29: expected a number from 0 to 2147483647, found "2")"});
    row("other kinds of members",
        R"({"calls": [{"message": 1, "user": 0.5, "change": [], "application": 1, "path": 1}]})",
        {"1:24: expected a string, found 1",
         "1:35: expected an integer from 0 to 4294967295, found 0.5",
         "1:50: expected an object, found a list", "1:69: expected a string, found 1",
         "1:80: expected a string, found 1"});
}

void ExpectedCallsTest::aDiagnosticHasItsLocation()
{
    QFETCH(QByteArray, text);
    Expectation expectation(QVector<ExpectedCall> {{"earlier:1:1", {}}});
    QStringList diagnostics;
    const auto failures = parseExpectation("c", text, scenarioOf({"viewer"}), &expectation);
    for (const auto &failure : failures)
        diagnostics.append(failure.text().mid(2));
    QTEST(diagnostics, "diagnostics");
    // Unchanged.
    QCOMPARE(expectation.missing().text(), QString("earlier:1:1: the expected call did not come"));
}

void ExpectedCallsTest::whatCanNeverComeIsADiagnostic_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArrayList>("applications");
    QTest::addColumn<QString>("diagnostics");

    const QByteArrayList both {"viewer", "editor"};
    const auto row = [](const char *call, const QString &diagnostics,
                        const QByteArrayList &applications) {
        QTest::addRow("%s %d", call, int(applications.size()))
            << QByteArray("{\"calls\": [\n{") + call + "}]}" << applications << diagnostics;
    };
    row(R"("path": "/unknown", "method": "GetConfiguration")", "", {});
    row(R"("path": "/acme_2eeditor")", "", both);
    row(R"("application": "acme/editor", "path": "/acme_2eeditor")", "", both);
    row(R"("error": "Internal")", "", {});
    row(R"("error": "org.freedesktop.DBus.Error.UnknownMethod")", "", {});
    row(R"("application": "acme/viewer")",
        R"(c:2:17: the scenario has no application "acme/viewer", only: none)", {});
    row(R"("application": "acme/viewr")",
        "c:2:17: the scenario has no application \"acme/viewr\", only: acme/editor, acme/viewer",
        both);
    row(R"("path": "viewer")", "c:2:10: expected an object path, found \"viewer\"", both);
    row(R"("application": "acme/viewer", "path": "/acme_2eeditor")",
        "c:2:40: \"/acme_2eeditor\" is not the path of \"acme/viewer\"", both);
    row(R"("method": "Get")",
        R"(c:2:12: expected "GetConfiguration" or "ChangeConfiguration", found "Get")", both);
    row(R"("outcome": "refusd")",
        "c:2:13: expected one of answered, accepted, refused, unanswered, found \"refusd\"", both);
}

void ExpectedCallsTest::whatCanNeverComeIsADiagnostic()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArrayList, applications);
    Expectation expectation;
    QTEST(textOf(parseExpectation("c", text, scenarioOf(applications), &expectation)),
          "diagnostics");
    for (const char *member : {"error", "fault"}) {
        const QByteArray call = QByteArray(R"({"calls": [{")") + member + "\": \"no-such\"}]}";
        const QString found = textOf(parseExpectation("c", call, {}, &expectation));
        QVERIFY2(found.startsWith("c:1:") && found.endsWith(", found \"no-such\""),
                 qPrintable(found));
    }
}

QTEST_GUILESS_MAIN(ExpectedCallsTest)

#include "expected_calls_test.moc"
