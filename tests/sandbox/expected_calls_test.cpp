// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "report/expectation_reader.h"

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
  {"application": "acme/viewer", "path": "/p", "user": 0, "method": "ChangeConfiguration",
   "change": {"a": [1, {"b": null}]}, "outcome": "refused", "error": "Forbidden",
   "message": "no", "fault": "error"}]})";

const char get[] = R"({"event": "call", "method": "GetConfiguration", "time": 2})";
const char change[] =
    R"({"event": "call", "method": "ChangeConfiguration", "time": 3, "application": "acme/viewer",
        "path": "/p", "user": 0, "change": {"a": [1, {"b": null}]}, "outcome": "refused",
        "error": "Forbidden", "message": "no", "fault": "error", "text": "all of it"})";

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
    QVERIFY(parseExpectation("calls.json", expected, &expectation).isEmpty());
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
        QVERIFY(parseExpectation("calls.json", expected, &expectation).isEmpty());
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
    row("other kinds of members", R"({"calls": [{"method": 1, "user": 0.5, "change": []}]})",
        {"1:23: expected a string, found 1",
         "1:34: expected an integer from 0 to 4294967295, found 0.5",
         "1:49: expected an object, found a list"});
}

void ExpectedCallsTest::aDiagnosticHasItsLocation()
{
    QFETCH(QByteArray, text);
    Expectation expectation(QVector<ExpectedCall> {{"earlier:1:1", {}}});
    QStringList diagnostics;
    const auto failures = parseExpectation("c", text, &expectation);
    for (const auto &failure : failures)
        diagnostics.append(failure.text().mid(2));
    QTEST(diagnostics, "diagnostics");
    // Unchanged.
    QCOMPARE(expectation.missing().text(), QString("earlier:1:1: the expected call did not come"));
}

QTEST_GUILESS_MAIN(ExpectedCallsTest)

#include "expected_calls_test.moc"
