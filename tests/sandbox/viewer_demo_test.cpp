// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "program.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using Tarnvel::Testing::Outcome;
using Tarnvel::Testing::Program;

namespace {

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
    void theDemoShowsEveryChange();
    void theDemoFailsWhenALineIsMissing();
    void theDemoNeedsABuildDirectory();
    void aViewerWithoutConfigurationSaysWhyAndFails();
};

void ViewerDemoTest::theDemoShowsEveryChange()
{
    const QTemporaryDir directory;
    Program demo(DEMO);
    demo.setVariable("TMPDIR", directory.path());
    const Outcome outcome = demo.run({BUILD_DIR});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.output.split('\n'), QString(wholeOutput).split('\n'));
    QCOMPARE(outcome.status, 0);
    QVERIFY(QDir(directory.path()).isEmpty());
}

void ViewerDemoTest::theDemoFailsWhenALineIsMissing()
{
    const QTemporaryDir buildDirectory;
    const QDir tree(buildDirectory.path());
    QVERIFY(tree.mkpath("tools/sandbox") && tree.mkpath("examples/viewer"));
    QVERIFY(QFile::link(SANDBOX, tree.filePath("tools/sandbox/managed-configuration-sandbox")));
    QVERIFY(QFile::link("/bin/true", tree.filePath("examples/viewer/viewer")));
    const Outcome outcome = Program(DEMO).run({buildDirectory.path()});
    QCOMPARE(outcome.errors, QString("missing line: Reading the configuration: done\n"));
    QCOMPARE(outcome.status, 1);
}

void ViewerDemoTest::theDemoNeedsABuildDirectory()
{
    const Outcome outcome = Program(DEMO).run({});
    QCOMPARE(outcome.errors, QString("usage: demo BUILD_DIR\n"));
    QCOMPARE(outcome.status, 2);
}

void ViewerDemoTest::aViewerWithoutConfigurationSaysWhyAndFails()
{
    const Outcome outcome = Program(SANDBOX).run({"--", VIEWER});
    QCOMPARE(outcome.output,
             QString("Reading the configuration: failed, 6: no application is kept at "
                     "\"/acme_2eviewer\", nor at any other path\n"));
    QCOMPARE(outcome.status, 1);
}

QTEST_GUILESS_MAIN(ViewerDemoTest)

#include "viewer_demo_test.moc"
