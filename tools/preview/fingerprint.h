// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// @return a short text that differs when a file or a file in a folder does; for an empty path, nothing is added. Throws
/// `ToolError` for a file, and `filesystem_error` for a folder, that cannot be read.
std::string FingerprintOf(const std::vector<std::filesystem::path>& paths);
