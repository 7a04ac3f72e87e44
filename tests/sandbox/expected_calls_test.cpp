// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "report/expectation_reader.h"
#include "scenario/scenario_reader.h"

#include <QtCore/QFile>
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
  {"application": "acme/viewer", "path": "/acme_2eviewer", "user": 0,
   "method": "ChangeConfiguration", "change": {"a": [1, {"b": null}]}, "outcome": "refused",
   "error": "Forbidden", "message": "no", "fault": "error"}]})";

const char get[] =
    R"({"event": "call", "method": "GetConfiguration", "time": 2, "text": "the get"})";
const char change[] =
    R"({"event": "call", "method": "ChangeConfiguration", "time": 3, "application": "acme/viewer",
        "path": "/acme_2eviewer", "user": 0, "change": {"a": [1, {"b": null}]},
        "outcome": "refused", "error": "Forbidden", "message": "no", "fault": "error",
        "text": "the change"})";

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

Expectation expectationOf(const QByteArray &text)
{
    Expectation expectation;
    const QString diagnostics = textOf(
        parseExpectation("c", text, scenarioOf({"viewer"}), &expectation));
    if (!diagnostics.isEmpty())
        qFatal("%s", qUtf8Printable(diagnostics));
    return expectation;
}

// What is not met if the service keeps \a configuration, GVariant text, for each application.
QString unmet(const Expectation &expectation, const char *configuration = "@a{sv} {}")
{
    return textOf(expectation.unmet([configuration](const QString &path) {
        return path == "/acme_2eviewer" ? adopt(g_variant_new_parsed(configuration)) : Variant();
    }));
}

} // namespace

class ExpectedCallsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void callsMustComeInTheirOrderAndInTime_data();
    void callsMustComeInTheirOrderAndInTime();
    void everyMemberCounts();
    void callsAreCounted_data();
    void callsAreCounted();
    void theNearestCallsAreTold();
    void theConfigurationMustBeKeptAtTheEnd_data();
    void theConfigurationMustBeKeptAtTheEnd();
    void aDiagnosticHasItsLocation_data();
    void aDiagnosticHasItsLocation();
    void whatCanNeverComeIsADiagnostic_data();
    void whatCanNeverComeIsADiagnostic();
    void documentedExpectationsAreValid();
};

void ExpectedCallsTest::callsMustComeInTheirOrderAndInTime_data()
{
    QTest::addColumn<QByteArrayList>("records");
    QTest::addColumn<QString>("missing");

    const QByteArray late = R"({"event": "call", "method": "GetConfiguration", "time": 2.25})";
    const QByteArray announced = R"({"event": "announcement", "method": "GetConfiguration"})";
    const QString first = "c:2:3: the expected call did not come: "
                          R"({"method":"GetConfiguration","within":2})"
                          "\nc:2:3: ";
    const QString second =
        "c:3:3: the expected call did not come: "
        R"({"application":"acme/viewer","change":{"a":[1,{"b":null}]},"error":"Forbidden",)"
        R"("fault":"error","message":"no","method":"ChangeConfiguration","outcome":"refused",)"
        R"("path":"/acme_2eviewer","user":0})"
        "\nc:3:3: ";
    const QString all = "(other: application, change, error, fault, message, method, outcome, "
                        "path, user)";
    const QString nearChange = "near, after 3 s: the change (other: method, within)";
    QTest::newRow("none") << QByteArrayList() << first + "no call came at all";
    QTest::newRow("other order") << QByteArrayList {change, get}
                                 << second + "came before its turn, after 3 s: the change\n"
            + "c:3:3: near, after 2 s: the get " + all;
    QTest::newRow("only the first")
        << QByteArrayList {get} << second + "near, after 2 s: the get " + all;
    QTest::newRow("only the second") << QByteArrayList {change} << first + nearChange;
    QTest::newRow("too late") << QByteArrayList {
        late, change} << first + "near, after 2.25 s:  (other: within)\nc:2:3: " + nearChange;
    QTest::newRow("no call") << QByteArrayList {announced, change} << first + nearChange;
    QTest::newRow("both") << QByteArrayList {get, change} << "";
    QTest::newRow("others between")
        << QByteArrayList {change, get, get, announced, change, get} << "";
}

