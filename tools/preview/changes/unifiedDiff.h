// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// @return the lines of a unified diff of two texts, without its two head lines
std::vector<std::string> UnifiedDiff(const std::string& before, const std::string& after);
