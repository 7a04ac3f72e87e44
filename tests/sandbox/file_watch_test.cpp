// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "scenario/file_watch.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using Tarnvel::Sandbox::FileWatch;

namespace {

constexpr int timeoutMs = 300000;

// A shell command, and the content that must be reported after it.
struct Step
{
    QString command;
    QString content;
};

QString read(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll().trimmed())
                                          : QString("cannot be read");
}

} // namespace

Q_DECLARE_METATYPE(Step)

class FileWatchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyNewContentIsReportedOnce_data();
    void everyNewContentIsReportedOnce();

private:
    bool run(const QString &command) const;

    QTemporaryDir m_directory;
};

bool FileWatchTest::run(const QString &command) const
{
    QProcess shell;
    shell.setWorkingDirectory(m_directory.path());
    shell.start("sh", {"-e", "-c", command});
    return shell.waitForFinished(timeoutMs) && shell.exitCode() == 0;
}

void FileWatchTest::everyNewContentIsReportedOnce_data()
{
    QTest::addColumn<QString>("preparation");
    QTest::addColumn<QVector<Step>>("steps");

    const auto row = [](const char *name, const QString &preparation, const QVector<Step> &steps) {
        QTest::newRow(name) << preparation << steps;
    };
    const Step replace {"mv file beside; echo newer > file", "newer"};
    row("written in place", "echo old > file", {{"echo new > file", "new"}, replace});
    row("moved from beside", "echo old > file; echo new > beside",
        {{"mv beside file", "new"}, replace});
    row("moved from elsewhere", "echo old > file; mkdir other; echo new > other/file",
        {{"mv other/file file", "new"}, replace});

    const auto linkRow = [&row](const char *name, const QString &target) {
        const QString command = "echo %1 > new; mv new real/file";
        row(name,
            "mkdir real; echo old > real/file; ln -s real linked; ln -s real/file second; ln -s "
                + target + " file",
            {{"echo new > real/file", "new"}, {command.arg("newer"), "newer"}});
    };
    linkRow("behind a link", "real/file");
    linkRow("behind a link to a link", "second");
    linkRow("behind a directory's link", "linked/file");
    linkRow("behind a path with dots", "linked/../real/./file");
    row("behind a link in the same directory", "echo old > real; ln -s real file",
        {{"echo new > real", "new"}, {"echo newer > beside; mv beside real", "newer"}});

    const QString twoFiles = "echo 1 > first; echo 2 > second; ln -s first file";
    // The former target no longer counts.
    row("link with another target", twoFiles,
        {{"ln -s second new; mv -T new file", "2"},
         {"echo new > second", "new"},
         {"echo other > first; echo newer > second", "newer"},
         {"echo newest > second", "newest"}});
    row("recreated link", twoFiles,
        {{"rm file; ln -s second file", "2"}, {"echo new > second", "new"}});
    // A mounted volume changes all its files at once in this way.
    row("directory's link with another target",
        "mkdir ..1; echo 1 > ..1/file; ln -s ..1 ..data; ln -s ..data/file file",
        {{"mkdir ..2; echo 2 > ..2/file; ln -s ..2 new; mv -T new ..data; rm -r ..1", "2"},
         {"mkdir ..3; echo 3 > ..3/file; ln -s ..3 new; mv -T new ..data; rm -r ..2", "3"},
         {"echo new > ..3/file", "new"}});
    row("link to a missing file", "ln -s missing file", {{"echo new > missing", "new"}});
    row("circular links", "ln -s second file; ln -s file second",
        {{"echo new > real; ln -s real new; mv -T new second", "new"}});
}

void FileWatchTest::everyNewContentIsReportedOnce()
{
    QFETCH(QString, preparation);
    QFETCH(QVector<Step>, steps);
    QVERIFY(run("rm -rf * ..?*; " + preparation));
    const QString file = m_directory.filePath("file");
    QStringList contents;
    FileWatch watch(file, [&] { contents.append(read(file)); });
    QCOMPARE(watch.start().text(), QString());
    QStringList expected;
    for (const Step &step : qAsConst(steps)) {
        QVERIFY(run(step.command));
        expected.append(step.content);
        QTRY_COMPARE_WITH_TIMEOUT(contents, expected, timeoutMs);
    }
}

QTEST_GUILESS_MAIN(FileWatchTest)

#include "file_watch_test.moc"
