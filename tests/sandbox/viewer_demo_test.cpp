// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

namespace {

constexpr int endTimeoutMs = 60000;

const char wholeOutput[] =
    R"(==> The viewer starts. The service keeps this configuration for it:
Reading the configuration: done
  theme         light
  zoom          100 %
  recent files  manual.pdf, invoice-2041.pdf, minutes.odt
  first tool    open
  proxy         proxy.acme.example:3128
Changing the proxy: failed, 5: "network/proxy" is locked
Changing the zoom: done
The configuration has changed
  theme         light
  zoom          125 %
  recent files  manual.pdf, invoice-2041.pdf, minutes.odt
  first tool    open
  proxy         proxy.acme.example:3128
==> The administrator makes the dark theme and a zoom of 150 % the rule.
The configuration has changed
  theme         dark
  zoom          150 %
  recent files  manual.pdf, invoice-2041.pdf, minutes.odt
  first tool    open
  proxy         proxy.acme.example:3128
==> The administrator sets another proxy, which the viewer may not.
The configuration has changed
  theme         dark
  zoom          150 %
  recent files  manual.pdf, invoice-2041.pdf, minutes.odt
  first tool    open
  proxy         cache.acme.example:8080
==> The sandbox is told to end, and ends the viewer.
==> Everything was seen.
)";

} // namespace

class ViewerDemoTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theDemoShowsEveryChange();
    void theDemoFailsWhenSomethingIsNotSeen();
    void theDemoNeedsABuildDirectory();
    void aViewerWithoutConfigurationSaysWhyAndFails();

private:
    void run(const QString &program, const QStringList &arguments);

    QScopedPointer<QTemporaryDir> m_directory;
    int m_status = 0;
    QString m_output;
    QString m_errors;
};

void ViewerDemoTest::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
}

void ViewerDemoTest::cleanup()
{
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList());
}

void ViewerDemoTest::run(const QString &program, const QStringList &arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TMPDIR", m_directory->path());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    QVERIFY2(process.waitForFinished(endTimeoutMs), qPrintable(process.errorString()));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    m_status = process.exitCode();
    m_output = QString::fromUtf8(process.readAllStandardOutput());
    m_errors = QString::fromUtf8(process.readAllStandardError());
}

void ViewerDemoTest::theDemoShowsEveryChange()
{
    run(DEMO, {BUILD_DIR});
    QCOMPARE(m_errors, QString());
    QCOMPARE(m_output.split('\n'), QString(wholeOutput).split('\n'));
    QCOMPARE(m_status, 0);
}

void ViewerDemoTest::theDemoFailsWhenSomethingIsNotSeen()
{
    const QTemporaryDir buildDirectory;
    const QDir tree(buildDirectory.path());
    QVERIFY(tree.mkpath("tools/sandbox") && tree.mkpath("examples/viewer"));
    QVERIFY(QFile::link(SANDBOX, tree.filePath("tools/sandbox/managed-configuration-sandbox")));
    QVERIFY(QFile::link("/bin/true", tree.filePath("examples/viewer/viewer")));
    run(DEMO, {buildDirectory.path()});
    QCOMPARE(m_errors, QString("This was not seen: Reading the configuration: done\n"));
    QCOMPARE(m_output.split('\n').first(), QString(wholeOutput).split('\n').first());
    QCOMPARE(m_status, 1);
}

void ViewerDemoTest::theDemoNeedsABuildDirectory()
{
    run(DEMO, {});
    QCOMPARE(m_errors, QString("usage: demo BUILD_DIR\n"));
    QCOMPARE(m_output, QString());
    QCOMPARE(m_status, 2);
}

void ViewerDemoTest::aViewerWithoutConfigurationSaysWhyAndFails()
{
    run(SANDBOX, {"--", VIEWER});
    QCOMPARE(m_output,
             QString("Reading the configuration: failed, 6: no application is kept at "
                     "\"/acme_2eviewer\", nor at any other path\n"));
    QCOMPARE(m_status, 1);
}

QTEST_GUILESS_MAIN(ViewerDemoTest)

#include "viewer_demo_test.moc"
