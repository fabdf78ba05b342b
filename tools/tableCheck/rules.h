// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <vector>

enum class Severity {
    Note,
    Warning,
    Error,
};

/// One thing that can be wrong with a table.
struct Rule {
    std::string_view number; ///< never changes its meaning, and is never given to another rule
    Severity severity;
    std::string_view title;
    std::string_view effect; ///< what the program does on the phone
    std::string_view remedy; ///< what to do
};

/// All rules, by number.
const std::vector<Rule>& Rules();

/// @return the rule of that number, or null
const Rule* FindRule(std::string_view number);

std::string_view SeverityName(Severity severity);

/// @return a line for each rule: number, severity, title
std::string RuleList();

/// @return some lines about one rule
std::string Explanation(const Rule& rule);
