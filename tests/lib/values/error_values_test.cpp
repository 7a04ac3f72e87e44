// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtDBus/QDBusError>
#include <QtDBus/QDBusMessage>
#include <QtTest/QtTest>

#include <Tarnvel/ManagedConfiguration/Error>

#include "message_log.h"

#include <type_traits>
#include <utility>

using namespace Tarnvel::Application::ManagedConfiguration;
using Tarnvel::Testing::MessageLog;

namespace {

const QString prefix = QStringLiteral("org.brenvik.ManagedConfiguration.Error.");

static_assert(std::is_same<std::underlying_type<Error::Code>::type, int>::value);
static_assert(std::is_convertible<Error::Code, Error>::value);
static_assert(std::is_constructible<bool, Error>::value);
static_assert(!std::is_convertible<Error, bool>::value);
static_assert(!std::is_convertible<Error, int>::value);

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

void addMessageRows()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << QString("");
    QTest::newRow("blanks") << QString(" \t\n ");
    QTest::newRow("a NUL inside") << QString::fromUtf8("a\0b", 3);
    QTest::newRow("a placeholder") << QString("%1 %2");
    QTest::newRow("quotes") << QString("\"it's\" \\ refused");
    QTest::newRow("beyond ASCII") << QString("Zugriff verweigert: Größe 日本 😀");
    QTest::newRow("an error name") << QString(prefix + "Forbidden");
    QTest::newRow("very long") << QString(100000, 'm');
}

} // namespace

class ErrorValuesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDefaultErrorIsASuccess();
    void everyCodeHasItsNumber();
    void theCodeAloneDecides_data();
    void theCodeAloneDecides();
    void anErrorKeepsItsMessage_data();
    void anErrorKeepsItsMessage();
    void aCodeConvertsToAnError();
    void aCopyIsIndependent();

    void noErrorBecomesASuccess_data();
    void noErrorBecomesASuccess();
    void anErrorWithoutANameBecomesASuccess();
    void everyErrorOfTheServiceBecomesItsCode_data();
    void everyErrorOfTheServiceBecomesItsCode();
    void thePrefixIsRemovedWhereverItStands_data();
    void thePrefixIsRemovedWhereverItStands();
    void anyOtherNameBecomesInternal_data();
    void anyOtherNameBecomesInternal();
    void everyErrorOfTheBusBecomesInternal();
    void theMessageOfTheBusIsKept_data();
    void theMessageOfTheBusIsKept();
};

void ErrorValuesTest::aDefaultErrorIsASuccess()
{
    const Error error;
    QCOMPARE(int(error.code()), 0);
    QVERIFY(error.message().isNull());
    QVERIFY(!error.isError());
    QVERIFY(!error);
}

void ErrorValuesTest::everyCodeHasItsNumber()
{
    QCOMPARE(int(Error::NoError), 0);
    for (const NamedCode &row : namedCodes)
        QCOMPARE(int(row.code), row.number);
}

void ErrorValuesTest::theCodeAloneDecides_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("isError");
    QTest::newRow("success with a message") << 0 << "something" << false;
    QTest::newRow("success with an empty message") << 0 << "" << false;
    QTest::newRow("success with a null message") << 0 << QString() << false;
    QTest::newRow("failure with an empty message") << 5 << "" << true;
    QTest::newRow("failure with a null message") << 5 << QString() << true;
    QTest::newRow("a code unknown to the enumeration") << 9 << "" << true;
    QTest::newRow("a negative code") << -1 << "" << true;
    QTest::newRow("a code with zeroes in its low bytes") << 0x10000 << "" << true;
    for (const NamedCode &row : namedCodes)
        QTest::newRow(row.name) << row.number << "refused" << true;
}

