// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>
#include <QtCore/QVector>

namespace Tarnvel::Testing {

/*! \brief The text of a \a page in docs/. */
inline QString contentOf(const QString &page)
{
    QFile file(QStringLiteral(DOCS_DIR "/") + page);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qUtf8Printable(page), qUtf8Printable(file.errorString()));
    return QString::fromUtf8(file.readAll());
}

/*! \brief The texts in backticks, joined by commas; null for a word such as "none". */
inline QString textOf(const QString &cell)
{
    static const QRegularExpression code("(`+)(.*?)\\1");
    if (cell == "(empty)")
        return "";
    QStringList texts;
    for (auto matches = code.globalMatch(cell); matches.hasNext();)
        texts.append(matches.next().captured(2));
    return texts.isEmpty() ? QString() : texts.join(", ");
}

/*! \brief A row of a table in a page. */
struct Row
{
    /*! The first line of its table. */
    QString header;
    QString line;

    /*! \brief The texts of its cells. */
    QStringList cells() const
    {
        QStringList cells;
        const QStringList columns = line.mid(2, line.size() - 4).split(" | ");
        for (const QString &column : columns)
            cells.append(textOf(column));
        return cells;
    }
};

/*! \brief The rows of all tables in a \a page. */
inline QVector<Row> rowsOf(const QString &page)
{
    QVector<Row> rows;
    QString header;
    const QStringList lines = contentOf(page).split('\n');
    for (const QString &line : lines) {
        if (!line.startsWith('|'))
            header.clear();
        else if (header.isEmpty())
            header = line;
        else if (!line.startsWith("|--"))
            rows.append({header, line});
    }
    return rows;
}

} // namespace Tarnvel::Testing
