// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "phoneLists.h"

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

/// How the table's reports about a record begin. The first two may be missing; the last one names the record's destination.
constexpr std::string_view kSourceReport = "src value:";
constexpr std::string_view kCipherReport = "lpOutPassword=";
constexpr std::string_view kRecordReport = "Translate dst: ";

/// The last report about a record, in its parts.
struct RecordLine {
    std::string head;
    std::string value;
    std::string tail; ///< ends in the record's encrypt flag
};

/// @return none when the line is not the one about this record, or goes on after a line break in a name or value
std::optional<RecordLine> SplitRecordLine(const std::string& line, const TableRecord& record);

std::vector<std::string> SplitLines(const std::string& text);

/// @param records  the table's, which the reports refer to
std::vector<RecordReport> ReadRecordReports(const std::string& output, const std::vector<TableRecord>& records);
