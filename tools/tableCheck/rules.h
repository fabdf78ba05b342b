// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "phoneImage/severity.h"

/// What a rule looks at.
enum class Basis {
    Table,
    Phone, ///< the list of enciphered entries or an image as well: on the next phone it may find something else
};

/// One thing that can be wrong with a table.
struct Rule {
    std::string_view number; ///< never changes its meaning, and is never given to another rule
    Severity severity;
    std::string_view title;
    std::string_view effect; ///< what the program does on the phone
    std::string_view remedy; ///< what to do
    Basis basis = Basis::Table;
};

/// All rules, by number.
const std::vector<Rule>& Rules();

/// @param number  in any letter case
/// @return the rule, or null
const Rule* FindRule(std::string_view number);

/// @return a line for each rule: number, severity, title
std::string RuleList();

/// @return some lines about one rule
std::string Explanation(const Rule& rule);
