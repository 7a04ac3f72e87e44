// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "program.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using Tarnvel::Testing::Outcome;
using Tarnvel::Testing::Program;

class ViewerDemoTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theDemoShowsEveryChange();
    void theDemoFailsWhenALineIsMissing();
    void aViewerWithoutConfigurationSaysWhyAndFails();
};

void ViewerDemoTest::theDemoShowsEveryChange()
{
    const QTemporaryDir directory;
    Program demo(DEMO);
    demo.setVariable("TMPDIR", directory.path());
    const Outcome outcome = demo.run({VIEWER, SANDBOX});
    QCOMPARE(outcome.errors, QString());
    // The demo itself checks the lines that differ.
    QCOMPARE(outcome.output.count("  recent files  manual.pdf, invoice-2041.pdf, minutes.odt\n"
                                  "  first tool    open\n"),
             4);
    QVERIFY2(outcome.output.endsWith("\n==> Everything was seen.\n"), qPrintable(outcome.output));
    QCOMPARE(outcome.status, 0);
    QVERIFY(QDir(directory.path()).isEmpty());
}

void ViewerDemoTest::theDemoFailsWhenALineIsMissing()
{
    const Outcome outcome = Program(DEMO).run({"/bin/true", SANDBOX});
    QCOMPARE(outcome.errors, QString("missing line: Reading the configuration: done\n"));
    QCOMPARE(outcome.status, 1);
}

void ViewerDemoTest::aViewerWithoutConfigurationSaysWhyAndFails()
{
    const Outcome outcome = Program(SANDBOX).run({"--", VIEWER});
    QCOMPARE(outcome.output,
             QString("Reading the configuration: failed, 6: no application at "
                     "\"/acme_2eviewer\" or at any other path\n"));
    QCOMPARE(outcome.status, 1);
}

QTEST_GUILESS_MAIN(ViewerDemoTest)

#include "viewer_demo_test.moc"