void ExpectedCallsTest::callsMustComeInTheirOrderAndInTime()
{
    QFETCH(QByteArrayList, records);
    Expectation expectation = expectationOf(expected);
    for (const QByteArray &record : records)
        expectation.record(object(record));
    QTEST(unmet(expectation), "missing");
}

void ExpectedCallsTest::everyMemberCounts()
{
    const QStringList members {"application", "path",  "user",    "method", "change",
                               "outcome",     "error", "message", "fault"};
    for (const QString &member : members) {
        Expectation expectation = expectationOf(expected);
        expectation.record(object(get));
        QJsonObject record = object(change);
        record.insert(member,
                      member == "change" ? QJsonValue(object(R"({"a": [1, {"b": 0}]})"))
                                         : QJsonValue("other"));
        expectation.record(record);
        record.remove(member);
        expectation.record(record);
        QVERIFY2(unmet(expectation).contains("(other: " + member + ")\n"), qPrintable(member));
        expectation.record(object(change));
        QCOMPARE(unmet(expectation), QString());
    }
}

void ExpectedCallsTest::callsAreCounted_data()
{
    QTest::addColumn<QByteArray>("calls");
    QTest::addColumn<QByteArrayList>("records");
    QTest::addColumn<QString>("message");

    const QByteArray never = R"({"method": "GetConfiguration", "never": true})";
    const QByteArray neverSoon = R"({"method": "GetConfiguration", "never": true, "within": 1})";
    const QByteArray twice = R"({"method": "GetConfiguration", "times": 2})";
    const QByteArray inOrder = R"({"method": "ChangeConfiguration"})";
    QTest::newRow("never: none") << never << QByteArrayList() << "";
    QTest::newRow("never: another") << never << QByteArrayList {change} << "";
    QTest::newRow("never: one") << never << QByteArrayList {get}
                                << "the call that must not come came once: ";
    QTest::newRow("never: two") << never << QByteArrayList {change, get, get}
                                << "the call that must not come came 2 times: ";
    QTest::newRow("never, but later") << neverSoon << QByteArrayList {get} << "";
    QTest::newRow("not never") << QByteArray(R"({"method": "GetConfiguration", "never": false})")
                               << QByteArrayList() << "the expected call did not come: ";
    QTest::newRow("twice: none") << twice << QByteArrayList()
                                 << "the expected call came 0 times, not 2 times: ";
    QTest::newRow("twice: once") << twice << QByteArrayList {get}
                                 << "the expected call came once, not 2 times: ";
    QTest::newRow("twice: twice") << twice << QByteArrayList {get, change, get} << "";
    QTest::newRow("twice: three times") << twice << QByteArrayList {get, get, get}
                                        << "the expected call came 3 times, not 2 times: ";
    QTest::newRow("in any order") << inOrder + ", " + twice << QByteArrayList {get, change, get}
                                  << "";
    QTest::newRow("counted ones first")
        << twice + ", " + inOrder << QByteArrayList {get, change, get} << "";
    QTest::newRow("one counted and one in order")
        << never + ", " + inOrder << QByteArrayList {get} << "the expected call did not come: ";
    QTest::newRow("once in order, once counted") << QByteArray(
        R"({"method": "GetConfiguration"}, {"method": "GetConfiguration", "times": 1})")
                                                 << QByteArrayList {get} << "";
    QTest::newRow("twice in order") << inOrder + ", " + inOrder << QByteArrayList {change}
                                    << "the expected call did not come: ";
}

