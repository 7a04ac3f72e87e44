// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "report/expectation.h"

#include <QtCore/QJsonDocument>
#include <QtTest/QTest>

using Tarnvel::Sandbox::Expectation;

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
    void everyMemberCounts_data();
    void everyMemberCounts();
    void nothingIsExpectedByDefault();
    void aMistakeIsNamed_data();
    void aMistakeIsNamed();
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
    QString mistake;
    QVERIFY2(expectation.parse("calls.json", expected, &mistake), qPrintable(mistake));
    for (const QByteArray &record : records)
        expectation.record(object(record));
    QTEST(expectation.missing(), "missing");
}

void ExpectedCallsTest::everyMemberCounts_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QJsonValue>("other");

    QTest::newRow("change") << "change" << QJsonValue(object(R"({"a": [1, {"b": 0}]})"));
    QTest::newRow("no change") << "change" << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("user") << "user" << QJsonValue(1);
    for (const char *member :
         {"application", "path", "method", "outcome", "error", "message", "fault"})
        QTest::newRow(member) << QString(member) << QJsonValue("other");
}

void ExpectedCallsTest::everyMemberCounts()
{
    QFETCH(QString, member);
    QFETCH(QJsonValue, other);
    Expectation expectation;
    QString mistake;
    QVERIFY(expectation.parse("calls.json", expected, &mistake));
    expectation.record(object(get));
    QJsonObject record = object(change);
    QVERIFY(record.contains(member));
    record.insert(member, other);
    expectation.record(record);
    QVERIFY(!expectation.missing().isEmpty());
    expectation.record(object(change));
    QCOMPARE(expectation.missing(), QString());
}

void ExpectedCallsTest::nothingIsExpectedByDefault()
{
    Expectation expectation;
    QCOMPARE(expectation.missing(), QString());
    QString mistake;
    QVERIFY(expectation.parse("calls.json", R"({"calls": []})", &mistake));
    QCOMPARE(expectation.missing(), QString());
}

void ExpectedCallsTest::aMistakeIsNamed_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expectedMistake");

    const QString form = "calls.json:1:1: not an object with a list of \"calls\" and nothing else";
    QTest::newRow("list") << QByteArray("[]") << form;
    QTest::newRow("nothing in it") << QByteArray("{}") << form;
    QTest::newRow("no list") << QByteArray(R"({"calls": {}})") << form;
    QTest::newRow("more") << QByteArray(R"({"calls": [], "x": 1})") << form;
    QTest::newRow("no object") << QByteArray("{\"calls\":\n [1]}")
                               << "calls.json:2:3: not an object";
    QTest::newRow("unknown member") << QByteArray(R"({"calls": [{"metod": "x"}]})")
                                    << "calls.json:1:13: \"metod\" is no member of a call";
    QTest::newRow("other kind") << QByteArray(R"({"calls": [{"within": "2"}]})")
                                << "calls.json:1:23: \"within\" is not a number";
    QTest::newRow("no strings") << QByteArray(R"({"calls": [{"method": 1}]})")
                                << "calls.json:1:23: \"method\" is not a string";
}

void ExpectedCallsTest::aMistakeIsNamed()
{
    QFETCH(QByteArray, text);
    Expectation expectation;
    QString mistake;
    QVERIFY(!expectation.parse("calls.json", text, &mistake));
    QTEST(mistake, "expectedMistake");
}

QTEST_GUILESS_MAIN(ExpectedCallsTest)

#include "expected_calls_test.moc"
