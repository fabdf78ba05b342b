// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <vector>

/// One thing that a rule says about a place in the table.
struct Finding {
    std::string_view rule; ///< its number, as in `kRules`
    int line;              ///< from 1
    std::string text;      ///< one line of printable UTF-8
};

using Findings = std::vector<Finding>;