void ExpectedCallsTest::callsAreCounted()
{
    QFETCH(QByteArray, calls);
    QFETCH(QByteArrayList, records);
    QFETCH(QString, message);
    Expectation expectation = expectationOf("{\"calls\": [" + calls + "]}");
    for (const QByteArray &record : records)
        expectation.record(object(record));
    const QString text = unmet(expectation);
    QVERIFY2(message.isEmpty() ? text.isEmpty() : text.contains(": " + message), qPrintable(text));
}

void ExpectedCallsTest::theNearestCallsAreTold()
{
    Expectation expectation = expectationOf(R"({"calls": [
{"method": "GetConfiguration", "user": 7}, {"method": "ChangeConfiguration"},
{"method": "GetConfiguration", "never": true}, {"user": 7, "times": 2}]})");
    for (const char *record :
         {R"({"event": "call", "time": 1, "text": "A", "method": "Other"})",
          R"({"event": "call", "time": 2, "text": "B", "method": "GetConfiguration", "user": 8})",
          R"({"event": "call", "time": 3, "text": "C", "method": "Other", "user": 7})",
          R"({"event": "call", "time": 4, "text": "D", "method": "GetConfiguration"})"})
        expectation.record(object(record));
    QCOMPARE(unmet(expectation),
             QString("c:2:1: the expected call did not come: "
                     "{\"method\":\"GetConfiguration\",\"user\":7}\n"
                     "c:2:1: near, after 2 s: B (other: user)\n"
                     "c:2:1: near, after 3 s: C (other: method)\n"
                     "c:2:1: near, after 4 s: D (other: user)\n"
                     "c:3:1: the call that must not come came 2 times: "
                     "{\"method\":\"GetConfiguration\"}\n"
                     "c:3:1: came after 2 s: B\n"
                     "c:3:1: came after 4 s: D\n"
                     "c:3:48: the expected call came once, not 2 times: {\"user\":7}\n"
                     "c:3:48: came after 3 s: C\n"
                     "c:3:48: near, after 1 s: A (other: user)\n"
                     "c:3:48: near, after 2 s: B (other: user)"));
}

void ExpectedCallsTest::theConfigurationMustBeKeptAtTheEnd_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<QString>("message");

    const QByteArray zoom = R"({"finally": {"zoom": 125}})";
    const QByteArray nested = R"({"finally": {"a": {"b": [], "c": {"$gvariant": "uint64 1"}}}})";
    QTest::newRow("met") << zoom << QByteArray("{'other': <1>, 'zoom': <125>}") << "";
    QTest::newRow("other value") << zoom << QByteArray("{'zoom': <100>}")
                                 << "1:22: in the end, \"zoom\" of acme/viewer is 100, not 125";
    QTest::newRow("other type") << zoom << QByteArray("{'zoom': <'125'>}")
                                << "1:22: in the end, \"zoom\" of acme/viewer is \"125\", not 125";
    QTest::newRow("lost") << zoom << QByteArray("@a{sv} {}")
                          << "1:22: in the end, \"zoom\" of acme/viewer is missing, not 125";
    QTest::newRow("nested") << nested << QByteArray("{'a': <{'c': <uint64 1>, 'b': <@ai []>}>}")
                            << "";
    QTest::newRow("nested as a whole")
        << nested << QByteArray("{'a': <{'c': <uint64 1>, 'b': <@as []>, 'd': <1>}>}")
        << "1:19: in the end, \"a\" of acme/viewer is {\"b\":[],\"c\":{\"$gvariant\":\"uint64 1\"},"
           "\"d\":1}, not {\"b\":[],\"c\":{\"$gvariant\":\"uint64 1\"}}";
    QTest::newRow("all settings") << QByteArray(
        "{\"finally\": {\"a\": 1,\n\"b\": true}, \"calls\": []}")
                                  << QByteArray("{'a': <2>, 'b': <false>}")
                                  << "1:19: in the end, \"a\" of acme/viewer is 2, not 1\n"
                                     "c:2:6: in the end, \"b\" of acme/viewer is false, not true";
    QTest::newRow("GVariant text")
        << QByteArray(R"({"finally": {"$gvariant": "{'a': <1>}"}})") << QByteArray("@a{sv} {}")
        << "1:13: in the end, \"a\" of acme/viewer is missing, not 1";
    QTest::newRow("list") << QByteArray(R"({"finally": [{"application": "acme/viewer",
"configuration": {"zoom": 1}}]})")
                          << QByteArray("{'zoom': <2>}")
                          << "2:27: in the end, \"zoom\" of acme/viewer is 2, not 1";
}

