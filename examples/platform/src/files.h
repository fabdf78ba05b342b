// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <sys/stat.h>

/// Reads a whole regular file; anything else does not load and never blocks.
///
/// @param status  receives the status of the file that was read; may be null
/// @return false, with `bytes` unchanged, if there is nothing to read
bool ReadFile(const char* path, std::string& bytes, struct stat* status = nullptr);
