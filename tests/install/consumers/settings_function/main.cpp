// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "consumersettings.h"

#include <cstdio>

int main()
{
    const ConsumerSettings settings {ConsumerSettings::Configuration()};
    std::printf("zoom: %d\n", settings.zoom());
}
