// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "terminal.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <functional>

namespace Tarnvel::Sandbox {

/*! \brief Something that has happened in the sandbox. */
struct Event
{
    /*! The event as one line for people. */
    QString line;
    /*! How the line is to be taken. */
    Tools::Style style = Tools::Style::Plain;
    /*! The event for programs. "event" is its kind: "call", "announcement", "fault", "service" or
     *  "scenario". */
    QJsonObject record;
};

/*! \brief Tells what happens: people on the standard error channel, programs in a file. */
class Log
{
public:
    using Handler = std::function<void(const QJsonObject &record)>;

    /*! \brief A log that writes into no file and calls \a handler with each record. */
    explicit Log(Handler handler = {});

    /*! \brief Writes a record of each event into \a fileName too, as JSON, one on a line.
     *
     * False if that file cannot be written; errorString() then says why.
     */
    bool open(const QString &fileName);

    /*! \brief From now on, the seconds of the records count. */
    void start();

    /*! \brief The seconds since start(). */
    double elapsed() const;

    /*!
     * \brief Prints the line of \a event and records it with the "time" elapsed and the "text".
     *
     * If it cannot be recorded, this says why, and nothing is recorded any more.
     */
    void report(const Event &event);

    /*! \brief What went wrong in open(). */
    QString errorString() const;

private:
    void write(const QByteArray &line);

    Handler m_handler;
    QFile m_file;
    QElapsedTimer m_clock;
};

/*! \brief Prints one line on the standard error channel. */
void printEvent(const QString &line, Tools::Style style = Tools::Style::Plain);

} // namespace Tarnvel::Sandbox
