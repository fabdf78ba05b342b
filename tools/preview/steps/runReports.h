// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "passReports.h"
#include "phoneLists.h"

/// What one run of the program wrote, as it wrote it: secrets in clear.
struct RunReports {
    std::string mode;
    std::string output;
    std::string errors;
};

/// What the translation table reported about one record. The positions are those in the output.
struct RecordReport {
    const TableRecord* record = nullptr;
    std::size_t number = 0;            ///< of the record, from 1
    std::optional<std::string> source; ///< value as read; none when nothing was read
    std::string value;                 ///< as written
    std::size_t begin = 0;             ///< of what was reported before the record's last line
    std::size_t lastLine = 0;          ///< which names the destination
    std::size_t valueBegin = 0;        ///< of the value in the last line
    std::size_t valueEnd = 0;
    std::size_t end = 0; ///< of the last line, with its line end
    bool isFlagged = false;
    bool endsPass = false; ///< its destination did not load
};

/// @return the literal text of a report's format between its conversions: 0 for what comes before the first one
constexpr std::string_view LiteralOf(std::string_view format, int number)
{
    for (; number > 0; --number)
        format.remove_prefix(format.find('%') + 2); // "%s" and "%d" only
    return format.substr(0, format.find('%'));
}

/// How the lines with values begin that come before a record's last line; either may be missing.
constexpr std::string_view kSourceLine = LiteralOf(kSourceReport, 0);
constexpr std::string_view kCipherLine = LiteralOf(kCipherReport, 0);

/// @param prefix  what the platform puts before a text of the log or trace
/// @param format  a report with at most one "%s"
/// @return what "%s" is in the line, empty for a report without one; none if the line is another report
std::optional<std::string> MatchReport(std::string_view line, std::string_view prefix, std::string_view format);

std::vector<std::string> SplitLines(const std::string& text);

/// @return where a line begins with these words, at the position or after it; npos for none
std::size_t FindLine(std::string_view text, std::string_view words, std::size_t at);

/// Finds each record's last line by the record's own names: they and the values may hold anything, line ends too.
///
/// @param records  the table's, which the reports refer to
/// @return up to the first record without a report
std::vector<RecordReport> ReadRecordReports(const std::string& output, const std::vector<TableRecord>& records);
