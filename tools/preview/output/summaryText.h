// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "shown/shownPreview.h"

/// Words that every output uses.

const char* KindWord(ChangeKind kind); ///< "added", "changed", "emptied", "removed"

/// The kinds in the order in which they are counted.
constexpr ChangeKind kChangeKinds[] = {ChangeKind::Added, ChangeKind::Changed, ChangeKind::Emptied,
                                       ChangeKind::Removed};

/// @return "3 added, 1 changed", without the kinds that did not happen; "none"
std::string CountWords(const Counts& counts);

/// @return "a, b, c"
std::string Join(const std::vector<std::string>& words, const char* separator = ", ");

/// The one line that sums a preview up.
std::string SummaryLine(const Preview& preview);
