// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "footprint.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QStringList>

#include <malloc.h>
#include <unistd.h>

namespace Tarnvel::Soak {

namespace {

QString readFile(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qUtf8Printable(fileName), qUtf8Printable(file.errorString()));
    return QString::fromUtf8(file.readAll());
}

int countEntries(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

} // namespace

Footprint takeFootprint()
{
    malloc_trim(0);
    const struct mallinfo2 info = mallinfo2();
    const qint64 pages =
        readFile(QStringLiteral("/proc/self/statm")).section(QLatin1Char(' '), 1, 1).toLongLong();
    return {static_cast<qint64>(info.uordblks + info.hblkhd), pages * sysconf(_SC_PAGESIZE),
            countEntries(QStringLiteral("/proc/self/fd")),
            countEntries(QStringLiteral("/proc/self/task"))};
}

Budget readBudget(const QString &fileName)
{
    QMap<QString, qint64> entries;
    const QStringList lines = readFile(fileName).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        if (!line.startsWith(QLatin1Char('#')))
            entries.insert(line.section(QLatin1Char(' '), 0, 0),
                           line.section(QLatin1Char(' '), 1).toLongLong());
    }
    const Budget budget {entries.value(QStringLiteral("notification")),
                         entries.value(QStringLiteral("heap")),
                         entries.value(QStringLiteral("resident"))};
    if (budget.notification <= 0 || budget.heap <= 0 || budget.resident <= 0)
        qFatal("%s: an entry is missing", qUtf8Printable(fileName));
    return budget;
}

} // namespace Tarnvel::Soak
