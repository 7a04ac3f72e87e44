// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// Reads the small configuration once: the whole life of a program that wants no more than that.
// MAKE_CLIENT says with what.

#include "client.h"

#include <QtCore/QCoreApplication>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    return Tarnvel::Benchmarks::MAKE_CLIENT(QStringLiteral("small"))() > 0 ? 0 : 1;
}
