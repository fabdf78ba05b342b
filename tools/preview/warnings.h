// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "fileChanges.h"
#include "preview.h"
#include "reports.h"
#include "secrets.h"

/// What the warnings are found in.
struct RunFacts {
    const std::vector<std::string>& modes;
    const Snapshot& before;
    const Snapshot& after;
    const std::vector<PassState>& states; ///< empty when the passes are not known
    const std::vector<FileChange>& changes;
    const std::vector<FileChange>& secondRun;
    const std::vector<RunReports>& reports;
    const PhoneLists& lists;
    const Secrets& secrets;
};

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

/// What goes wrong, or may, in the run that the facts tell of.
std::vector<ShownWarning> FindWarnings(const RunFacts& facts);
