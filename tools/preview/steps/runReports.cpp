// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "runReports.h"

#include <algorithm>
#include <sstream>

namespace
{

constexpr std::string_view kFlag = " bThisKeyEncrypt:";
constexpr std::string_view kEnd = "Can's load user's inifile!\n"; // the device's own spelling

std::string HeadOf(const TableRecord& record)
{
    return "Translate dst: " + record.file + " " + record.section + " " + record.key + " value:";
}

/// The value read, which ends with its line or before the report of the cipher.
std::optional<std::string> SourceIn(const std::string& output, std::size_t begin, std::size_t end)
{
    const std::size_t line = FindLine(output, kSourceReport, begin);
    if (line >= end)
        return std::nullopt;
    const std::size_t valueBegin = line + kSourceReport.size();
    const std::size_t cipherLine = FindLine(output, kCipherReport, valueBegin);
    const std::size_t valueEnd = cipherLine < end ? cipherLine - 1 : output.find('\n', valueBegin);
    return output.substr(valueBegin, valueEnd - valueBegin);
}

} // namespace

std::vector<std::string> SplitLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::size_t FindLine(const std::string& text, std::string_view words, std::size_t at)
{
    std::size_t found = text.find(words, at);
    while (found != std::string::npos && found > 0 && text[found - 1] != '\n')
        found = text.find(words, found + 1);
    return found;
}

std::vector<RecordReport> ReadRecordReports(const std::string& output, const std::vector<TableRecord>& records)
{
    std::vector<RecordReport> reports;
    std::size_t begin = 0;
    for (const TableRecord& record : records) {
        const std::string head = HeadOf(record);
        const std::size_t line = FindLine(output, head, begin);
        if (line == std::string::npos)
            break;
        RecordReport report;
        report.record = &record;
        report.number = reports.size() + 1;
        report.source = SourceIn(output, begin, line);
        report.begin = begin;
        report.lastLine = line;
        report.valueBegin = line + head.size();
        report.valueEnd = std::min(output.size(), output.find(kFlag, report.valueBegin));
        report.value = output.substr(report.valueBegin, report.valueEnd - report.valueBegin);
        report.isFlagged = output.compare(report.valueEnd, kFlag.size() + 1, std::string(kFlag) + "1") == 0;
        report.end = std::min(output.size(), report.valueEnd + kFlag.size() + sizeof "1");
        report.endsPass = output.compare(report.end, kEnd.size(), kEnd) == 0;
        begin = report.end;
        reports.push_back(std::move(report));
    }
    return reports;
}
