// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "check/scenario_check.h"

#include <QtTest/QTest>

using namespace Tarnvel::Sandbox;
using namespace Tarnvel::Tools;

namespace {

const char configuration[] = R"("configuration": {"theme": "light", "zoom": 500, "none": [],
    "network": {"proxy": "p", "hosts": ["a", "b"], "ports": [1, 2]}, "odd": {"$gvariant": "{'a': <1>}"}})";
const QString settings = QStringLiteral(
    "use a setting of the configuration: network, none, odd, theme, zoom");

QString lost(const QString &reason)
{
    return QStringLiteral("this fault is never injected: %1; remove it, or what prevents it")
        .arg(reason);
}

const QString shadowed = lost(QStringLiteral("others before it affect the same calls"));
const QString away = lost(QStringLiteral("the service is away at that time"));
const QString noBus = lost(QStringLiteral("the bus exits before"));
const QString refused = lost(QStringLiteral("the service refuses all calls"));
const QString end1 = lost(QStringLiteral("the service ends at call 1"));
const QString end3 = lost(QStringLiteral("the service ends at call 3"));

QByteArray application(const QByteArray &name, const QByteArray &members)
{
    return R"({"organization": "acme", "application": ")" + name + "\",\n" + members + '}';
}

QByteArray scenarioOf(const QByteArrayList &applications)
{
    return R"({"applications": [)" + applications.join(",\n") + "]}";
}

// A fault that affects calls to GetConfiguration; all of them if \a call is null.
QByteArray get(const char *name, const char *call = nullptr)
{
    return QByteArray(R"({"method": "GetConfiguration", "fault": ")") + name
        + (call ? QByteArray("\", \"call\": ") + call : "\"")
        + (QByteArray(name) == "delay" ? ", \"seconds\": 1}" : "}");
}

QByteArray at(const char *time, const char *name, const char *members = "")
{
    return QByteArray("{\"time\": ") + time + ", \"fault\": \"" + name + '"' + members + '}';
}

QString textOf(const QVector<Diagnostic> &diagnostics)
{
    QStringList texts;
    for (const Diagnostic &one : diagnostics)
        texts << QString("%1:%2%3%4")
                     .arg(one.line)
                     .arg(one.isSlip ? "" : " invalid: ", one.isSlip ? " " : "", one.message)
                + (one.hint.isEmpty() ? QString() : "; " + one.hint);
    return texts.join('\n');
}

// Each fault is on a line, beginning with line 2; the numbers are those of the slips.
void faultRow(const char *name, const QByteArrayList &faults,
              const std::initializer_list<QPair<int, QString>> &slips,
              const QByteArray &members = R"("configuration": {})")
{
    QStringList expected;
    for (const auto &[line, text] : slips)
        expected << QString("%1: %2").arg(line).arg(text);
    QTest::newRow(name) << scenarioOf(
        {application("viewer", "\"faults\": [" + faults.join(",\n") + "], " + members)})
                        << expected.join('\n');
}

} // namespace

class ScenarioSlipsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void slipsWithSettingsAreFound_data();
    void slipsWithSettingsAreFound();
    void slipsHaveTheirColumns();
    void lostFaultsAreFound_data();
    void lostFaultsAreFound();
};

