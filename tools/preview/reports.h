// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "phoneHelper.h"
#include "preview.h"
#include "secrets.h"

/// What one run of the program wrote, as it wrote it: secrets in clear.
struct RunReports {
    std::string mode;
    std::string output;
    std::string errors;
};

/// What the translation table reported about one record.
struct RecordReport {
    const TableRecord* record = nullptr;
    std::size_t number = 0;            ///< of the record, from 1
    std::optional<std::string> source; ///< value as read; none when nothing was read
    std::string value;                 ///< as written
    bool isFlagged = false;
    bool endsPass = false; ///< its destination did not load
};

std::vector<std::string> SplitLines(const std::string& text);

/// @param records  the table's, which the reports refer to
std::vector<RecordReport> ReadRecordReports(const std::string& output, const std::vector<TableRecord>& records);

/// Makes reports fit to be shown: the values of secret places are hidden wherever a report repeats them, and both forms
/// of what the cipher made of one.
ShownReports ShowReports(const RunReports& reports, const std::vector<TableRecord>& records, const Secrets& secrets);
