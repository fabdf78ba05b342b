// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "changes/fileChanges.h"
#include "phoneImage/severity.h"
#include "table/forgottenKeys.h"
#include "table/recordOutcomes.h"

/// A preview as it is shown: every text in it is printable, and its secrets are hidden.

/// One value, or one whole record of an XML file, that changed.
struct ShownChange {
    ChangeKind kind;
    std::string group; ///< section or record
    std::string name;  ///< key or attribute; empty for a whole record
    std::optional<std::string> before;
    std::optional<std::string> after;
    std::vector<std::pair<std::string, std::string>> attributes; ///< of a whole record
    std::string secret;                                          ///< what became of a secret; empty for any other value
    std::vector<std::string> passes;
};

struct ShownFile {
    std::string path;
    ChangeKind kind;
    std::string format; ///< "ini", "xml", "text", "binary" or "other"
    std::string note;   ///< what else there is to say; may be empty
    std::vector<ShownChange> changes;
    std::vector<std::string> diff; ///< of a file that is shown line by line
    std::vector<std::string> passes;
};

struct ShownWarning {
    std::string rule; ///< such as "KP001"
    Severity severity;
    std::string place;
    std::string text;
    std::string advice;
};

/// A record of the translation table.
struct ShownRecord {
    int line;           ///< of the table, from 1
    std::string source; ///< such as "[S] k of /file"; empty when an attribute is absent
    std::string destination;
    RecordOutcome outcome;
};

using ShownForgottenKey = ForgottenKey; ///< its names are printable too

/// What a run reported, line by line.
struct ShownReports {
    std::string mode;
    std::vector<std::string> output;
    std::vector<std::string> errors;
};

/// How many were added, changed, emptied and removed.
struct Counts {
    std::array<int, 4> byKind = {};

    int& operator[](ChangeKind kind) { return byKind[static_cast<std::size_t>(kind)]; }
    int operator[](ChangeKind kind) const { return byKind[static_cast<std::size_t>(kind)]; }
    int Sum() const { return byKind[0] + byKind[1] + byKind[2] + byKind[3]; }
};

struct Preview {
    std::string image; ///< its name, without its folder
    std::vector<std::string> modes;
    std::string error; ///< why there is no preview; the rest is empty then
    bool arePassesKnown = true;
    std::vector<std::string> passes; ///< all that ran, in their order
    std::vector<ShownFile> files;
    std::vector<ShownWarning> warnings;
    std::vector<ShownFile> secondRun; ///< what a second run of the same modes would still change
    std::vector<ShownReports> reports;
    std::vector<ShownRecord> records;         ///< of the whole table, in its order
    std::vector<ShownForgottenKey> forgotten; ///< by the table
    std::vector<ShownWarning> gone;           ///< of the difference of two previews: warnings of the first only
};

/// @return the worst severity among the warnings, error where there is no preview; none where nothing was found
std::optional<Severity> WorstOf(const Preview& preview);

/// The files of a preview, and the values in them.
Counts CountFiles(const std::vector<ShownFile>& files);
Counts CountValues(const std::vector<ShownFile>& files);
