// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "service/change_validation.h"

#include <QtTest/QTest>

using namespace Tarnvel::Sandbox;

namespace {

Variant parse(const QByteArray &text)
{
    GError *error = nullptr;
    GVariant *const value = g_variant_parse(nullptr, text.constData(), nullptr, nullptr, &error);
    if (!value)
        qFatal("%s: %s", text.constData(), error->message);
    return adopt(value);
}

const char given[] = "{'theme': <'light'>, 'zoom': <100>, 'on': <true>, 'names': <['a']>, "
                     "'sizes': <[1, 2]>, 'flags': <[true]>, 'none': <@as []>, 'odd': <0.5>, "
                     "'window': <{'width': <800>, 'bar': <{'shown': <true>, 'color': <'red'>}>}>}";

AllowedValues range(const QString &path, qint32 minimum, qint32 maximum)
{
    return {path, {}, minimum, maximum};
}

AllowedValues choice(const QString &path, const QVector<Variant> &values)
{
    AllowedValues allowed;
    allowed.path = path;
    allowed.values = values;
    return allowed;
}

Application makeApplication()
{
    Application application;
    application.locked = QStringList {"window/bar/shown", "later"};
    application.allowed = {choice("theme", {parse("'light'"), parse("'dark'")}),
                           range("zoom", 25, 400), range("sizes", 0, 400),
                           choice("window/bar/color", {parse("'blue'")}),
                           range("window/width", -5, std::numeric_limits<qint32>::max())};
    return application;
}

QString described(const std::optional<Refusal> &refusal)
{
    return refusal ? refusal->error + ": " + refusal->message : QString("accepted");
}

} // namespace

class ChangeValidationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aChangeIsRefusedForItsReason_data();
    void aChangeIsRefusedForItsReason();
    void aLostSettingMayComeBack();
    void everySettingIsFound();
    void aCallerIsRefusedForItsReason();
};

void ChangeValidationTest::aChangeIsRefusedForItsReason_data()
{
    QTest::addColumn<QByteArray>("change");
    QTest::addColumn<QString>("outcome");

    const auto row = [](const char *name, const char *change, const char *outcome) {
        QTest::newRow(name) << QByteArray(change) << QString(outcome);
    };
    row("nothing", "@a{sv} {}", "accepted");
    row("all as it is", given, "accepted");
    row("everything at once",
        "{'theme': <'dark'>, 'zoom': <25>, 'on': <false>, 'names': <['', 'b']>, 'sizes': <[400]>, "
        "'flags': <[false, true]>, 'odd': <0.25>}",
        "accepted");

    row("key that is not there", "{'zom': <1>}", "NotExistingKey: \"zom\" does not exist");
    row("key with U+FEFF", "{'\\ufeffzoom': <1>}", "NotExistingKey: \"\ufeffzoom\" does not exist");
    row("nested key that is not there",
        "{'window': <{'bar': <{'shown': <true>, 'color': <'red'>, 'size': <1>}>}>}",
        "NotExistingKey: \"window/bar/size\" does not exist");

    row("string for an integer", "{'zoom': <'100'>}",
        "InvalidType: \"zoom\" is an integer, not a string");
    row("integer for a boolean", "{'on': <1>}", "InvalidType: \"on\" is a boolean, not an integer");
    row("boolean for a string", "{'theme': <true>}",
        "InvalidType: \"theme\" is a string, not a boolean");
    row("integers for strings", "{'names': <[1]>}",
        "InvalidType: \"names\" is a list of strings, not a list of integers");
    row("booleans for integers", "{'sizes': <[true]>}",
        "InvalidType: \"sizes\" is a list of integers, not a list of booleans");
    row("strings for booleans", "{'flags': <@as []>}",
        "InvalidType: \"flags\" is a list of booleans, not a list of strings");
    row("configuration for an odd type", "{'odd': <@a{sv} {}>}",
        "InvalidType: \"odd\" is of the type \"d\", not a configuration");
    for (const char *change : {"{'none': <['x']>}", "{'none': <[1]>}", "{'none': <[true]>}"})
        row(change, change, "accepted");

    row("double", "{'zoom': <1.5>}",
        "UnsupportedType: \"zoom\" cannot be of the type \"d\": no setting can");
    row("list of doubles", "{'none': <[1.5]>}",
        "UnsupportedType: \"none\" cannot be of the type \"ad\": no setting can");
    row("other dictionary", "{'window': <{'a': 1}>}", "Forbidden: \"window/bar/shown\" is locked");

    row("locked value gone", "{'window': <@a{sv} {}>}",
        "Forbidden: \"window/bar/shown\" is locked");
    row("lock before the missing key", "{'later': <1>}", "Forbidden: \"later\" is locked");
    row("nothing else in the way of a lock",
        "{'window': <{'bar': <{'shown': <true>, 'color': <'blue'>}>}>}", "accepted");

    row("not in the list", "{'theme': <'blue'>}",
        "InvalidValue: \"theme\" may not be \"blue\", only \"light\", \"dark\"");
    row("below the range", "{'zoom': <24>}",
        "InvalidValue: \"zoom\" may not be 24, only 25 to 400");
    row("above the range", "{'zoom': <401>}",
        "InvalidValue: \"zoom\" may not be 401, only 25 to 400");
    row("end of the range", "{'zoom': <400>}", "accepted");
    row("item out of the range", "{'sizes': <[1, 401, -1]>}",
        "InvalidValue: \"sizes\" may not be 401, only 0 to 400");
    row("no items", "{'sizes': <@ai []>}", "accepted");
    row("range without an end", "{'window': <{'bar': <{'shown': <true>}>, 'width': <-6>}>}",
        "InvalidValue: \"window/width\" may not be -6, only -5 to 2147483647");
    row("a value that stays need not be allowed",
        "{'window': <{'width': <0>, 'bar': <{'shown': <true>, 'color': <'red'>}>}>}", "accepted");
}

