// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"
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
    /*! For people. */
    QString line;
    Tools::Style style = Tools::Style::Plain;
    /*! For programs. "event" is its kind: "call", "announcement", "fault", "service" or "scenario".
     */
    QJsonObject record;
};

/*! \brief Reports events: to people on standard error, to programs as JSON in a file. */
class Log
{
public:
    using Handler = std::function<void(const QJsonObject &record)>;

    /*! \brief A log without a file that passes each record to \a handler. */
    explicit Log(Handler handler = {});

    /*! \brief Writes the records into \a fileName too, one on a line, or fails. */
    Tools::Failure open(const QString &fileName);

    /*! \brief Starts the clock for the "time" of the records. */
    void start();

    /*!
     * \brief Prints the line of \a event and records it with the "time" elapsed and the "text".
     *
     * If the file cannot be written, prints why and closes it.
     */
    void report(const Event &event);

private:
    void write(const QByteArray &line);
    Tools::Failure fileFailure() const;

    Handler m_handler;
    QFile m_file;
    QElapsedTimer m_clock;
};

/*! \brief Prints one line on standard error. */
void printEvent(const QString &line, Tools::Style style = Tools::Style::Plain);

} // namespace Tarnvel::Sandbox
