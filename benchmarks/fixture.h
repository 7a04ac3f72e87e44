// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "private_bus.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QProcess>
#include <QtCore/QVariant>

namespace Tarnvel::Benchmarks {

/*!
 * \brief What a program of the benchmarks stands on: a private bus, and the service on it.
 *
 * Make one before the bus is first used: it directs the system bus of this process, and of those
 * that it starts, to the private one. Its programs end with it.
 */
class Bench
{
public:
    /*! \brief Starts the bus and the service; ends the process if either fails. */
    Bench(int &argc, char **argv);

    /*! \brief Stops the service. */
    ~Bench();

    Bench(const Bench &) = delete;
    Bench &operator=(const Bench &) = delete;

    /*! \brief The address of the bus. */
    QString address() const;

private:
    QCoreApplication m_application;
    Testing::PrivateBus m_bus;
    QProcess m_service;
};

/*!
 * \brief What QtDBus has received as the shape called \a name: a QDBusArgument, which can be read
 * any number of times as long as only copies are read. Ends the process on an error.
 */
QVariant receive(const QString &name);

} // namespace Tarnvel::Benchmarks
