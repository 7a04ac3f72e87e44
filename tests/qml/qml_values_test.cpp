// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "document_tables.h"
#include "element.h"
#include "message_log.h"

#include <QtCore/QDateTime>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QUrl>

#include <algorithm>
#include <iterator>

using namespace Tarnvel::Testing;

namespace {

// The same JSON as JSON.stringify() writes it.
QString normalized(const QString &json)
{
    const QByteArray list = QJsonDocument::fromJson('[' + json.toUtf8() + ']')
                                .toJson(QJsonDocument::Compact);
    return QString::fromUtf8(list.mid(1, list.size() - 2));
}

} // namespace

class QmlValuesTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void eachSupportedValueIsTheSameThereAndBack_data();
    void eachSupportedValueIsTheSameThereAndBack();
    void eachEmptyListIsSentWithItsType_data();
    void eachEmptyListIsSentWithItsType();
    void valuesThatAreNotReadHaveTheirDefaults_data();
    void valuesThatAreNotReadHaveTheirDefaults();
    void eachUnsupportedTypeIsConvertedOrRefused_data();
    void eachUnsupportedTypeIsConvertedOrRefused();
    void defaultsAreReplaced_data();
    void defaultsAreReplaced();
    void aChangeIsSent_data();
    void aChangeIsSent();
    void aChangeIsRefusedAtItsPath_data();
    void aChangeIsRefusedAtItsPath();

private:
    static QVector<Row> rowsBelow(const QString &header)
    {
        QVector<Row> rows;
        const QVector<Row> all = rowsOf("values.md");
        std::copy_if(all.begin(), all.end(), std::back_inserter(rows),
                     [&header](const Row &row) { return row.header == header; });
        if (rows.isEmpty())
            qFatal("values.md has no table %s", qUtf8Printable(header));
        return rows;
    }

    static void addRows(const QString &header)
    {
        QTest::addColumn<QStringList>("cells");
        const QVector<Row> rows = rowsBelow(header);
        for (const Row &row : rows)
            QTest::newRow(qUtf8Printable(row.line)) << row.cells();
    }

    // An element that has read \a kept.
    std::unique_ptr<Element> makeElement(const QString &defaults, const QString &kept)
    {
        m_service.replyWith("(" + kept + ",)");
        auto element = std::make_unique<Element>(m_engine, defaults);
        if (!element->reload())
            qFatal("%s was not read", qUtf8Printable(kept));
        return element;
    }

    Engine m_engine;
};

void QmlValuesTest::eachSupportedValueIsTheSameThereAndBack_data()
{
    addRows("| D-Bus type | on the wire | in C++ | in JSON |");
}

void QmlValuesTest::eachSupportedValueIsTheSameThereAndBack()
{
    QFETCH(const QStringList, cells);
    const QString kept = QStringLiteral("{'key': <%1>}").arg(cells.at(1));
    const QString json = normalized(cells.at(3));

    const auto element = makeElement("({})", kept);
    QCOMPARE(element->eval("values.key"), json);
    QCOMPARE(element->eval("Array.isArray(values.key)"), json.startsWith('[') ? "true" : "false");
    element->change("values");
    QCOMPARE(element->awaitLog(), R"(["NoError "])");
    // Another one that is the same.
    element->change("{key: " + json + '}');
    QCOMPARE(element->awaitLog(), R"(["NoError "])");
    QCOMPARE(m_service.changes(), QStringList({"(" + kept + ",)", "(" + kept + ",)"}));
}

void QmlValuesTest::eachEmptyListIsSentWithItsType_data()
{
    addRows("| empty list of type | on the wire | read back |");
}

