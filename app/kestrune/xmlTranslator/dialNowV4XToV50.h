// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <list>

#include "dialPlanV4XToV50.h"

/// Dial-now rules: they move to the new file. A rule is a `DialRuleRecord` without a replacement.
///
/// Reads:     `oldPath`
/// Writes:    `newPath`; a list without rules gives a file without rules
/// Result:    1 when it was saved, else 0; 0 when a path is null
/// Failures:  no or unreadable rules: nothing is written
/// Twice:     writes the same file again
int DialNowV4XToV50(const char* oldPath, const char* newPath);

/// @param rules  gets the file's rules at its end, in document order; unlike the other readers, this one does not empty
///               it
/// @return 1 when the file was read; 0 when the path is null, or the file is missing, does not load or has another root
int GetV4XDialNowData(const char* oldPath, std::list<DialRuleRecord>& rules);

/// @param oldPath  the file whose owner a new one gets, and whose readers are the most that it may have; may be null
/// @return 1 when the file was saved; 0 when it was not or the path is null
int SetV50DialNowData(const char* newPath, const std::list<DialRuleRecord>& rules, const char* oldPath = nullptr);