void ScenarioSlipsTest::slipsWithSettingsAreFound_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("slips");

    const auto row = [](const QByteArray &members, const QString &slips) {
        QTest::newRow(members.constData())
            << scenarioOf({application("viewer", members + ",\n" + configuration)}) << slips;
    };
    QTest::newRow("no JSON") << QByteArray("[") << "1: invalid: unexpected end of the file";
    QTest::newRow("no scenario") << QByteArray("[]")
                                 << "1: invalid: expected an object, found a list";
    QTest::newRow("empty") << scenarioOf({}) << "";
    row(R"("locked": [])", "");
    row(R"("locked": ["theme", "network", "network/proxy", "network/hosts", "odd/a"])", "");
    row(R"("locked": ["thme"])", "2: \"thme\" leads nowhere; " + settings);
    row(R"("locked": ["theme/x"])", "2: \"theme/x\" leads nowhere; " + settings);
    row(R"("locked": ["network/x/y"])",
        "2: \"network/x/y\" leads nowhere; use a setting of \"network\": hosts, ports, proxy");
    row(R"("locked": ["network/hosts/0"])",
        "2: \"network/hosts/0\" leads nowhere; use a setting of \"network\": hosts, ports, proxy");
    row(R"("locked": ["odd/b"])", "2: \"odd/b\" leads nowhere; use a setting of \"odd\": a");
    row(R"("locked": ["later"], "faults": [{"fault": "replace", "time": 1, "configuration": {"later": 1}}])",
        "");
    row(R"("allowed": {"theme": ["light"], "zoom": {"maximum": 500}, "none": ["x"],
           "network/hosts": ["a", "b"], "network/ports": {"minimum": 1}})",
        "");
    row(R"("allowed": {"none": {"minimum": 1}})", "");
    row(R"("allowed": {"size": [1]})", "2: \"size\" leads nowhere; " + settings);
    const QString change = "; change the value, or allow it";
    row(R"("allowed": {"zoom": {"minimum": 25, "maximum": 400}})",
        "3: \"zoom\" may only be 25 to 400, not 500" + change);
    row(R"("allowed": {"theme": ["dark", "blue"]})",
        "3: \"theme\" may only be \"dark\", \"blue\", not \"light\"" + change);
    row(R"("allowed": {"theme": {"minimum": 1, "maximum": 2}})",
        "3: \"theme\" has a range, but is not an integer; remove the range, or make the setting an "
        "integer");
    row(R"("allowed": {"network/hosts": ["a"]})",
        "4: \"network/hosts\" may only be \"a\", not \"b\"" + change);
    row(R"("allowed": {"odd/a": [2]})", "4: \"odd/a\" may only be 2, not 1" + change);
    row(R"("allowed": {"zoom": [500]}, "faults": [{"fault": "replace", "time": 1,
           "configuration": {"zoom": 1}}])",
        "3: \"zoom\" may only be 500, not 1" + change);

    // What is invalid is no slip, and hides no other.
    row(R"("locked": ["a/", 1, "b"], "allowed": {"theme": []}, "faults": [1])",
        "2: invalid: expected the path of a setting, such as \"a/b\", found \"a/\"\n"
        "2: invalid: expected a string, found 1\n2: \"b\" leads nowhere; "
            + settings
            + "\n2: invalid: expected at least one allowed value\n"
              "2: invalid: expected an object, found 1");
    row(R"("locked": ["a"], "allowed": 1, "faults": [{"fault": "replace", "configuration": {"a": null}}])",
        "2: invalid: expected an object, found 1\n2: invalid: \"time\" is missing\n"
        "2: invalid: expected a boolean, an integer or a string, found null");
    QTest::newRow("no configuration") << scenarioOf({application("viewer", "\"locked\": [\"a\"]")})
                                      << "1: invalid: \"configuration\" is missing";
    QTest::newRow("empty configuration")
        << scenarioOf({application("viewer", R"("locked": ["a"], "configuration": {})")})
        << "2: \"a\" leads nowhere";
    QTest::newRow("many settings")
        << scenarioOf({application("viewer", R"("locked": ["a"], "configuration": {"b": 1, "c": 1,
            "d": 1, "e": 1, "f": 1, "g": 1, "h": 1, "i": 1, "j": 1, "k": 1, "l": 1})")})
        << "2: \"a\" leads nowhere; use a setting of the configuration: "
           "b, c, d, e, f, g, h, i, j, k, ...";
    QTest::newRow("other application")
        << scenarioOf({application("viewer", configuration),
                       application("editor", R"("configuration": {}, "locked": ["theme"])")})
        << "5: \"theme\" leads nowhere";
}

void ScenarioSlipsTest::slipsWithSettingsAreFound()
{
    QFETCH(QByteArray, text);
    QTEST(textOf(diagnose("s.json", text, true)), "slips");
}

void ScenarioSlipsTest::slipsHaveTheirColumns()
{
    const QByteArray text = scenarioOf({application(
        "viewer",
        "\"locked\": [\"a\"], \"allowed\": {\"b\": [1],\n\"zoom\": [1]}, \"faults\": [1, "
            + get("exit") + ", " + get("exit") + "],\n\"configuration\": {\"zoom\": 2}")});
    QStringList locations;
    const QVector<Diagnostic> diagnostics = diagnose("s.json", text, true);
    for (const Diagnostic &diagnostic : diagnostics)
        locations << diagnostic.location();
    QCOMPARE(
        locations,
        QStringList({"s.json:2:12", "s.json:2:30", "s.json:3:26", "s.json:3:78", "s.json:4:27"}));
    QVERIFY(diagnostics.first().isSlip && !diagnostics.at(2).isSlip);
    QCOMPARE(diagnose("s.json", text, false).size(), 1);
}