void ErrorValuesTest::theCodeAloneDecides()
{
    QFETCH(int, code);
    QFETCH(QString, message);
    QFETCH(bool, isError);

    const Error error(static_cast<Error::Code>(code), message);
    QCOMPARE(int(error.code()), code);
    QCOMPARE(error.message(), message);
    QCOMPARE(error.isError(), isError);
    QCOMPARE(static_cast<bool>(error), isError);
}

void ErrorValuesTest::anErrorKeepsItsMessage_data()
{
    addMessageRows();
}

void ErrorValuesTest::anErrorKeepsItsMessage()
{
    QFETCH(QString, message);

    const Error error(Error::InvalidValue, message);
    QCOMPARE(error.message(), message);
    QCOMPARE(error.message().isNull(), message.isNull());
}

void ErrorValuesTest::aCodeConvertsToAnError()
{
    const Error error = Error::Forbidden;
    QCOMPARE(int(error.code()), 5);
    QVERIFY(error.message().isNull());
}

void ErrorValuesTest::aCopyIsIndependent()
{
    Error error(Error::Forbidden, "locked");
    const Error copy(error);
    error = Error(Error::InvalidType, "not a number");
    QCOMPARE(int(copy.code()), 5);
    QCOMPARE(copy.message(), QString("locked"));
    QCOMPARE(int(error.code()), 3);
    QCOMPARE(error.message(), QString("not a number"));
}

void ErrorValuesTest::noErrorBecomesASuccess_data()
{
    QTest::addColumn<QDBusError>("dBusError");
    QTest::newRow("default") << QDBusError();
    QTest::newRow("an empty name") << makeDBusError("", "lost");
    QTest::newRow("a null name") << makeDBusError(QString(), "lost");
    QTest::newRow("no error, with a name") << QDBusError(QDBusError::NoError, "lost");
    QTest::newRow("a message that is no error")
        << QDBusError(QDBusMessage::createSignal("/path", "an.interface", "aSignal"));
}

void ErrorValuesTest::noErrorBecomesASuccess()
{
    QFETCH(QDBusError, dBusError);
    QVERIFY(!dBusError.isValid());

    MessageLog log;
    const Error error = errorFromDBus(dBusError);
    QCOMPARE(int(error.code()), 0);
    QVERIFY(error.message().isNull());
    QVERIFY(!error);
    QCOMPARE(log.take(), QStringList());
}

void ErrorValuesTest::anErrorWithoutANameBecomesASuccess()
{
    QDBusError nameless = makeDBusError(prefix + "Forbidden", "locked");
    // No constructor makes an error that is valid and has no name, but moving one away does.
    const QDBusError named = std::move(nameless);
    QVERIFY(nameless.isValid()); // NOLINT(bugprone-use-after-move)
    QVERIFY(nameless.name().isEmpty());

    const Error error = errorFromDBus(nameless);
    QCOMPARE(int(error.code()), 0);
    QVERIFY(error.message().isNull());
    QCOMPARE(int(errorFromDBus(named).code()), 5);
}

void ErrorValuesTest::everyErrorOfTheServiceBecomesItsCode_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("number");
    for (const NamedCode &row : namedCodes)
        QTest::newRow(row.name) << QString(row.name) << row.number;
}

void ErrorValuesTest::everyErrorOfTheServiceBecomesItsCode()
{
    QFETCH(QString, name);
    QFETCH(int, number);

    MessageLog log;
    const Error error = errorFromDBus(makeDBusError(prefix + name, "refused: " + name));
    QCOMPARE(int(error.code()), number);
    QCOMPARE(error.message(), QString("refused: " + name));
    QVERIFY(error.isError());
    QCOMPARE(log.take(), QStringList());
}

void ErrorValuesTest::thePrefixIsRemovedWhereverItStands_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("number");
    QTest::newRow("twice in front") << prefix + prefix + "InvalidValue" << 4;
    QTest::newRow("three times in front") << prefix + prefix + prefix + "Forbidden" << 5;
    QTest::newRow("in front and inside") << prefix + "Invalid" + prefix + "Value" << 4;
    QTest::newRow("in front and at the end") << prefix + "InvalidUserId" + prefix << 7;
    QTest::newRow("twice and nothing else") << prefix + prefix << 1;
    QTest::newRow("once, the second in capitals")
        << prefix + prefix.toUpper() + "InvalidValue" << 1;
}

