// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// Reads the payload "small" once and ends, to measure such a program from start to end. MAKE_CLIENT
// names the client.

#include "client.h"

#include <QtCore/QCoreApplication>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    return Tarnvel::Benchmarks::MAKE_CLIENT(QStringLiteral("small"))() > 0 ? 0 : 1;
}
