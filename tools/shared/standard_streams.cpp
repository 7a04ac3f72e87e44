// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

namespace Tarnvel::Tools {

void reserveStandardStreams()
{
    int descriptor = 0;
    // Read-only, so that writing to the stream still fails.
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0)
        close(descriptor);
}

} // namespace Tarnvel::Tools