void QmlValuesTest::eachEmptyListIsSentWithItsType()
{
    QFETCH(const QStringList, cells);
    const QString &wire = cells.at(1);
    const QString item = wire == "@ai []" ? "7" : wire == "@ab []" ? "true" : "'x'";
    const QString change = QStringLiteral("({'key': <%1>},)").arg(wire);

    for (const char *const kept : {"{'key': <[%1]>}", "{'other': <%1>}"}) {
        const auto element = makeElement("({key: [" + item + "]})", QString(kept).arg(item));
        element->change("{key: []}");
        QCOMPARE(element->awaitLog(), R"(["NoError "])");
        QCOMPARE(m_service.changes().constLast(), change);
    }
    const auto element = makeElement("({key: 'default'})", change.mid(1).chopped(2));
    QCOMPARE(element->eval("values.key"), cells.at(2).isEmpty() ? R"("default")" : "[]");
}

void QmlValuesTest::valuesThatAreNotReadHaveTheirDefaults_data()
{
    addRows("| D-Bus type | on the wire | warning |");
}

void QmlValuesTest::valuesThatAreNotReadHaveTheirDefaults()
{
    QFETCH(const QStringList, cells);
    const MessageLog log;
    const auto element = makeElement("({key: 'default', other: 1})",
                                     QString("{'key': <%1>, 'other': <2>}").arg(cells.at(1)));
    QCOMPARE(element->eval("values"), R"({"key":"default","other":2})");
}

void QmlValuesTest::eachUnsupportedTypeIsConvertedOrRefused_data()
{
    addRows("| unsupported type | use instead |");
}

void QmlValuesTest::eachUnsupportedTypeIsConvertedOrRefused()
{
    QFETCH(const QStringList, cells);
    struct Sample
    {
        QVariant value;
        // Null if it is refused.
        QString sent;
    };
    const QMap<QString, Sample> samples {
        {"double", {7.5, {}}},
        {"float", {7.5F, {}}},
        {"uint", {4294967295U, {}}},
        {"qlonglong", {2147483648LL, {}}},
        {"qulonglong", {2147483648ULL, {}}},
        {"short", {QVariant::fromValue<short>(7), "7"}},
        {"ushort", {QVariant::fromValue<ushort>(7), "7"}},
        {"char", {QVariant::fromValue('7'), "55"}},
        {"QChar", {QChar('7'), "'7'"}},
        {"QByteArray", {QByteArray("7"), {}}},
        {"QUrl", {QUrl("a:7"), {}}},
        {"QDateTime", {QDateTime::currentDateTime(), {}}},
        {"QVariantList", {QVariantList {1, "x"}, {}}},
        {"QVariantMap", {QVariantMap {{"a", 7.5}}, {}}},
        {"QVariantHash", {QVariantHash {{"a", 7.5}}, {}}},
        {"QJsonObject", {QJsonObject {{"a", 7.5}}, {}}},
    };
    QVERIFY(samples.contains(cells.at(0)));
    const Sample sample = samples.value(cells.at(0));
    const auto element = makeElement("({})", "{'key': <7>}");
    // As a script gets it from a property of another object.
    m_engine.rootContext()->setContextProperty("sample", sample.value);
    element->change("{key: sample}");
    const QString answer = sample.sent.isNull() ? "[\"InvalidType " : R"(["NoError "])";
    QVERIFY(element->awaitLog().startsWith(answer));
    element->change("{fence: 1}");
    QCOMPARE(element->awaitLog(), R"(["NoError "])");
    const QString sent = sample.sent.isNull() ? "({'fence': <1>},)"
                                              : QString("({'key': <%1>},)").arg(sample.sent);
    QCOMPARE(m_service.changes().constFirst(), sent);
}

