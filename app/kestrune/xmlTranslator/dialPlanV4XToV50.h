// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <list>
#include <string>

/// One dial rule. The texts are copied unchanged.
struct DialRuleRecord {
    std::string prefix;
    std::string replacement;
    std::string account; ///< the accounts (lines) that the rule applies to
};

/// Dial plan: the rules move to the new file.
///
/// Reads:     `oldPath`
/// Writes:    `newPath`; a plan without rules gives a file without rules
/// Result:    1 if it was saved, else 0; 0 if a path is null
/// Failures:  if the rules are missing or unreadable, nothing is written
/// Twice:     writes the same file again
int DialPlanV4XToV50(const char* oldPath, const char* newPath);

/// @param rules  cleared if the file exists, then filled in document order
/// @return 1 if the file was read; 0 if the path is null, or the file is missing, does not load or has another root
int GetV4XDialPlanData(const char* oldPath, std::list<DialRuleRecord>& rules);

/// @param oldPath  the source file: a new file gets its owner, and no readers that the source does not have; may be
///                 null
/// @return 1 if the file was saved; 0 if it was not or the path is null
int SetV50DialPlanData(const char* newPath, const std::list<DialRuleRecord>& rules, const char* oldPath = nullptr);
