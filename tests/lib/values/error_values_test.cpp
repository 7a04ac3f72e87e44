// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "message_log.h"
#include "qt_version.h"

#include <QtDBus/QDBusError>
#include <QtDBus/QDBusMessage>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/error.h>

#include <type_traits>
#include <utility>

using namespace Tarnvel::Application::ManagedConfiguration;
using Tarnvel::Testing::MessageLog;
using Tarnvel::Testing::onQt6;

namespace {

const QString prefix = QStringLiteral("org.brenvik.ManagedConfiguration.Error.");

static_assert(std::is_convertible_v<Error::Code, Error>);
static_assert(std::is_constructible_v<bool, Error>);
static_assert(!std::is_convertible_v<Error, bool>);
static_assert(Error::NoError == 0);
static_assert(sizeof(Error) == (onQt6 ? 4 : 2) * sizeof(void *));

struct NamedCode
{
    const char *name;
    Error::Code code;
    int number;
};

const NamedCode namedCodes[] = {
    {"Internal", Error::Internal, 1},           {"NotExistingKey", Error::NotExistingKey, 2},
    {"InvalidType", Error::InvalidType, 3},     {"InvalidValue", Error::InvalidValue, 4},
    {"Forbidden", Error::Forbidden, 5},         {"NotConfigurable", Error::NotConfigurable, 6},
    {"InvalidUserId", Error::InvalidUserId, 7}, {"UnsupportedType", Error::UnsupportedType, 8},
};

QDBusError makeDBusError(const QString &name, const QString &message)
{
    return QDBusError(QDBusMessage::createError(name, message));
}

} // namespace

class ErrorValuesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDefaultErrorIsASuccess();
    void theCodeAloneDecides_data();
    void theCodeAloneDecides();
    void noErrorBecomesASuccess_data();
    void noErrorBecomesASuccess();
    void anErrorOfDBusBecomesACode_data();
    void anErrorOfDBusBecomesACode();
};

void ErrorValuesTest::aDefaultErrorIsASuccess()
{
    const Error error;
    QCOMPARE(int(error.code()), 0);
    QVERIFY(error.message().isNull());
    QVERIFY(!error);
}

void ErrorValuesTest::theCodeAloneDecides_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("isError");
    QTest::newRow("success with a message") << 0 << "something" << false;
    QTest::newRow("success with a null message") << 0 << QString() << false;
    QTest::newRow("failure with an empty message") << 5 << "" << true;
    QTest::newRow("failure with a null message") << 5 << QString() << true;
    QTest::newRow("a code unknown to the enumeration") << 9 << "" << true;
    QTest::newRow("a negative code") << -1 << "" << true;
    QTest::newRow("a code with zeroes in its low bytes") << 0x10000 << "" << true;
}

void ErrorValuesTest::theCodeAloneDecides()
{
    QFETCH(const int, code);
    QFETCH(const QString, message);
    QFETCH(const bool, isError);

    const Error error(static_cast<Error::Code>(code), message);
    QCOMPARE(int(error.code()), code);
    QCOMPARE(error.message(), message);
    QCOMPARE(error.message().isNull(), message.isNull());
    QCOMPARE(error.isError(), isError);
    QCOMPARE(static_cast<bool>(error), isError);
}

void ErrorValuesTest::noErrorBecomesASuccess_data()
{
    QDBusError nameless = makeDBusError(prefix + "Forbidden", "locked");
    // No constructor makes an error that is valid and has no name, but moving one away does.
    const QDBusError named = std::move(nameless);
    QVERIFY(nameless.isValid()); // NOLINT(bugprone-use-after-move)

    QTest::addColumn<QDBusError>("dBusError");
    QTest::newRow("no name") << nameless;
    QTest::newRow("default") << QDBusError();
    QTest::newRow("an empty name") << makeDBusError("", "lost");
    QTest::newRow("no error, with a name") << QDBusError(QDBusError::NoError, "lost");
    QTest::newRow("a message that is no error")
        << QDBusError(QDBusMessage::createSignal("/path", "an.interface", "aSignal"));
}

void ErrorValuesTest::noErrorBecomesASuccess()
{
    QFETCH(const QDBusError, dBusError);

    MessageLog log;
    const Error error = errorFromDBus(dBusError);
    QCOMPARE(int(error.code()), 0);
    QVERIFY(error.message().isNull());
    QCOMPARE(log.take(), QStringList());
}

void ErrorValuesTest::anErrorOfDBusBecomesACode_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("number");
    const auto row = [](const QString &name, int number) {
        QTest::newRow(qPrintable(name)) << name << number;
    };

    // What the service names.
    for (const NamedCode &named : namedCodes) {
        QCOMPARE(int(named.code), named.number);
        row(prefix + named.name, named.number);
    }
    // The prefix is removed wherever it stands.
    row(prefix + prefix + "InvalidValue", 4);
    row(prefix + prefix + prefix + "Forbidden", 5);
    row(prefix + "Invalid" + prefix + "Value", 4);
    row(prefix + "InvalidUserId" + prefix, 7);
    row(prefix + prefix, 1);
    row(prefix + prefix.toUpper() + "InvalidValue", 1);
    // Any other suffix.
    for (const char *suffix : {"", ".Forbidden", "forbidden", "FORBIDDEN", "Forbidde",
                               "ForbiddenValue", "Forbidden ", "NoError", "5", "OutOfMemory"})
        row(prefix + suffix, 1);
    // Any other prefix.
    for (const QString &other :
         {QString(), prefix.chopped(1), prefix.toLower(), prefix.toUpper(), ' ' + prefix,
          "com.acme." + prefix, "For" + prefix, QString("org.acme.ManagedConfiguration.Error."),
          QString("org.freedesktop.DBus.Error.")})
        row(other + "Forbidden", 1);
    row("Forbidden" + prefix, 1);
    // What Qt D-Bus names.
    for (int type = QDBusError::NoError + 1; type <= QDBusError::LastErrorType; ++type)
        row(QDBusError::errorString(static_cast<QDBusError::ErrorType>(type)), 1);
}

void ErrorValuesTest::anErrorOfDBusBecomesACode()
{
    QFETCH(const QString, name);
    QFETCH(const int, number);

    MessageLog log;
    const QString special = " %1 \"it's\" \\ größe 日本 😀 \t\n " + QString(1, '\0');
    for (const QString &message : {QString(""), name, name + special}) {
        const Error error = errorFromDBus(makeDBusError(name, message));
        QCOMPARE(int(error.code()), number);
        QCOMPARE(error.message(), message);
    }
    QCOMPARE(log.take(), QStringList());
}

QTEST_GUILESS_MAIN(ErrorValuesTest)

#include "error_values_test.moc"