void QmlValuesTest::defaultsAreReplaced_data()
{
    QTest::addColumn<QString>("defaults");
    QTest::addColumn<QString>("kept");
    QTest::addColumn<QString>("values");

    const auto row = [](const char *name, const QString &defaults, const QString &kept,
                        const QString &values) {
        QTest::newRow(name) << defaults << kept << values;
    };
    row("nothing kept", "{a: 0.5, b: null, c: [[1]], d: {}}", "{'e': <1>}",
        R"({"a":0.5,"b":null,"c":[[1]],"d":{},"e":1})");
    row("no default", "{n: {a: 1}}", "{'n': <{'b': <{'c': <[1]>}>}>, 'o': <{'d': <{'e': <1>}>}>}",
        R"({"n":{"a":1,"b":{"c":[1]}},"o":{"d":{"e":1}}})");
    row("as deep as a configuration", "{}",
        QString("{'n': <").repeated(20) + "@a{sv} {}" + QString(">}").repeated(20),
        QString(R"({"n":)").repeated(20) + "{}" + QString("}").repeated(20));
    row("another type", "{a: 'x', b: true, c: []}", "{'a': <1>, 'b': <'y'>, 'c': <2>}",
        R"({"a":1,"b":"y","c":2})");
    row("nested", "{n: {a: 1, b: {c: 2, d: 3}}}", "{'n': <{'a': <5>, 'b': <{'d': <6>}>}>}",
        R"({"n":{"a":5,"b":{"c":2,"d":6}}})");
    row("array as a whole", "{a: [1, 2, 3]}", "{'a': <[9]>}", R"({"a":[9]})");
    row("value for an object", "{n: {a: 1}}", "{'n': <7>}", R"({"n":{"a":1}})");
    row("object for a value", "{a: 1, b: []}", "{'a': <{'b': <2>}>, 'b': <{'b': <2>}>}",
        R"({"a":1,"b":[]})");
    row("keys like properties", "{keys: 1, length: 2, 7: 4, '': 5}",
        "{'keys': <10>, 'length': <20>, 'toString': <30>, '7': <40>, '': <50>, '__proto__': <{'a': "
        "<1>}>}",
        R"({"7":40,"keys":10,"length":20,"":50,"__proto__":{"a":1},"toString":30})");
    row("Unicode", "{'ä\\u0000/[': 1}", "{'ä': <5>}", R"({"ä\u0000/[":1,"ä":5})");
}

void QmlValuesTest::defaultsAreReplaced()
{
    QFETCH(const QString, defaults);
    QFETCH(const QString, kept);
    const auto element = makeElement("(" + defaults + ")", kept);
    QTEST(element->eval("values"), "values");
    QCOMPARE(element->eval("defaults"), Element(m_engine).eval("(" + defaults + ")"));
}

void QmlValuesTest::aChangeIsSent_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("sent");

    const auto row = [](const QString &change, const QString &sent) {
        QTest::newRow(qUtf8Printable(change)) << change << sent;
    };
    row("{}", "@a{sv} {}");
    row("{'': ''}", "{'': <''>}");
    row("{k: 7.0, l: 0.5 + 0.5, m: -0}", "{'k': <7>, 'l': <1>, 'm': <0>}");
    row("{k: 2147483647, l: -2147483648}", "{'k': <2147483647>, 'l': <-2147483648>}");
    row("{k: [0.5 + 0.5, 2], l: [false], m: ['']}", "{'k': <[1, 2]>, 'l': <[false]>, 'm': <['']>}");
    row("{k: texts, l: numbers}", "{'k': <['a', 'b']>, 'l': <[1, 2]>}");
    row("{key: [], unknown: []}", "{'key': <@as []>, 'unknown': <@as []>}");
    // The siblings are those that the service keeps.
    row("{n: {a: 5}}", "{'n': <{'a': <5>, 'b': <{'c': <2>, 'd': <['x']>}>}>}");
    row("{n: {b: {c: 5}}}", "{'n': <{'a': <1>, 'b': <{'c': <5>, 'd': <['x']>}>}>}");
    row("{n: {}}", "{'n': <{'a': <1>, 'b': <{'c': <2>, 'd': <['x']>}>}>}");
    row("{n: 5}", "{'n': <5>}");
    row("{n: {b: {d: []}}}", "{'n': <{'a': <1>, 'b': <{'c': <2>, 'd': <@as []>}>}>}");
    row("{key: {a: 5}, unknown: {a: {}}}",
        "{'key': <{'a': <5>}>, 'unknown': <{'a': <@a{sv} {}>}>}");
    row("Object.create(null)", "@a{sv} {}");
}

