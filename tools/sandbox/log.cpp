// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "log.h"

#include <cstdio>

namespace Tarnvel::Sandbox {

void printEvent(const QString &line)
{
    const QByteArray text = line.toUtf8() + '\n';
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stderr);
}

} // namespace Tarnvel::Sandbox
