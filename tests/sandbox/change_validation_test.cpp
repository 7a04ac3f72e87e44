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

const char known[] = "{'theme': <'light'>, 'zoom': <100>, 'on': <true>, 'names': <['a']>, "
                     "'sizes': <[1, 2]>, 'flags': <[true]>, 'none': <@as []>, 'odd': <0.5>, "
                     "'window': <{'width': <800>, 'bar': <{'shown': <true>, 'colour': <'red'>}>}>}";

Application makeApplication()
{
    Application application;
    application.name = "acme/viewer";
    application.locked = QStringList {"window/bar/shown", "later"};
    AllowedValues theme;
    theme.path = "theme";
    theme.values = {parse("'light'"), parse("'dark'")};
    AllowedValues zoom;
    zoom.path = "zoom";
    zoom.minimum = 25;
    zoom.maximum = 400;
    AllowedValues sizes = zoom;
    sizes.path = "sizes";
    sizes.minimum = 0;
    AllowedValues colour;
    colour.path = "window/bar/colour";
    colour.values = {parse("'blue'")};
    AllowedValues width;
    width.path = "window/width";
    width.minimum = -5;
    application.allowed = {theme, zoom, sizes, colour, width};
    return application;
}

QString described(const std::optional<Refusal> &refusal)
{
    return refusal ? refusal->error + ": " + refusal->message : QString("admitted");
}

} // namespace

class ChangeValidationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aChangeIsRefusedForItsCause_data();
    void aChangeIsRefusedForItsCause();
    void whatTheApplicationHasLostMayComeBack();
    void aCallerIsRefusedForItsCause_data();
    void aCallerIsRefusedForItsCause();
};

