// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "private_bus.h"
#include "process/command.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

using Tarnvel::Sandbox::Command;
using Tarnvel::Sandbox::SignalState;
using Tarnvel::Testing::PrivateBus;

// Runs the application on a private bus. What the bus writes to its log is kept by the process that
// started it, and must not be counted to the application.
int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.isEmpty())
        qFatal("usage: soak_bus COMMAND...");

    PrivateBus bus;
    if (const QString error = bus.start(); !error.isNull())
        qFatal("%s", qUtf8Printable(error));
    Command command;
    const auto failure = command.start(words, bus.address(), SignalState(),
                                       [](int status) { QCoreApplication::exit(status); });
    if (failure)
        qFatal("%s", qUtf8Printable(failure.text()));
    return QCoreApplication::exec();
}
