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
    void aDiagnosticHasItsPlace_data();
    void aDiagnosticHasItsPlace();
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
    QCOMPARE(parseExpectation("calls.json", expected, &expectation).text(), QString());
    for (const QByteArray &record : records)
        expectation.record(object(record));
    QTEST(expectation.missing().text(), "missing");
}

void ExpectedCallsTest::everyMemberCounts()
{
    for (const QString member : {"application", "path", "user", "method", "change", "outcome",
                                 "error", "message", "fault"}) {
        Expectation expectation;
        QCOMPARE(parseExpectation("calls.json", expected, &expectation).text(), QString());
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

void ExpectedCallsTest::aDiagnosticHasItsPlace_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("diagnostic");

    const QString form = "calls.json:1:1: expected an object with a list of \"calls\" alone";
    QTest::newRow("list") << QByteArray("[]") << form;
    QTest::newRow("empty object") << QByteArray("{}") << form;
    QTest::newRow("calls not a list") << QByteArray(R"({"calls": {}})") << form;
    QTest::newRow("another member") << QByteArray(R"({"calls": [], "x": 1})") << form;
    QTest::newRow("call not an object")
        << QByteArray("{\"calls\":\n [1]}") << "calls.json:2:3: expected an object, found a number";
    QTest::newRow("unknown member") << QByteArray(R"({"calls": [{"metod": "x"}]})")
                                    << "calls.json:1:13: unknown member of a call: \"metod\"";
    QTest::newRow("value of another kind")
        << QByteArray(R"({"calls": [{"within": "2"}]})")
        << "calls.json:1:23: \"within\": expected a number, found a string";
}

void ExpectedCallsTest::aDiagnosticHasItsPlace()
{
    QFETCH(QByteArray, text);
    Expectation expectation(QVector<ExpectedCall> {{"earlier.json:1:1", {}}});
    QTEST(parseExpectation("calls.json", text, &expectation).text(), "diagnostic");
    // Unchanged.
    QCOMPARE(expectation.missing().text(),
             QString("earlier.json:1:1: the expected call did not come"));
}

QTEST_GUILESS_MAIN(ExpectedCallsTest)

#include "expected_calls_test.moc"
