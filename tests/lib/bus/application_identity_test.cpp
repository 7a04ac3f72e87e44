// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "message_log.h"

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

const QString namesMissing = QStringLiteral(
    "Organization name and application name must be set to work with managed configuration");

void addRow(const char *name, const char *organization, const char *application, const char *path)
{
    QTest::newRow(name) << organization << application << path;
}

} // namespace

class ApplicationIdentityTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void theNamesMakeTheObjectPath_data();
    void theNamesMakeTheObjectPath();
    void aNameWithoutAValidPathFailsEveryRequest_data();
    void aNameWithoutAValidPathFailsEveryRequest();
    void theIdentityIsReadWhenTheManagerIsCreated();
};

void ApplicationIdentityTest::theNamesMakeTheObjectPath_data()
{
    QTest::addColumn<QString>("organization");
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("path");

    addRow("both names empty", "", "", "/_2e");
    addRow("organization name empty", "", "viewer", "/_2eviewer");
    addRow("application name empty", "acme", "", "/acme_2e");
    addRow("dot in the organization name", "acme.labs", "viewer", "/acme_2elabs_2eviewer");
    addRow("dot in the application name", "acme", "my.app", "/acme_2emy_2eapp");
    addRow("dots everywhere", "a.b.c", "d.e", "/a_2eb_2ec_2ed_2ee");
    addRow("dots alone", ".", "..", "/_2e_2e_2e_2e");
    addRow("underscores, digits and capitals", "a_2E", "7", "/a_2E_2e7");
    addRow("a placeholder that the second name takes", "x%2", "y", "/xy_2ey");
    addRow("a slash", "a/b", "c", "/a/b_2ec");
}

void ApplicationIdentityTest::theNamesMakeTheObjectPath()
{
    QFETCH(const QString, organization);
    QFETCH(const QString, application);
    QFETCH(const QString, path);

    QCoreApplication::setOrganizationName(organization);
    QCoreApplication::setApplicationName(application);
    MessageLog log;
    ConfigurationManager manager;
    const bool isIncomplete = organization.isEmpty() || application.isEmpty();
    QCOMPARE(log.take(), isIncomplete ? QStringList({namesMissing, namesMissing}) : QStringList());

    QCOMPARE(awaitRead(manager), R"({"key": int 7})");
    QCOMPARE(m_service.calls().count(), 1);
    QCOMPARE(m_service.calls().first().path, path);

    const Announcements announcements(manager);
    m_service.announceChange(path);
    TRY_COMPARE(announcements.texts(), QStringList(R"({"key": int 7})"));
    QCOMPARE(log.take(), QStringList());
}

void ApplicationIdentityTest::aNameWithoutAValidPathFailsEveryRequest_data()
{
    QTest::addColumn<QString>("organization");
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("path");

    addRow("blank", "acme", "my viewer", "/acme_2emy viewer");
    addRow("hyphen", "acme-labs", "viewer", "/acme-labs_2eviewer");
    addRow("not ASCII", "größe", "viewer", "/größe_2eviewer");
    addRow("slash at the end", "acme", "viewer/", "/acme_2eviewer/");
    addRow("two slashes", "a//b", "c", "/a//b_2ec");
    addRow("a placeholder that leaves one behind", "x%1", "y", "/xy_2e%2");
    addRow("a placeholder in the second name", "x", "%1", "/x_2e%1");
}

void ApplicationIdentityTest::aNameWithoutAValidPathFailsEveryRequest()
{
    QFETCH(const QString, organization);
    QFETCH(const QString, application);
    QFETCH(const QString, path);

    QCoreApplication::setOrganizationName(organization);
    QCoreApplication::setApplicationName(application);
    MessageLog log;
    ConfigurationManager manager;
    const Answers answers;
    manager.getConfiguration(answers.forReading());
    manager.changeConfiguration(Configuration(), answers.forChanging());
    QCOMPARE(answers.count(), 0);
    QVERIFY(answers.waitFor(2));

    const QString invalidPath = QStringLiteral("{} error 1: Invalid object path: ") + path;
    QCOMPARE(answers.texts(), QStringList({invalidPath, invalidPath}));
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(m_service.calls().count(), 0);
}

void ApplicationIdentityTest::theIdentityIsReadWhenTheManagerIsCreated()
{
    QCoreApplication::setOrganizationName("acme");
    QCoreApplication::setApplicationName("before");
    ConfigurationManager manager;
    QCoreApplication::setApplicationName("after");
    QCOMPARE(awaitRead(manager), R"({"key": int 7})");
    QCOMPARE(m_service.calls().first().path, "/acme_2ebefore");
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
