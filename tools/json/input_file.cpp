// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "input_file.h"

#include <QtCore/QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tarnvel::Tools {

namespace {

constexpr char byteOrderMark[] = "\xef\xbb\xbf";

// Each returns what went wrong, or a null string.

QString readAll(QFile *file, QByteArray *text)
{
    *text = file->readAll();
    return file->error() == QFileDevice::NoError ? QString() : file->errorString();
}

QString readStandardInput(QByteArray *text)
{
    sigset_t signals;
    sigset_t previous;
    sigemptyset(&signals);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM})
        sigaddset(&signals, signal);
    QFile file;
    file.open(stdin, QIODevice::ReadOnly);
    // If the tool has blocked them for its event loop, nobody else receives them while this waits.
    sigprocmask(SIG_UNBLOCK, &signals, &previous);
    const QString error = readAll(&file, text);
    sigprocmask(SIG_SETMASK, &previous, nullptr);
    return error;
}

QString readRegularFile(const QString &fileName, QByteArray *text)
{
    const int descriptor = open(QFile::encodeName(fileName).constData(),
                                O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor == -1)
        return qt_error_string(errno);
    QFile file;
    file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    struct stat status = {};
    fstat(descriptor, &status);
    return S_ISREG(status.st_mode) ? readAll(&file, text) : QStringLiteral("not a regular file");
}

} // namespace

Failure readInputFile(const QString &fileName, QByteArray *text, int status)
{
    const QString error = fileName == QLatin1String(standardInputName)
        ? readStandardInput(text)
        : readRegularFile(fileName, text);
    if (!error.isNull())
        return {status, error, {}, fileName};
    // Some editors add the mark without showing it.
    if (text->startsWith(byteOrderMark))
        text->remove(0, static_cast<int>(std::size(byteOrderMark)) - 1);
    return {};
}

} // namespace Tarnvel::Tools