void ScenarioSlipsTest::lostFaultsAreFound_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("slips");

    faultRow("none", {}, {});
    faultRow("same calls", {get("no-reply"), get("exit"), get("exit", "2")},
             {{3, shadowed}, {4, shadowed}});
    faultRow("same call", {get("no-reply", "2"), get("exit", "2"), get("no-reply")},
             {{3, shadowed}});
    faultRow("other calls", {get("no-reply", "1"), get("no-reply", "2147483647"), get("no-reply")},
             {});
    faultRow("all that are left", {get("exit", "1"), get("exit", "2"), get("no-reply")},
             {{3, end1}, {4, shadowed}});
    faultRow("a delay is something else", {get("no-reply"), get("delay"), get("delay", "2")},
             {{4, shadowed}});
    faultRow("another method",
             {get("no-reply"), R"({"fault": "no-reply", "method": "ChangeConfiguration"})",
              R"({"fault": "exit", "method": "ChangeConfiguration"})"},
             {{4, shadowed}});
    faultRow("after the end",
             {get("no-reply", "4"), get("bus-death", "3"), get("delay", "4"), get("no-reply", "2"),
              get("wrong-signature")},
             {{2, end3}, {4, end3}});
    faultRow("after an end at the first call", {get("exit"), get("delay", "2")}, {{3, end1}});
    faultRow("at the call of the end", {get("exit", "2"), get("no-reply", "2")}, {{3, shadowed}});
    faultRow("an end that is shadowed", {get("no-reply", "1"), get("exit", "1"), get("delay", "2")},
             {{3, shadowed}});
    faultRow("calls during a delayed end",
             {get("delay", "1"), get("exit", "1"), get("no-reply", "2")}, {});
    faultRow("a restart is no end", {get("restart", "1"), get("no-reply", "2")}, {});
    faultRow("an end with a later restart",
             {get("exit", "1"), get("no-reply", "2"), at("1", "restart")}, {});
    faultRow("no restart of the bus",
             {get("bus-death", "1"), get("no-reply", "2"), at("1", "restart")}, {{3, end1}});

    const QByteArrayList replies {get("wrong-signature", "1"), get("extra-arguments", "2"),
                                  get("too-large", "3"), get("no-reply")};
    const QByteArray empty = R"("configuration": {}, )";
    const std::initializer_list<QPair<int, QString>> lost {
        {2, refused}, {3, refused}, {4, refused}};
    faultRow("replies", replies, {}, empty + R"("configurable": true, "users": [0])");
    faultRow("no user", replies, lost, empty + "\"users\": []");
    faultRow("not configurable", replies, lost, empty + "\"configurable\": false");

    const char replacement[] = ", \"configuration\": {}";
    faultRow("after the exit",
             {at("1.001", "announce"), at("1", "exit"), at("1", "announce"),
              at("2", "announce-twice"), at("2", "flood", ", \"count\": 1"),
              at("2", "spoofed-signal"), at("2", "replace", replacement), at("2", "exit"),
              at("2", "bus-death")},
             {{2, away}, {5, away}, {6, away}, {7, away}, {8, away}, {9, away}});
    faultRow("after the bus",
             {at("1", "bus-death"), at("1", "announce"), at("2", "announce"), at("2", "bus-death"),
              at("2", "exit"), at("2", "restart"), at("2", "replace", replacement)},
             {{4, noBus}, {5, noBus}, {6, noBus}, {7, noBus}, {8, noBus}});
    faultRow("between exit and restart",
             {at("1", "exit"), at("2", "announce"), at("2", "replace", replacement),
              at("3", "restart"), at("3", "announce"), at("4", "announce")},
             {{3, away}, {6, away}});
    faultRow("exit and restart at once", {at("1", "restart"), at("1", "exit"), at("2", "announce")},
             {});
    faultRow("during a restart",
             {at("1", "restart", ", \"seconds\": 2"), at("2", "announce"), at("3", "announce"),
              at("2", "replace", replacement), at("2.5", "exit"), at("4", "announce")},
             {{3, away}, {4, away}, {7, away}});
    faultRow("at the end of a restart",
             {at("1", "restart", ", \"seconds\": 1"), at("2", "announce")}, {});
    faultRow("a restart ends another",
             {at("1", "restart", ", \"seconds\": 9"), at("2", "restart"), at("3", "announce")}, {});
    QTest::newRow("exit at the fault of another application") << scenarioOf(
        {application("viewer", R"("configuration": {}, "faults": [)" + at("1", "exit") + ']'),
         application("editor",
                     R"("configuration": {}, "faults": [)" + at("2", "announce") + ", "
                         + get("exit") + ", " + get("no-reply", "2") + ']')})
                                                              << "4: " + away + "\n4: " + end1;
    faultRow("what is invalid is not injected",
             {R"({"fault": "exit", "method": "GetConfiguration", "call": 0})", get("no-reply", "2"),
              at("-1", "exit"), at("1", "announce")},
             {{2, "invalid: expected an integer from 1 to 2147483647, found 0"},
              {4, "invalid: expected a number from 0 to 86400, found -1"}});
}

void ScenarioSlipsTest::lostFaultsAreFound()
{
    slipsWithSettingsAreFound();
}

QTEST_GUILESS_MAIN(ScenarioSlipsTest)

#include "scenario_slips_test.moc"
