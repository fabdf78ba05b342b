// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "shown/shownPreview.h"

/// The numbers are for good: scripts look for them.
enum class WarningRule {
    ValueEmptied = 1,
    TooLongToEncipher = 2,
    EncipheredTwice = 3,
    SecondsAlready = 4,
    LimitReached = 5,
    PassStopped = 6,
    FileNotLoaded = 7,
    EmptyCertificate = 8,
    AccountRemoved = 9,
    SecondRunChanges = 10,
    PassesUnknown = 11,
};

struct WarningText {
    WarningRule rule;
    const char* title;
    const char* advice;
};

/// All rules, by number.
const std::vector<WarningText>& WarningRules();

/// @return "KP001" for 1
std::string WarningId(WarningRule rule);

/// Collects warnings, each once, in the order of their rules and places.
class WarningList
{
public:
    /// The place and the text may hold names as they stand on the phone, never a value.
    void Add(WarningRule rule, const std::string& place, const std::string& text);
    bool Has(WarningRule rule, const std::string& place) const;
    std::vector<ShownWarning> Take();

private:
    std::vector<std::pair<WarningRule, ShownWarning>> warnings_;
};
