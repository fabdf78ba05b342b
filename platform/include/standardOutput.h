// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdio>

/// Standard output for progress reports. Waits for a stalled reader, at most ten seconds in all for standard output and
/// standard error together; reports that do not fit after that are dropped.
///
/// @return a buffered stream, which is flushed at the end of the process; owned by the platform
std::FILE* StandardOutput();
