// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <map>

namespace Tarnvel::Sandbox {

/*! \brief Collects what is wrong with a text file, each diagnostic with its location. */
class Diagnostics
{
public:
    /*! \brief For \a text, the content of the file \a fileName. */
    Diagnostics(const QString &fileName, const QByteArray &text);

    /*! \brief Adds a diagnostic about what is at \a offset, in bytes from the start of the text. */
    void add(int offset, const QString &message);

    /*! \brief The file, line and column at \a offset, counted from 1: "scenario.json:3:14". */
    QString location(int offset) const;

    /*! \brief All diagnostics, in the order of their locations. */
    QVector<Tools::Failure> failures() const;

private:
    QString m_fileName;
    QByteArray m_text;
    std::multimap<int, QString> m_messages;
};

} // namespace Tarnvel::Sandbox
