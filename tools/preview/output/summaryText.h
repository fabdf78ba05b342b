// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
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

/// @return the value with a blank at its beginning or end as "\x20", where it would not be seen; "(empty)" for none
std::string ValueWords(const std::string& value);

/// @return how many characters of UTF-8 the text has
std::size_t LengthOf(const std::string& text);

/// @return "error KP006"
std::string WordsOf(const ShownWarning& warning);

/// @return the forgotten keys with values of the user's own, by "FILE [SECTION]"
std::map<std::string, std::vector<std::string>> OwnForgotten(const std::vector<ShownForgottenKey>& keys);

/// @return one line: how much changes
std::string SummaryLine(const Preview& preview);
