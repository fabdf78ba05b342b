// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdio>

/// Standard output for progress reports. A stalled reader is waited for, ten seconds in all for standard output
/// and standard error together; what finds no room after that is dropped.
///
/// @return a buffered stream, which is flushed at the end of the process; owned by the platform
std::FILE* StandardOutput();
