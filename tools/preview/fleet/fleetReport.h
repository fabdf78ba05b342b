// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "output/summaryText.h"

/// What an upgrade does to many phones. All counts are of phones, and all texts are printable.

/// How phones end.
enum class Ending {
    Well, ///< there are at most notes
    Care, ///< there is a warning
    Fail, ///< there is an error, or no preview
};
constexpr std::size_t kEndingCount = 3;
constexpr const char* kEndings[] = {"well", "care", "fail"};
constexpr const char* kEndingWords[] = {"end well", "need care", "fail"};

/// One warning at one place.
struct WarningCount {
    std::string place;
    std::size_t phones = 0;
    std::string example; ///< the first phone by name
};

/// All warnings of a rule.
struct RuleCount {
    std::string rule;
    Severity severity = Severity::Note;
    std::string title;
    bool isGone = false; ///< of a difference: only the first of the two upgrades has it
    std::size_t phones = 0;
    std::vector<WarningCount> places; ///< most phones first
};

/// The value before, the one after, and what became of a secret. Empty where there is none.
struct ValuePair {
    std::string before;
    std::string after;
    std::string secret;
    auto operator<=>(const ValuePair&) const = default;
};

struct ValueCount {
    std::size_t phones = 0;
    std::string example;
};

/// A place has at most this many different pairs of values in a report; with more of them it has none.
constexpr std::size_t kMostValues = 250;

/// A key, a kind of XML record, or a whole file, then without section and key.
struct PlaceCount {
    std::string file;
    std::string section;
    std::string key;
    std::size_t phones = 0;
    Counts byKind; ///< phones; those of an XML file may count for several kinds
    std::string example;
    std::map<ValuePair, ValueCount> values; ///< of configuration files
    bool hasTooManyValues = false;
    bool isXml = false; ///< section: the element and those around it; key: an attribute, or empty for whole records
};

struct RecordCount {
    int line = 0; ///< of the table
    std::string source;
    std::string destination;
    std::array<std::size_t, 5> byOutcome = {}; ///< phones, by RecordOutcome
};

/// A key that phones hold and that the table forgets.
struct ForgottenCount {
    std::string file;
    std::string section;
    std::string key;
    std::size_t phones = 0;
    std::size_t ownPhones = 0; ///< with another value than the old firmware's
    std::string example;       ///< of these, or of all
};

struct PhoneRow {
    std::string image;
    std::string error; ///< why there is no preview
    Ending ending = Ending::Well;
    std::array<int, 3> bySeverity = {}; ///< warnings, by Severity
    std::size_t places = 0;             ///< that change
};

struct FleetReport {
    std::vector<std::string> modes;
    bool isDifference =
        false; ///< of two upgrades: "before" is the phone after the first, "after" that after the second
    bool isRevealed = false;
    std::array<std::size_t, kEndingCount> byEnding = {};
    std::vector<RuleCount> rules;          ///< by severity, the worst first, then by number
    std::vector<PlaceCount> places;        ///< the rarest first
    std::vector<RecordCount> records;      ///< by line
    std::vector<ForgottenCount> forgotten; ///< most own values first
    std::vector<PhoneRow> phones;          ///< worst first
};

/// @return "/file [section] key"
std::string PlaceText(const std::string& file, const std::string& section, const std::string& key);

/// @return the same, or "/file section key" for XML, or "/file"
std::string PlaceText(const PlaceCount& place);

/// @return one line: how many phones end how
std::string SummaryOf(const FleetReport& report);
