// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "secrets/secrets.h"
#include "shown/shownPreview.h"

/// A number keeps its meaning: scripts look for it.
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
    SecretPlain = 12,
    EmptyKeyAdded = 13,
    TranslationsOff = 14,
    NoCipherKey = 15,
    OldPlacePlain = 16,
};

struct WarningText {
    WarningRule rule;
    Severity severity;
    const char* title;
    const char* advice;
};

/// All rules, by number.
const std::vector<WarningText>& WarningRules();

/// @return "KP001" for 1
std::string WarningId(WarningRule rule);

/// Collects warnings, each once, in the order of their severities, the worst first, then of their rules and places.
class WarningList
{
public:
    /// @param secrets  kept by reference
    explicit WarningList(const Secrets& secrets) : secrets_(secrets) {}

    /// @param place  path and names as they are on the phone; secrets in them are hidden
    /// @param text   without a value of the phone
    void Add(WarningRule rule, const std::string& place, const std::string& text);
    bool Has(WarningRule rule, const std::string& place) const;
    std::vector<ShownWarning> Take();

private:
    std::string Shown(const std::string& place) const;

    const Secrets& secrets_;
    std::vector<std::pair<WarningRule, ShownWarning>> warnings_;
};