void QmlValuesTest::aChangeIsSent()
{
    QFETCH(const QString, change);
    QFETCH(const QString, sent);

    m_engine.rootContext()->setContextProperty("texts", QStringList {"a", "b"});
    m_engine.rootContext()->setContextProperty("numbers", QVariant::fromValue(QList<int> {1, 2}));
    const auto element = makeElement(
        "({n: {b: {c: 0}}})", "{'key': <7>, 'n': <{'a': <1>, 'b': <{'c': <2>, 'd': <['x']>}>}>}");
    element->change(change);
    QCOMPARE(element->awaitLog(), R"(["NoError "])");
    QCOMPARE(m_service.changes(), QStringList("(" + sent + ",)"));
}

void QmlValuesTest::aChangeIsRefusedAtItsPath_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("path");

    const QVector<Row> rows = rowsBelow("| in JSON | why it is refused |");
    for (const Row &row : rows)
        QTest::newRow(qUtf8Printable(row.line)) << "{a: " + row.cells().constFirst() + '}' << "a";
    const QString values =
        R"(undefined | NaN | Infinity | 1e300 | -2147483649 | 'x\0' | ['\ud800'] | () => 1 |
        new Date() | /x/ | new Map() | Symbol('x') | [Symbol('x')] | [1, undefined] | [1,,2] |
        ['x', null] | [true, 1] | [1, 0.5] | new Array(4294967295) | new ArrayBuffer(3) |
        new Uint8Array(2) | new (class A { constructor() { this.b = Symbol() } })() |
        new (class A { push() {} })() | new Number(7) | new String('x') | managed |
        managed.status.constructor | new Error('x') |
        (function() { const o = []; o.push(o); return o })() | Object.create({b: 1}))";
    const QStringList list = values.split('|');
    for (const QString &value : list)
        QTest::newRow(qUtf8Printable(value.trimmed())) << "{a: " + value.trimmed() + '}' << "a";
    QTest::newRow("the first") << "{a: 1, b: {c: 1, d: null}, e: null}"
                               << "b/d";
    QTest::newRow("in itself") << "(function() { const o = {}; o.a = o; o.b = o; return o })()"
                               << QString("/a").repeated(21).mid(1);
    QTest::newRow("invalid key") << R"({a: 1, 'b\0': 1})"
                                 << R"(b\u0000)";
    QTest::newRow("throws") << "Object.defineProperty({}, 'a', {get: () => { throw 1 }})"
                            << "a";
    for (const char *const change : {"undefined", "null", "[1]", "7", "'x'", "managed"})
        QTest::newRow(change) << change << QString();
}

void QmlValuesTest::aChangeIsRefusedAtItsPath()
{
    QFETCH(const QString, change);
    QFETCH(const QString, path);

    const auto element = makeElement("({})", "{'key': <7>}");
    element->eval("(log.managed = this, 0)");
    element->change(QString(change).replace("managed", "log.managed"));
    QCOMPARE(element->eval("log"), "[]");
    const QString answer = element->awaitLog();
    QVERIFY2(answer.startsWith(path.isNull() ? "[\"InvalidType a change must be an object"
                                             : "[\"InvalidType \\\"" + path + "\\\" is neither"),
             qUtf8Printable(answer));
    element->change("{fence: 1}");
    QCOMPARE(element->awaitLog(), R"(["NoError "])");
    QCOMPARE(m_service.changes(), QStringList("({'fence': <1>},)"));
}

TARNVEL_BUS_TEST_MAIN(QmlValuesTest)

#include "qml_values_test.moc"
