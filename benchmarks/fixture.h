// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "private_bus.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QProcess>
#include <QtCore/QVariant>

namespace Tarnvel::Benchmarks {

/*!
 * \brief A private bus with the service of the benchmarks.
 *
 * Create it before the first use of the bus: it makes the private bus the system bus of this
 * process and of the processes it starts.
 */
class BenchmarkFixture
{
public:
    /*! \brief Starts the bus and the service; ends the process if either fails. */
    BenchmarkFixture(int &argc, char **argv);

    /*! \brief Stops the service. */
    ~BenchmarkFixture();

    BenchmarkFixture(const BenchmarkFixture &) = delete;
    BenchmarkFixture &operator=(const BenchmarkFixture &) = delete;

    /*! \brief The address of the bus. */
    QString address() const;

private:
    QCoreApplication m_application;
    Testing::PrivateBus m_bus;
    QProcess m_service;
};

/*!
 * \brief Returns the payload called \a name as Qt D-Bus received it: a QDBusArgument.
 *
 * Read only copies of it, then it can be read any number of times. Ends the process on an error.
 */
QVariant receive(const QString &name);

} // namespace Tarnvel::Benchmarks
