// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <algorithm>

#include "fleetOutput.h"

namespace
{

constexpr std::size_t kMostRows = 20;

using Rows = std::vector<std::vector<std::string>>;

std::string Padded(const std::string& text, std::size_t width)
{
    const std::size_t length = LengthOf(text);
    return length < width ? text + std::string(width - length, ' ') : text;
}

/// Writes a table with a heading; nothing when it has no rows.
///
/// @param all  how many rows there are, of which these are the first
void WriteTable(std::ostream& out, const std::string& heading, const Rows& rows, std::size_t all)
{
    if (rows.empty())
        return;
    out << "\n" << heading << "\n";
    std::vector<std::size_t> widths(rows.front().size());
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], LengthOf(row[i]));
    }
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += "  " + Padded(row[i], widths[i]);
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << "\n";
    }
    if (all > rows.size())
        out << "  ... and " << all - rows.size() << " more: see --html or --json\n";
}

/// @return the rows of the first members of a list
template <typename List, typename ToRow>
Rows FirstRows(const List& list, ToRow toRow)
{
    Rows rows;
    for (std::size_t i = 0; i < std::min(list.size(), kMostRows); ++i)
        rows.push_back(toRow(list[i]));
    return rows;
}

std::vector<std::string> RuleRow(const RuleCount& rule)
{
    return {std::to_string(rule.phones), std::string(SeverityName(rule.severity)) + " " + rule.rule,
            std::string(rule.isGone ? "gone: " : "") + rule.title,
            rule.places.front().example + ": " + rule.places.front().place};
}

std::vector<std::string> PlaceRow(const PlaceCount& place)
{
    return {std::to_string(place.phones), CountWords(place.byKind), PlaceText(place), "such as " + place.example};
}

std::vector<std::string> RecordRow(const RecordCount& record)
{
    std::vector<std::string> counts;
    for (std::size_t i = 0; i < record.byOutcome.size(); ++i) {
        if (record.byOutcome[i] != 0)
            counts.push_back(std::to_string(record.byOutcome[i]) + " " + OutcomeWords(static_cast<RecordOutcome>(i)));
    }
    return {"line " + std::to_string(record.line), record.source + " -> " + record.destination, Join(counts)};
}

std::vector<std::string> ForgottenRow(const ForgottenCount& key)
{
    return {std::to_string(key.ownPhones), "of " + std::to_string(key.phones),
            PlaceText(key.file, key.section, key.key), "such as " + key.example};
}

std::vector<std::string> PhoneRowText(const PhoneRow& row)
{
    const std::string numbers =
        std::to_string(row.bySeverity[2]) + " errors, " + std::to_string(row.bySeverity[1]) + " warnings";
    return {kEndings[static_cast<std::size_t>(row.ending)], row.image, row.error.empty() ? numbers : row.error};
}

bool HasMovedNothing(const RecordCount& record)
{
    return record.byOutcome[static_cast<std::size_t>(RecordOutcome::Moved)] == 0;
}

} // namespace

void WriteFleetText(std::ostream& out, const FleetReport& report)
{
    out << SummaryOf(report) << "\n";
    WriteTable(out, "Warnings, by phones", FirstRows(report.rules, RuleRow), report.rules.size());
    WriteTable(out, report.isDifference ? "Places that end different, the rarest first" : "Changes, the rarest first",
               FirstRows(report.places, PlaceRow), report.places.size());
    std::vector<RecordCount> idle;
    std::copy_if(report.records.begin(), report.records.end(), std::back_inserter(idle), HasMovedNothing);
    WriteTable(out, "Records that moved no value on any phone", FirstRows(idle, RecordRow), idle.size());
    WriteTable(out, "What the table forgets, by phones with another value than the old firmware's",
               FirstRows(report.forgotten, ForgottenRow), report.forgotten.size());
    std::vector<PhoneRow> worst;
    std::copy_if(report.phones.begin(), report.phones.end(), std::back_inserter(worst),
                 [](const PhoneRow& row) { return row.ending != Ending::Well; });
    WriteTable(out, "Phones, worst first", FirstRows(worst, PhoneRowText), worst.size());
}
