// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "scenario/file_watch.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <cstdio>

using Tarnvel::Sandbox::FileWatch;

namespace {

bool write(const QString &fileName, const QByteArray &text)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

QString read(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : "cannot be read";
}

// Unlike QFile::rename(), replaces what is there.
bool move(const QString &from, const QString &to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

// In one step, as "ln -sfn" does.
bool pointLink(const QString &link, const QString &target)
{
    return QFile::link(target, link + ".new") && move(link + ".new", link);
}

} // namespace

class FileWatchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void aNewContentIsNoticed_data();
    void aNewContentIsNoticed();
    void theFileBehindALinkIsWatched_data();
    void theFileBehindALinkIsWatched();
    void aLinkPointedElsewhereIsFollowed();
    void aLinkMadeAnewIsFollowed();
    void aLinkToADirectoryPointedElsewhereIsFollowed();
    void aLinkThatLeadsNowhereYetIsFollowed();
    void linksInACircleAreHarmless();

private:
    QString path(const char *name) const;

    QScopedPointer<QTemporaryDir> m_directory;
};

void FileWatchTest::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
}

QString FileWatchTest::path(const char *name) const
{
    return m_directory->filePath(QString::fromUtf8(name));
}

void FileWatchTest::aNewContentIsNoticed_data()
{
    QTest::addColumn<bool>("isMoved");
    QTest::addColumn<QString>("source");

    QTest::newRow("written in place") << false << "";
    QTest::newRow("moved from beside") << true << "beside";
    QTest::newRow("moved from elsewhere") << true << "elsewhere/file";
}

void FileWatchTest::aNewContentIsNoticed()
{
    QFETCH(bool, isMoved);
    QFETCH(QString, source);
    QVERIFY(write(path("file"), "old"));
    QVERIFY(QDir().mkdir(path("elsewhere")));
    QStringList contents;
    FileWatch watch(path("file"), [&] { contents.append(read(path("file"))); });
    QCOMPARE(watch.start().text(), QString());
    if (isMoved) {
        QVERIFY(write(m_directory->filePath(source), "new"));
        QVERIFY(move(m_directory->filePath(source), path("file")));
    } else {
        QVERIFY(write(path("file"), "new"));
    }
    QTRY_COMPARE(contents, QStringList("new"));

    // What is moved away is no new content; what comes afterwards is.
    QVERIFY(move(path("file"), path("beside")));
    QVERIFY(write(path("file"), "newer"));
    QTRY_COMPARE(contents, QStringList({"new", "newer"}));
}

void FileWatchTest::theFileBehindALinkIsWatched_data()
{
    QTest::addColumn<QString>("target");

    QTest::newRow("through a link") << "second";
    QTest::newRow("through a directory's link") << "linked/file";
    QTest::newRow("through what is above") << "linked/../real/./file";
    QTest::newRow("in the same directory") << "beside";
    QTest::newRow("elsewhere") << "real/file";
}

void FileWatchTest::theFileBehindALinkIsWatched()
{
    QFETCH(QString, target);
    QVERIFY(QDir().mkdir(path("real")));
    QVERIFY(write(path("real/file"), "old"));
    QVERIFY(write(path("beside"), "old"));
    QVERIFY(QFile::link("real/file", path("second")));
    QVERIFY(QFile::link("real", path("linked")));
    QVERIFY(QFile::link(target, path("link")));
    QStringList contents;
    FileWatch watch(path("link"), [&] { contents.append(read(path("link"))); });
    QCOMPARE(watch.start().text(), QString());
    QVERIFY(write(m_directory->filePath(target), "new"));
    QTRY_COMPARE(contents, QStringList("new"));
    QVERIFY(write(path("replacement"), "newer"));
    QVERIFY(move(path("replacement"), QFileInfo(path("link")).canonicalFilePath()));
    QTRY_COMPARE(contents, QStringList({"new", "newer"}));
}

