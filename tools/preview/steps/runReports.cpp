// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "runReports.h"

#include <algorithm>
#include <sstream>

namespace
{

constexpr std::string_view kFlag = LiteralOf(kRecordReport, 4);
constexpr std::string_view kEnd = kNoDestinationReport;

std::string HeadOf(const TableRecord& record)
{
    std::string head(LiteralOf(kRecordReport, 0));
    int number = 0;
    for (const std::string& name : {record.file, record.section, record.key})
        head.append(name).append(LiteralOf(kRecordReport, ++number));
    return head;
}

/// The value that was read, which ends with its line or before the report of the cipher.
///
/// @param reports  those before a record's last line
std::optional<std::string> SourceIn(std::string_view reports)
{
    const std::size_t line = FindLine(reports, kSourceLine, 0);
    if (line == std::string_view::npos)
        return std::nullopt;
    const std::size_t begin = line + kSourceLine.size();
    const std::size_t cipherLine = FindLine(reports, kCipherLine, begin);
    const std::size_t end = cipherLine == std::string_view::npos ? reports.find('\n', begin) : cipherLine - 1;
    return std::string(reports.substr(begin, end - begin));
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

std::optional<std::string> MatchReport(std::string_view line, std::string_view prefix, std::string_view format)
{
    if (!line.starts_with(prefix))
        return std::nullopt;
    line.remove_prefix(prefix.size());
    if (format.ends_with('\n'))
        format.remove_suffix(1);
    if (format.find("%s") == std::string_view::npos)
        return line == format ? std::optional<std::string>("") : std::nullopt;
    const std::string_view beginning = LiteralOf(format, 0);
    const std::string_view end = LiteralOf(format, 1);
    if (!line.starts_with(beginning) || !line.ends_with(end) || line.size() <= beginning.size() + end.size())
        return std::nullopt;
    return std::string(line.substr(beginning.size(), line.size() - beginning.size() - end.size()));
}

std::size_t FindLine(std::string_view text, std::string_view words, std::size_t at)
{
    std::size_t found = text.find(words, at);
    while (found != std::string_view::npos && found > 0 && text[found - 1] != '\n')
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
        report.source = SourceIn(std::string_view(output).substr(begin, line - begin));
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
