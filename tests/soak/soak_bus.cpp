// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "private_bus.h"
#include "process/command.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

using Tarnvel::Sandbox::Command;
using Tarnvel::Sandbox::PrivateBus;
using Tarnvel::Sandbox::SignalState;

// Runs the application on a private bus. What the bus writes to its log is kept by the process that
// started it, and must not be counted to the application.
int main(int argc, char *argv[])
{
    const SignalState signals;
    QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.isEmpty())
        qFatal("usage: soak_bus COMMAND...");

    PrivateBus bus;
    if (!bus.start())
        qFatal("%s", qUtf8Printable(bus.errorString()));
    Command command;
    const auto failure = command.start(words, bus.address(), signals,
                                       [](int status) { QCoreApplication::exit(status); });
    if (failure)
        qFatal("%s", qUtf8Printable(failure.text()));
    return QCoreApplication::exec();
}