void ExpectedCallsTest::theConfigurationMustBeKeptAtTheEnd()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, configuration);
    QFETCH(QString, message);
    QCOMPARE(unmet(expectationOf(text), configuration.constData()),
             message.isEmpty() ? message : "c:" + message);
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
    row("counts", R"({"calls": [{"times": 0}, {"never": 1}, {"never": true, "times": 1}]})",
        {"1:22: expected an integer from 1 to 2147483647, found 0",
         "1:36: expected a boolean, found 1",
         R"(1:65: "times" and "never" are mutually exclusive)"});
    row("settings", R"({"finally": {"a": 1.5, "b": 0.5}})",
        {
            "1:19: expected a 32-bit integer, found 1.5",
            "1:29: expected a 32-bit integer, found 0.5",
        });
    row("no settings", R"({"finally": {}})", {"1:13: expected at least one setting"});
    row("settings of another kind", R"({"finally": 1})", {"1:13: expected an object, found 1"});
    row("settings of another type", R"({"finally": {"$gvariant": "1"}})",
        {R"(1:13: expected a value of type "a{sv}")"});
    row("list of settings", R"({"finally": [{}, {"application": "acme/viewer", "x": 1}]})",
        {R"(1:14: "application" is missing)", R"(1:14: "configuration" is missing)",
         R"(1:18: "configuration" is missing)",
         R"(1:49: unknown member "x" of a final configuration)"});
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
    QVERIFY(unmet(expectation).startsWith("earlier:1:1: the expected call did not come: "));
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
    row(R"("error": "Internal", "never": true)", "", {});
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
    row(R"("outcome": "refusd", "never": true)",
        "c:2:13: expected one of answered, accepted, refused, unanswered, found \"refusd\"", both);

    const auto finalRow = [](const char *settings, const QString &diagnostics,
                             const QByteArrayList &applications) {
        QTest::addRow("%s %d", settings, int(applications.size()))
            << QByteArray("{\"finally\": ") + settings + '}' << applications << diagnostics;
    };
    const QString several = "c:1:13: the scenario has %1 applications: expected a list of objects "
                            "with \"application\" and \"configuration\"";
    finalRow(R"({"zoom": 1})", "", {"viewer"});
    finalRow(R"({"zoom": 1})", several.arg(0), {});
    finalRow(R"({"zoom": 1})", several.arg(2), both);
    finalRow(R"([{"application": "acme/editor", "configuration": {"zoom": 1}}])", "", both);
    finalRow(R"([{"application": "x", "configuration": {"zoom": 1}}])",
             R"(c:1:30: the scenario has no application "x", only: acme/viewer)", {"viewer"});
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

void ExpectedCallsTest::documentedExpectationsAreValid()
{
    QFile file(DOCUMENTATION);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString section = QString::fromUtf8(file.readAll()).section("\n## Expectations\n", 1);
    const QStringList blocks = section.section("\n## ", 0, 0).split("```json\n").mid(1);
    QCOMPARE(blocks.size(), 2);
    for (int index = 0; index < blocks.size(); ++index) {
        const QByteArrayList applications = QByteArrayList {"viewer", "editor"}.mid(0, index + 1);
        const QByteArray text = blocks.at(index).section("```", 0, 0).toUtf8();
        Expectation expectation;
        const auto failures = parseExpectation("c", text, scenarioOf(applications), &expectation);
        QCOMPARE(textOf(failures), QString());
        QVERIFY(!unmet(expectation).isEmpty());
    }
}

QTEST_GUILESS_MAIN(ExpectedCallsTest)

#include "expected_calls_test.moc"
