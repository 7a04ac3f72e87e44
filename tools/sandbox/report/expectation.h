// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace Tarnvel::Sandbox {

/*!
 * \brief The calls that must come, in this order; others may come in between.
 *
 * They are the "calls" of a JSON file. Each is an object whose members a call's record in the log
 * must have too, save for "within", the seconds from the start in which the call must come.
 */
class Expectation
{
public:
    /*! \brief Expects nothing. */
    Expectation() = default;

    /*!
     * \brief Expects what \a text, the content of \a fileName, says.
     *
     * If that is nothing of the kind, false; \a mistake then says where and why, on one line.
     */
    bool parse(const QString &fileName, const QByteArray &text, QString *mistake);

    /*! \brief Does as parse() with what is in the file. */
    bool read(const QString &fileName, QString *mistake);

    /*! \brief Takes \a record, of an event, into account. */
    void record(const QJsonObject &record);

    /*! \brief What has not come, as a line for people; empty if everything has. */
    QString missing() const;

private:
    struct Call
    {
        /*! Where it stands in the file: "calls.json:3:5". */
        QString place;
        QJsonObject members;
        /*! Infinite if nothing is said. */
        double within;
    };

    QVector<Call> m_calls;
    int m_seen = 0;
    // When the next one has come, if that was too late; otherwise 0.
    double m_late = 0;
};

} // namespace Tarnvel::Sandbox