void FileWatchTest::aLinkPointedElsewhereIsFollowed()
{
    QVERIFY(write(path("first"), "first"));
    QVERIFY(write(path("second"), "second"));
    QVERIFY(QFile::link("first", path("link")));
    QStringList contents;
    FileWatch watch(path("link"), [&] { contents.append(read(path("link"))); });
    QCOMPARE(watch.start().text(), QString());
    QVERIFY(pointLink(path("link"), "second"));
    QTRY_COMPARE(contents, QStringList("second"));

    QVERIFY(write(path("second"), "new"));
    QTRY_COMPARE(contents, QStringList({"second", "new"}));

    // The file it led to is of no interest any longer.
    QVERIFY(write(path("first"), "other"));
    QVERIFY(write(path("second"), "newer"));
    QTRY_COMPARE(contents.last(), QString("newer"));
    QVERIFY(write(path("second"), "newest"));
    QTRY_COMPARE(contents.last(), QString("newest"));
    QCOMPARE(contents, QStringList({"second", "new", "newer", "newest"}));
}

void FileWatchTest::aLinkMadeAnewIsFollowed()
{
    QVERIFY(write(path("first"), "first"));
    QVERIFY(write(path("second"), "second"));
    QVERIFY(QFile::link("first", path("link")));
    QStringList contents;
    FileWatch watch(path("link"), [&] { contents.append(read(path("link"))); });
    QCOMPARE(watch.start().text(), QString());
    QVERIFY(QFile::remove(path("link")));
    QVERIFY(QFile::link("second", path("link")));
    QTRY_COMPARE(contents, QStringList("second"));
    QVERIFY(write(path("second"), "new"));
    QTRY_COMPARE(contents, QStringList({"second", "new"}));
}

// As a volume does whose files must all change at once.
void FileWatchTest::aLinkToADirectoryPointedElsewhereIsFollowed()
{
    QVERIFY(QDir().mkdir(path("..1")) && QDir().mkdir(path("..2")));
    QVERIFY(write(path("..1/file"), "first"));
    QVERIFY(write(path("..2/file"), "second"));
    QVERIFY(QFile::link("..1", path("..data")));
    QVERIFY(QFile::link("..data/file", path("file")));
    QStringList contents;
    FileWatch watch(path("file"), [&] { contents.append(read(path("file"))); });
    QCOMPARE(watch.start().text(), QString());
    QVERIFY(pointLink(path("..data"), "..2"));
    QVERIFY(QDir(path("..1")).removeRecursively());
    QTRY_COMPARE(contents, QStringList("second"));

    QVERIFY(QDir().mkdir(path("..3")));
    QVERIFY(write(path("..3/file"), "third"));
    QVERIFY(pointLink(path("..data"), "..3"));
    QVERIFY(QDir(path("..2")).removeRecursively());
    QTRY_COMPARE(contents, QStringList({"second", "third"}));
    QVERIFY(write(path("..3/file"), "new"));
    QTRY_COMPARE(contents, QStringList({"second", "third", "new"}));
}

void FileWatchTest::aLinkThatLeadsNowhereYetIsFollowed()
{
    QVERIFY(QFile::link("file", path("link")));
    QStringList contents;
    FileWatch watch(path("link"), [&] { contents.append(read(path("link"))); });
    QCOMPARE(watch.start().text(), QString());
    QVERIFY(write(path("file"), "new"));
    QTRY_COMPARE(contents, QStringList("new"));
}

void FileWatchTest::linksInACircleAreHarmless()
{
    QVERIFY(QFile::link("second", path("first")));
    QVERIFY(QFile::link("first", path("second")));
    QStringList contents;
    FileWatch watch(path("first"), [&] { contents.append(read(path("first"))); });
    QCOMPARE(watch.start().text(), QString());
    QVERIFY(write(path("file"), "new"));
    QVERIFY(pointLink(path("second"), "file"));
    QTRY_VERIFY(!contents.isEmpty());
    QCOMPARE(contents.last(), QString("new"));
}

QTEST_GUILESS_MAIN(FileWatchTest)

#include "file_watch_test.moc"
