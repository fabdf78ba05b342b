// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <fcntl.h>
#include <unistd.h>

#include "scratchFolder.h"

/// For libraries that save without a flush.
inline void FlushFile(const char* path)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    Require(file != -1 && fsync(file) == 0, "flush");
    (void)close(file); // only read
}