void ChangeValidationTest::aChangeIsRefusedForItsReason()
{
    QFETCH(QByteArray, change);
    const KeptConfiguration kept {inOrder(parse(given)), {}};
    QTEST(described(refuseChange(makeApplication(), kept, entriesOf(parse(change).get()))),
          "outcome");
}

void ChangeValidationTest::aLostSettingMayComeBack()
{
    const KeptConfiguration kept {
        inOrder(parse(given)),
        entriesOf(parse("{'window': <{'bar': <{'shown': <true>}>}>}").get())};
    const Variant change = parse("{'window': <{'width': <1>, 'bar': <{'shown': <true>}>}>}");
    QCOMPARE(described(refuseChange(makeApplication(), kept, entriesOf(change.get()))),
             QString("accepted"));
}

void ChangeValidationTest::everySettingIsFound()
{
    const QStringList keys {"", "A", "AA", "a", "\u00e9", "\U0001f600", "\uffee"};
    // The configuration grows by one key at a time, from none to all.
    Variant configuration = inOrder(parse("@a{sv} {}"));
    for (int count = 0; count < keys.size(); ++count) {
        Entries entries = entriesOf(configuration.get());
        for (int index = 0; index < keys.size(); ++index) {
            const Variant value = valueAt(configuration, {keys.at(index)});
            QCOMPARE(static_cast<bool>(value), index < count);
            QVERIFY(!value || g_variant_get_int32(value.get()) == index);
        }
        entries.insert(keys.at(count), adopt(g_variant_new_int32(count)));
        configuration = makeConfiguration(entries);
    }
}

void ChangeValidationTest::aCallerIsRefusedForItsReason()
{
    constexpr quint32 last = 4294967294U;
    const auto outcomeFor = [](const Application &application, std::optional<quint32> user) {
        return described(refuseCaller(application, "/p", user));
    };
    Application application;
    QCOMPARE(outcomeFor(application, {}), QString("accepted"));

    application.users = QVector<quint32>();
    QCOMPARE(outcomeFor(application, 0), QString("InvalidUserId: user 0 may not use \"/p\""));
    application.users = QVector<quint32> {0, last};
    QCOMPARE(outcomeFor(application, 1), QString("InvalidUserId: user 1 may not use \"/p\""));
    QCOMPARE(outcomeFor(application, {}),
             QString("InvalidUserId: user (unknown) may not use \"/p\""));
    QCOMPARE(outcomeFor(application, 0), QString("accepted"));
    QCOMPARE(outcomeFor(application, last), QString("accepted"));

    application.isConfigurable = false;
    for (const quint32 user : {0, 1})
        QCOMPARE(outcomeFor(application, user),
                 QString("NotConfigurable: \"/p\" is not configurable"));
}

QTEST_GUILESS_MAIN(ChangeValidationTest)

#include "change_validation_test.moc"
