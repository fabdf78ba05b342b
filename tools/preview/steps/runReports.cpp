// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "runReports.h"

#include <sstream>

namespace
{

constexpr std::string_view kFlag = " bThisKeyEncrypt:";
constexpr std::string_view kEnd = "Can's load user's inifile!"; // the device's own spelling

/// What comes before a record's value. Only the record's own names say where that begins: they may hold anything.
std::string HeadOf(const TableRecord& record)
{
    return std::string(kRecordReport) + record.file + " " + record.section + " " + record.key + " value:";
}

} // namespace

std::optional<RecordLine> SplitRecordLine(const std::string& line, const TableRecord& record)
{
    const std::string head = HeadOf(record);
    const std::size_t flag = line.rfind(kFlag);
    if (!line.starts_with(head) || flag == std::string::npos || flag < head.size())
        return std::nullopt;
    return RecordLine{head, line.substr(head.size(), flag - head.size()), line.substr(flag)};
}

std::vector<std::string> SplitLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::vector<RecordReport> ReadRecordReports(const std::string& output, const std::vector<TableRecord>& records)
{
    std::vector<RecordReport> reports;
    std::optional<std::string> source;
    for (const std::string& line : SplitLines(output)) {
        if (line.starts_with(kSourceReport)) {
            source = line.substr(kSourceReport.size());
        } else if (line == kEnd && !reports.empty()) {
            reports.back().endsPass = true;
        } else if (line.starts_with(kRecordReport) && reports.size() < records.size()) {
            const TableRecord& record = records[reports.size()];
            const auto parts = SplitRecordLine(line, record);
            reports.push_back({&record, reports.size() + 1, source, parts ? parts->value : std::string(),
                               parts && parts->tail.back() == '1', /*endsPass=*/false});
            source.reset();
        }
    }
    return reports;
}
