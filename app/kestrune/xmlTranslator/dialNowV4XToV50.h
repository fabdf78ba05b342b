// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <list>

#include "dialPlanV4XToV50.h"

/// Dial-now rules: the rules move to the new file. A rule is a `DialRuleRecord` without a replacement.
///
/// Reads:     `oldPath`
/// Writes:    `newPath`; a list without rules gives a file without rules
/// Result:    1 if it was saved, else 0; 0 if a path is null
/// Failures:  if the rules are missing or unreadable, nothing is written
/// Twice:     writes the same file again
int DialNowV4XToV50(const char* oldPath, const char* newPath);

/// @param rules  the file's rules are appended, in document order; unlike the other readers, this one does not clear it
/// @return 1 if the file was read; 0 if the path is null, or the file is missing, does not load or has another root
int GetV4XDialNowData(const char* oldPath, std::list<DialRuleRecord>& rules);

/// @param oldPath  the source file: a new file gets its owner, and no readers that the source does not have; may be
///                 null
/// @return 1 if the file was saved; 0 if it was not or the path is null
int SetV50DialNowData(const char* newPath, const std::list<DialRuleRecord>& rules, const char* oldPath = nullptr);
