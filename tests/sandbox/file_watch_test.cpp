// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "input_file.h"
#include "scenario/file_watch.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <linux/capability.h>
#include <memory>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Tarnvel::Sandbox;
using namespace Tarnvel::Tools;

namespace {

constexpr int timeoutMs = 300000;

// A shell command, and the content that must be reported after it.
struct Step
{
    QString command;
    QString content;
};

// What is wrong with the file, if something is.
QString read(const QString &fileName)
{
    QByteArray text;
    const Failure failure = readInputFile(fileName, &text, EXIT_FAILURE);
    return failure ? failure.message : QString::fromUtf8(text.trimmed());
}

bool write(const QString &fileName, const QByteArray &text)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

} // namespace

Q_DECLARE_METATYPE(Step)

class FileWatchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void everyChangeIsReportedOnce_data();
    void everyChangeIsReportedOnce();
    void manyWritesAreReportedOnceTheyHaveSettled();
    void aFileIsNotReportedWhileItIsWritten();

private:
    bool run(const QString &command) const;

    std::unique_ptr<QTemporaryDir> m_directory;
};

bool FileWatchTest::run(const QString &command) const
{
    QProcess shell;
    shell.setWorkingDirectory(m_directory->path());
    shell.start("sh", {"-e", "-c", command});
    return shell.waitForFinished(timeoutMs) && shell.exitCode() == 0;
}

// Otherwise root can read everything.
void FileWatchTest::initTestCase()
{
    __user_cap_header_struct header {_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
    QCOMPARE(syscall(SYS_capset, &header, none), 0L);
}

// No event of an earlier test comes from a new directory.
void FileWatchTest::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
}

void FileWatchTest::everyChangeIsReportedOnce_data()
{
    QTest::addColumn<QString>("preparation");
    QTest::addColumn<QVector<Step>>("steps");

    const auto row = [](const char *name, const QString &preparation, const QVector<Step> &steps) {
        QTest::newRow(name) << preparation << steps;
    };
    const QString missing = "No such file or directory";
    const QString special = "not a regular file";
    const Step moveAway {"mv file beside", missing};
    const Step replace {"echo newer > file", "newer"};
    row("written in place", "echo old > file", {{"echo new > file", "new"}, moveAway, replace});
    row("moved from beside", "echo old > file; echo new > beside",
        {{"mv beside file", "new"}, moveAway, replace});
    row("moved from elsewhere", "echo old > file; mkdir other; echo new > other/file",
        {{"mv other/file file", "new"}, moveAway, replace});
    row("moved elsewhere", "echo old > file; mkdir other",
        {{"mv file other", missing}, {"mv other/file .", "old"}});
    row("unreadable", "echo old > file",
        {{"chmod 0 file", "Permission denied"}, {"chmod 600 file", "old"}});
    row("replaced by a FIFO", "echo old > file; mkfifo fifo",
        {{"mv fifo file", special}, {"rm file", missing}, {"mkfifo file", special}});
    row("replaced by a device", "echo old > file; ln -s /dev/zero zero",
        {{"mv -T zero file", special}, {"echo new > beside; mv beside file", "new"}});
    row("replaced by a directory", "echo old > file",
        {{"rm file", missing}, {"mkdir file", special}, {"rmdir file", missing}, replace});

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
        {{"rm file", missing}, {"ln -s second file", "2"}, {"echo new > second", "new"}});
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

void FileWatchTest::everyChangeIsReportedOnce()
{
    QFETCH(QString, preparation);
    QFETCH(QVector<Step>, steps);
    QVERIFY(run(preparation));
    const QString file = m_directory->filePath("file");
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

void FileWatchTest::manyWritesAreReportedOnceTheyHaveSettled()
{
    constexpr int count = 200;
    const QString file = m_directory->filePath("file");
    QStringList contents;
    FileWatch watch(file, [&] { contents.append(read(file)); });
    QCOMPARE(watch.start().text(), QString());
    for (int number = 1; number <= count; ++number) {
        QVERIFY(write(file, QByteArray::number(number)));
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE_WITH_TIMEOUT(contents.value(contents.size() - 1), QString::number(count),
                              timeoutMs);
    // Not exactly one: this process may have to wait for its turn.
    QVERIFY2(contents.size() < count / 10, qPrintable(contents.join(' ')));
}

void FileWatchTest::aFileIsNotReportedWhileItIsWritten()
{
    const QString file = m_directory->filePath("file");
    const QString fence = m_directory->filePath("fence");
    QVERIFY(write(file, "old"));
    QStringList reports;
    FileWatch fileWatch(file, [&] { reports.append(read(file)); });
    FileWatch fenceWatch(fence, [&] { reports.append("fence"); });
    QCOMPARE(fileWatch.start().text() + fenceWatch.start().text(), QString());
    QVERIFY(write(file, "newer"));
    QFile writer(file);
    QVERIFY(writer.open(QIODevice::WriteOnly) && writer.write("ne") > 0 && writer.flush());
    QVERIFY(write(fence, "1"));
    QTRY_COMPARE_WITH_TIMEOUT(reports, QStringList("fence"), timeoutMs);
    writer.write("w");
    writer.close();
    QTRY_COMPARE_WITH_TIMEOUT(reports, QStringList({"fence", "new"}), timeoutMs);
}

QTEST_GUILESS_MAIN(FileWatchTest)

#include "file_watch_test.moc"
