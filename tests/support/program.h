// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Testing {

/*! \brief How a program ended, and what it printed. */
struct Outcome
{
    /*! The exit status; -1 if a signal ended it, or it did not start or end. */
    int status = -1;
    QString output;
    QString errors;
};

/*!
 * \brief A program that runs while the event loop of the test continues to run.
 *
 * The event loop lets the services of the test answer the program. A program that is still running
 * is killed when this object is destroyed.
 */
class Program
{
public:
    /*!
     * \brief The program \a name, which finds the installed library, in a UTF-8 locale.
     *
     * It is an installed program unless \a name is an absolute path.
     */
    explicit Program(const QString &name);
    ~Program();

    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /*! \brief Sets the variable \a name for the program, or unsets it if \a value is null. */
    void setVariable(const QString &name, const QString &value);

    /*! \brief Starts it. */
    void start(const QStringList &arguments);

    /*! \brief Sends it \a signal. */
    void send(int signal);

    /*! \brief The next line of its standard output; if there is none, the remaining output. */
    QString readLine();

    /*! \brief The same for its standard error. */
    QString readErrorLine();

    /*! \brief Waits for its end. The outcome contains the output that has not been read yet. */
    Outcome finish();

    /*! \brief Starts it and waits for its end. */
    Outcome run(const QStringList &arguments);

private:
    QString readLine(QProcess::ProcessChannel channel);

    QString m_name;
    QProcessEnvironment m_environment;
    QProcess m_process;
};

/*! \brief The arguments of the client: the identity of BusFixture, then \a arguments. */
QStringList clientArguments(const QStringList &arguments);

} // namespace Tarnvel::Testing