void ChangeValidationTest::aChangeIsRefusedForItsCause_data()
{
    QTest::addColumn<QByteArray>("change");
    QTest::addColumn<QString>("outcome");

    const auto row = [](const char *name, const char *change, const char *outcome) {
        QTest::newRow(name) << QByteArray(change) << QString(outcome);
    };
    row("nothing", "@a{sv} {}", "admitted");
    row("all as it is", known, "admitted");
    row("everything at once",
        "{'theme': <'dark'>, 'zoom': <25>, 'on': <false>, 'names': <['', 'b']>, 'sizes': <[400]>, "
        "'flags': <[false, true]>, 'odd': <0.25>}",
        "admitted");

    row("key that is not there", "{'zom': <1>}", "NotExistingKey: \"zom\" does not exist");
    row("empty key", "{'': <1>}", "NotExistingKey: \"\" does not exist");
    row("key in other case", "{'Theme': <'dark'>}", "NotExistingKey: \"Theme\" does not exist");
    row("nested key that is not there",
        "{'window': <{'bar': <{'shown': <true>, 'colour': <'red'>, 'size': <1>}>}>}",
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
    row("configuration for a string", "{'theme': <@a{sv} {}>}",
        "InvalidType: \"theme\" is a string, not a configuration");
    row("supported type for an odd one", "{'odd': <1>}",
        "InvalidType: \"odd\" is of the type \"d\", not an integer");
    row("nested", "{'window': <{'bar': <{'shown': <true>}>, 'width': <'x'>}>}",
        "InvalidType: \"window/width\" is an integer, not a string");
    row("strings for an empty list", "{'none': <['x']>}", "admitted");
    row("integers for an empty list", "{'none': <[1]>}", "admitted");
    row("booleans for an empty list", "{'none': <[true]>}", "admitted");
    row("string for an empty list", "{'none': <'x'>}",
        "InvalidType: \"none\" is a list of strings, not a string");

    row("double", "{'zoom': <1.5>}",
        "UnsupportedType: \"zoom\" cannot be of the type \"d\": no setting can");
    row("list of doubles", "{'none': <[1.5]>}",
        "UnsupportedType: \"none\" cannot be of the type \"ad\": no setting can");
    row("other dictionary", "{'window': <{'a': 1}>}", "Forbidden: \"window/bar/shown\" is locked");
    row("nested double", "{'window': <{'bar': <{'shown': <true>}>, 'width': <1.5>}>}",
        "UnsupportedType: \"window/width\" cannot be of the type \"d\": no setting can");

    row("locked value", "{'window': <{'bar': <{'shown': <false>}>}>}",
        "Forbidden: \"window/bar/shown\" is locked");
    row("locked value gone", "{'window': <@a{sv} {}>}",
        "Forbidden: \"window/bar/shown\" is locked");
    row("lock before the missing key", "{'later': <1>}", "Forbidden: \"later\" is locked");
    row("nothing else in the way of a lock",
        "{'window': <{'bar': <{'shown': <true>, 'colour': <'blue'>}>}>}", "admitted");

    row("not in the list", "{'theme': <'blue'>}",
        "InvalidValue: \"theme\" may not be \"blue\", only \"light\", \"dark\"");
    row("below the range", "{'zoom': <24>}",
        "InvalidValue: \"zoom\" may not be 24, only 25 to 400");
    row("above the range", "{'zoom': <401>}",
        "InvalidValue: \"zoom\" may not be 401, only 25 to 400");
    row("end of the range", "{'zoom': <400>}", "admitted");
    row("item out of the range", "{'sizes': <[1, 401, -1]>}",
        "InvalidValue: \"sizes\" may not be 401, only 0 to 400");
    row("no items", "{'sizes': <@ai []>}", "admitted");
    row("range without an end", "{'window': <{'bar': <{'shown': <true>}>, 'width': <-6>}>}",
        "InvalidValue: \"window/width\" may not be -6, only -5 to 2147483647");
    row("nested, not in the list",
        "{'window': <{'bar': <{'shown': <true>, 'colour': <'green'>}>}>}",
        "InvalidValue: \"window/bar/colour\" may not be \"green\", only \"blue\"");
    row("a value that stays need not be allowed",
        "{'window': <{'width': <0>, 'bar': <{'shown': <true>, 'colour': <'red'>}>}>}", "admitted");
}

void ChangeValidationTest::aChangeIsRefusedForItsCause()
{
    QFETCH(QByteArray, change);
    const Configurations configurations {parse(known), parse(known)};
    QTEST(described(refuseChange(makeApplication(), configurations, parse(change).get())),
          "outcome");
}

void ChangeValidationTest::whatTheApplicationHasLostMayComeBack()
{
    const Configurations configurations {parse(known),
                                         parse("{'window': <{'bar': <{'shown': <true>}>}>}")};
    const Variant change = parse("{'window': <{'width': <1>, 'bar': <{'shown': <true>}>}>}");
    QCOMPARE(described(refuseChange(makeApplication(), configurations, change.get())),
             QString("admitted"));
}

void ChangeValidationTest::aCallerIsRefusedForItsCause_data()
{
    QTest::addColumn<bool>("isConfigurable");
    QTest::addColumn<bool>("isRestricted");
    QTest::addColumn<QVector<quint32>>("users");
    QTest::addColumn<qint64>("user");
    QTest::addColumn<QString>("outcome");

    constexpr qint64 unknown = -1;
    const QVector<quint32> two {0, 4294967294U};
    QTest::newRow("nobody is admitted") << true << true << QVector<quint32>() << qint64(0)
                                        << "InvalidUserId: user 0 may not use \"/p\"";
    QTest::newRow("unknown user") << true << true << two << unknown
                                  << "InvalidUserId: user (unknown) may not use \"/p\"";
    QTest::newRow("other user") << true << true << two << qint64(1)
                                << "InvalidUserId: user 1 may not use \"/p\"";
    QTest::newRow("not configurable for anybody")
        << false << true << two << qint64(1) << "NotConfigurable: \"/p\" is not configurable";
    QTest::newRow("not configurable")
        << false << false << two << qint64(0) << "NotConfigurable: \"/p\" is not configurable";
    QTest::newRow("unknown user where all are admitted")
        << true << false << two << unknown << "admitted";
    QTest::newRow("last of the users") << true << true << two << qint64(4294967294U) << "admitted";
    QTest::newRow("first of the users") << true << true << two << qint64(0) << "admitted";
}

void ChangeValidationTest::aCallerIsRefusedForItsCause()
{
    QFETCH(bool, isConfigurable);
    QFETCH(bool, isRestricted);
    QFETCH(QVector<quint32>, users);
    QFETCH(qint64, user);
    Application application = makeApplication();
    application.isConfigurable = isConfigurable;
    if (isRestricted)
        application.users = users;
    const std::optional<quint32> userId = user < 0
        ? std::nullopt
        : std::optional<quint32>(static_cast<quint32>(user));
    QTEST(described(refuseCaller(application, "/p", userId)), "outcome");
}

QTEST_GUILESS_MAIN(ChangeValidationTest)

#include "change_validation_test.moc"
