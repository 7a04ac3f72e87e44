// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"
#include "answers.h"
#include "bus_fixture.h"
#include "message_log.h"

#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

const QString namesMissing = QStringLiteral(
    "Organization name and application name must be set to work with managed configuration");

} // namespace

class ApplicationIdentityTest : public QObject
{
    Q_OBJECT

public:
    explicit ApplicationIdentityTest(BusFixture &fixture) : m_service(fixture.service) { }

private Q_SLOTS:
    void theNamesMakeTheObjectPath_data();
    void theNamesMakeTheObjectPath();
    void aNameThatNoPathAdmitsFailsEveryRequest_data();
    void aNameThatNoPathAdmitsFailsEveryRequest();
    void theIdentityIsThatOfTheManagersMaking();

private:
    FakeService &m_service;
};

void ApplicationIdentityTest::theNamesMakeTheObjectPath_data()
{
    QTest::addColumn<QString>("organization");
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("path");

    const auto row = [](const char *name, const char *organization, const char *application,
                        const char *path) {
        QTest::newRow(name) << organization << application << path;
    };
    row("both names empty", "", "", "/_2e");
    row("organization name empty", "", "viewer", "/_2eviewer");
    row("application name empty", "acme", "", "/acme_2e");
    row("plain", "acme", "viewer", "/acme_2eviewer");
    row("dot in the organization name", "acme.labs", "viewer", "/acme_2elabs_2eviewer");
    row("dot in the application name", "acme", "my.app", "/acme_2emy_2eapp");
    row("dots everywhere", "a.b.c", "d.e", "/a_2eb_2ec_2ed_2ee");
    row("dots alone", ".", "..", "/_2e_2e_2e_2e");
    row("underscores and digits", "a_2e", "7", "/a_2e_2e7");
    row("letter case", "ACME", "Viewer", "/ACME_2eViewer");
    row("a placeholder that the second name takes", "x%2", "y", "/xy_2ey");
    row("a placeholder in the second name", "x", "y_z", "/x_2ey_z");
    row("a slash", "a/b", "c", "/a/b_2ec");
}

void ApplicationIdentityTest::theNamesMakeTheObjectPath()
{
    QFETCH(const QString, organization);
    QFETCH(const QString, application);
    QFETCH(const QString, path);

    QCoreApplication::setOrganizationName(organization);
    QCoreApplication::setApplicationName(application);
    m_service.answerWith("({'key': <7>},)");
    MessageLog log;
    ConfigurationManager manager;
    const bool isIncomplete = organization.isEmpty() || application.isEmpty();
    QCOMPARE(log.take(), isIncomplete ? QStringList({namesMissing, namesMissing}) : QStringList());

    const int calls = m_service.calls().count();
    Answers answers;
    manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QVERIFY(!answers.at(0).error);
    QCOMPARE(m_service.calls().count(), calls + 1);
    QCOMPARE(m_service.calls().last().path, path);

    const Announcements announcements(manager);
    m_service.announceChange(path);
    QTRY_COMPARE(announcements.texts(), QStringList("{\"key\": int 7}"));
    QCOMPARE(log.take(), QStringList());
}

void ApplicationIdentityTest::aNameThatNoPathAdmitsFailsEveryRequest_data()
{
    QTest::addColumn<QString>("organization");
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("path");

    QTest::newRow("blank") << "acme"
                           << "my viewer"
                           << "/acme_2emy viewer";
    QTest::newRow("hyphen") << "acme-labs"
                            << "viewer"
                            << "/acme-labs_2eviewer";
    QTest::newRow("not ASCII") << QStringLiteral("größe") << "viewer"
                               << QStringLiteral("/größe_2eviewer");
    QTest::newRow("slash at the end") << "acme"
                                      << "viewer/"
                                      << "/acme_2eviewer/";
    QTest::newRow("two slashes") << "a//b"
                                 << "c"
                                 << "/a//b_2ec";
    QTest::newRow("a placeholder that leaves one behind") << "x%1"
                                                          << "y"
                                                          << "/xy_2e%2";
    QTest::newRow("a placeholder in the second name") << "x"
                                                      << "%1"
                                                      << "/x_2e%1";
}

void ApplicationIdentityTest::aNameThatNoPathAdmitsFailsEveryRequest()
{
    QFETCH(const QString, organization);
    QFETCH(const QString, application);
    QFETCH(const QString, path);

    QCoreApplication::setOrganizationName(organization);
    QCoreApplication::setApplicationName(application);
    MessageLog log;
    ConfigurationManager manager;
    QCOMPARE(log.take(), QStringList());
    const int calls = m_service.calls().count();
    Answers answers;
    manager.getConfiguration(answers.forReading());
    manager.changeConfiguration(Configuration(), answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(2));

    const QString refusal = QStringLiteral("{} error 1: Invalid object path: %1").arg(path);
    QCOMPARE(answers.texts(), QStringList({refusal, refusal}));
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(m_service.calls().count(), calls);
}

void ApplicationIdentityTest::theIdentityIsThatOfTheManagersMaking()
{
    QCoreApplication::setOrganizationName(QStringLiteral("acme"));
    QCoreApplication::setApplicationName(QStringLiteral("before"));
    ConfigurationManager manager;
    QCoreApplication::setApplicationName(QStringLiteral("after"));
    Answers answers;
    manager.getConfiguration(answers.forReading());
    QVERIFY(answers.waitFor(1));
    QCOMPARE(m_service.calls().last().path, QStringLiteral("/acme_2ebefore"));
}

int main(int, char *argv[])
{
    // An executable without a name: the application name would otherwise fall back to it.
    int count = 1;
    char noName[] = "";
    char *noNameArguments[] = {noName, nullptr};
    BusFixture fixture(count, noNameArguments);
    ApplicationIdentityTest test(fixture);
    return QTest::qExec(&test, QStringList(QString::fromLocal8Bit(argv[0])));
}

#include "application_identity_test.moc"
