// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The start of the process, and integers of the same width on every machine.

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <limits>

#include "integerText.h"
#include "processStart.h"

void PrepareProcess()
{
    for (int number = 0; number <= 2; ++number) {
        if (fcntl(number, F_GETFD) == -1)
            (void)open("/dev/null", O_RDWR); // gets the lowest free number, which is this one
    }
    (void)std::signal(SIGPIPE, SIG_IGN);
    (void)std::signal(SIGXFSZ, SIG_IGN);
}

std::int32_t ClampToInt32(std::int64_t value)
{
    using Range = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Range::min(), Range::max()));
}

std::int32_t ParseInt32(const char* text)
{
    return ClampToInt32(std::strtoll(text, /*end=*/nullptr, 10));
}
