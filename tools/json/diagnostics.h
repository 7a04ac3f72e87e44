// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <map>
#include <vector>

namespace Tarnvel::Tools {

/*! \brief Something that is wrong with a file. */
struct Diagnostic
{
    QString file;
    /*! Counted from 1; 0 if the whole file is wrong. */
    int line = 0;
    /*! In UTF-16 code units, counted from 1; 0 if the whole file is wrong. */
    int column = 0;
    QString message;
    /*! What to do about it; may be empty. */
    QString hint = {};
    /*! True for a slip: the file is valid, but cannot be meant like this. */
    bool isSlip = false;

    /*! \brief The file, line and column: "scenario.json:3:14". */
    QString location() const;
};

/*! \brief Collects what is wrong with a text file, each diagnostic with its location. */
class Diagnostics
{
public:
    /*! \brief For \a text, the content of the file \a fileName. */
    Diagnostics(const QString &fileName, const QByteArray &text);

    /*! \brief The name of the file. */
    QString fileName() const;

    /*! \brief Adds a diagnostic about what is at \a offset, in bytes from the start of the text. */
    void add(int offset, const QString &message, const QString &hint = {});

    /*! \brief Adds a slip in the same way. */
    void addSlip(int offset, const QString &message, const QString &hint);

    /*! \brief The text from \a offset to \a end, in bytes, as long as these diagnostics exist. */
    QByteArray text(int offset, int end) const;

    /*! \brief True if nothing is wrong. */
    bool isEmpty() const;

    /*! \brief The file, line and column at \a offset, counted from 1: "scenario.json:3:14". */
    QString location(int offset) const;

    /*! \brief All diagnostics, in the order of their locations. */
    QVector<Diagnostic> all() const;

    /*! \brief The same as failures with this exit \a status. */
    QVector<Failure> failures(int status) const;

private:
    Diagnostic at(int offset, const QString &message, const QString &hint) const;

    QString m_fileName;
    QByteArray m_text;
    std::vector<int> m_lineStarts;
    std::multimap<int, Diagnostic> m_diagnostics;
};

} // namespace Tarnvel::Tools