void ErrorValuesTest::thePrefixIsRemovedWhereverItStands()
{
    QFETCH(QString, name);
    QFETCH(int, number);

    const Error error = errorFromDBus(makeDBusError(name, "refused"));
    QCOMPARE(int(error.code()), number);
    QCOMPARE(error.message(), QString("refused"));
}

void ErrorValuesTest::anyOtherNameBecomesInternal_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("the prefix alone") << prefix;
    QTest::newRow("the prefix without its last stop") << prefix.chopped(1);
    QTest::newRow("no stop before the suffix") << prefix.chopped(1) + "Forbidden";
    QTest::newRow("two stops before the suffix") << prefix + ".Forbidden";
    QTest::newRow("suffix in lower case") << prefix + "forbidden";
    QTest::newRow("suffix in capitals") << prefix + "FORBIDDEN";
    QTest::newRow("suffix cut short") << prefix + "Forbidde";
    QTest::newRow("suffix too long") << prefix + "ForbiddenValue";
    QTest::newRow("blank after the suffix") << prefix + "Forbidden ";
    QTest::newRow("suffix of a success") << prefix + "NoError";
    QTest::newRow("suffix that is a number") << prefix + "5";
    QTest::newRow("unknown suffix") << prefix + "OutOfMemory";
    QTest::newRow("prefix in lower case") << prefix.toLower() + "Forbidden";
    QTest::newRow("prefix in capitals") << prefix.toUpper() + "Forbidden";
    QTest::newRow("blank before the prefix") << " " + prefix + "Forbidden";
    QTest::newRow("prefix at the end") << "Forbidden" + prefix;
    QTest::newRow("prefix inside the suffix") << "For" + prefix + "bidden";
    QTest::newRow("prefix in the middle") << "com.acme." + prefix + "Forbidden";
    QTest::newRow("another service") << QString("org.acme.ManagedConfiguration.Error.Forbidden");
    QTest::newRow("suffix alone") << QString("Forbidden");
    QTest::newRow("the bus") << QString("org.freedesktop.DBus.Error.NoReply");
}

void ErrorValuesTest::anyOtherNameBecomesInternal()
{
    QFETCH(QString, name);

    MessageLog log;
    const Error error = errorFromDBus(makeDBusError(name, "Did not receive a reply."));
    QCOMPARE(int(error.code()), 1);
    QCOMPARE(error.message(), QString("Did not receive a reply."));
    QCOMPARE(log.take(), QStringList());
}

void ErrorValuesTest::everyErrorOfTheBusBecomesInternal()
{
    for (int type = QDBusError::NoError + 1; type <= QDBusError::LastErrorType; ++type) {
        const QDBusError dBusError(static_cast<QDBusError::ErrorType>(type), "The bus is gone.");
        const Error error = errorFromDBus(dBusError);
        QCOMPARE(int(error.code()), 1);
        QCOMPARE(error.message(), QString("The bus is gone."));
    }
}

void ErrorValuesTest::theMessageOfTheBusIsKept_data()
{
    addMessageRows();
}

void ErrorValuesTest::theMessageOfTheBusIsKept()
{
    QFETCH(QString, message);

    for (const QString &name : {QString(prefix + "Forbidden"), QString(prefix + "Unknown"),
                                QString("org.freedesktop.DBus.Error.Failed")}) {
        const QDBusError dBusError = makeDBusError(name, message);
        const Error error = errorFromDBus(dBusError);
        QCOMPARE(error.message(), message);
        QCOMPARE(error.message().isNull(), dBusError.message().isNull());
    }
}

QTEST_GUILESS_MAIN(ErrorValuesTest)

#include "error_values_test.moc"
