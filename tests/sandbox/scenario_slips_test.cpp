// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "check/scenario_check.h"

#include <QtTest/QTest>

using namespace Tarnvel::Sandbox;

namespace {

const QByteArray configuration = R"("configuration": {"theme": "light", "zoom": 500, "none": [],
    "network": {"proxy": "p", "hosts": ["a", "b"], "ports": [1, 2]}, "odd": {"$gvariant": "{'a': <1>}"}})";
const QString settings = "use a setting of the configuration: network, none, odd, theme, zoom";

QByteArray application(const QByteArray &name, const QByteArray &members)
{
    return R"({"organization": "acme", "application": ")" + name + "\",\n" + members + '}';
}

QByteArray scenarioOf(const QByteArrayList &applications)
{
    return R"({"applications": [)" + applications.join(",\n") + "]}";
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

} // namespace

class ScenarioSlipsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void slipsWithSettingsAreFound_data();
    void slipsWithSettingsAreFound();
    void slipsHaveTheirColumns();
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
        "3: \"theme\" may only be 1 to 2, not \"light\"" + change);
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
    const QByteArray text = scenarioOf(
        {application("viewer",
                     "\"locked\": [\"a\"], \"allowed\": {\"b\": [1],\n\"zoom\": [1]}, \"faults\": "
                     "[1],\n\"configuration\": {\"zoom\": 2}")});
    QStringList locations;
    const QVector<Diagnostic> diagnostics = diagnose("s.json", text, true);
    for (const Diagnostic &diagnostic : diagnostics)
        locations << diagnostic.location();
    QCOMPARE(locations, QStringList({"s.json:2:12", "s.json:2:30", "s.json:3:26", "s.json:4:27"}));
    QVERIFY(diagnostics.first().isSlip && !diagnostics.at(2).isSlip);
    QCOMPARE(diagnose("s.json", text, false).size(), 1);
}

QTEST_GUILESS_MAIN(ScenarioSlipsTest)

#include "scenario_slips_test.moc"
