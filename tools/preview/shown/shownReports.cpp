// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "shownReports.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "phoneImage/printable.h"

namespace
{

std::string MaskOrHide(const std::string& value, bool isSecret, const Secrets& secrets)
{
    return isSecret ? secrets.Mask(value) : secrets.HideInReport(value);
}

/// What comes before a record's last line: perhaps that its source does not load, then the value as read and what the
/// cipher made of it. From the first value on, any other line is a part of one.
std::string HideBeforeLastLine(const std::string& text, bool isSecret, const Secrets& secrets)
{
    std::string hidden;
    bool hasValue = false;
    for (const std::string& line : SplitLines(text)) {
        std::string head;
        if (line.starts_with(kSourceLine))
            head = kSourceLine;
        else if (line.starts_with(kCipherLine))
            head = kCipherLine;
        hasValue = hasValue || !head.empty();
        const std::string value = line.substr(head.size());
        hidden += head + (hasValue ? MaskOrHide(value, isSecret, secrets) : secrets.HideInName(value)) + "\n";
    }
    return hidden;
}

std::string HideInLines(const std::string& text, const Secrets& secrets)
{
    std::string hidden;
    for (const std::string& line : SplitLines(text))
        hidden += secrets.Hide(line) + "\n";
    return hidden;
}

std::string HideInOutput(const std::string& output, const std::vector<TableRecord>& records, const Secrets& secrets)
{
    const std::vector<RecordReport> reports = ReadRecordReports(output, records);
    if (reports.empty())
        return HideInLines(output, secrets);
    std::string hidden;
    for (const RecordReport& report : reports) {
        const bool isSecret = secrets.IsSecret(*report.record);
        hidden += HideBeforeLastLine(output.substr(report.begin, report.lastLine - report.begin), isSecret, secrets);
        hidden += secrets.HideInName(output.substr(report.lastLine, report.valueBegin - report.lastLine));
        hidden += MaskOrHide(report.value, isSecret, secrets);
        hidden += output.substr(report.valueEnd, report.end - report.valueEnd);
    }
    return hidden + HideInLines(output.substr(reports.back().end), secrets);
}

/// @return where the value of the next trace "etlTrace 2: Encrypt:(OLD)->(NEW)" begins; npos for none
std::size_t FindTracedValue(const std::string& errors, std::size_t at)
{
    constexpr std::string_view kTrace = "etlTrace ";
    constexpr std::size_t kLongestHead = sizeof "etlTrace 000: Encrypt:(" - 1;
    for (std::size_t line = FindLine(errors, kTrace, at); line != std::string::npos;
         line = FindLine(errors, kTrace, line + 1)) {
        const std::string_view head = std::string_view(errors).substr(line, kLongestHead);
        for (const std::string_view direction : {": Encrypt:(", ": Decrypt:("}) {
            if (head.find(direction) != std::string_view::npos)
                return line + head.find(direction) + direction.size();
        }
    }
    return std::string::npos;
}

/// "OLD)->(NEW)" with both hidden; what does not look like that is hidden whole.
std::string HideTraced(const std::string& traced, const Secrets& secrets)
{
    constexpr std::string_view kMiddle = ")->(";
    const std::size_t middle = traced.find(kMiddle);
    if (middle == std::string::npos || !traced.ends_with(')'))
        return secrets.Mask(traced);
    const std::size_t after = middle + kMiddle.size();
    return secrets.Mask(traced.substr(0, middle)) + std::string(kMiddle) +
           secrets.Mask(traced.substr(after, traced.size() - after - 1)) + ")";
}

/// The password pass traces nothing but secrets; they may have several lines.
std::string HideInErrors(const std::string& errors, const Secrets& secrets)
{
    std::string hidden;
    std::size_t at = 0;
    for (std::size_t begin = FindTracedValue(errors, at); begin != std::string::npos;
         begin = FindTracedValue(errors, at)) {
        const std::size_t line = errors.rfind('\n', begin) + 1; // npos + 1 is 0: the first line
        const std::size_t middle = errors.find(")->(", begin);
        const std::size_t last = middle == std::string::npos ? begin : errors.find(")\n", middle + 4);
        const std::size_t end = std::min(errors.size(), last == std::string::npos ? last : errors.find('\n', last));
        hidden += HideInLines(errors.substr(at, line - at), secrets) + errors.substr(line, begin - line);
        hidden += HideTraced(errors.substr(begin, end - begin), secrets) + "\n";
        at = std::min(errors.size(), end + 1);
    }
    return hidden + HideInLines(errors.substr(at), secrets);
}

std::vector<std::string> PrintableLines(const std::string& text)
{
    std::vector<std::string> lines;
    for (const std::string& line : SplitLines(text))
        lines.push_back(Printable(line));
    return lines;
}

} // namespace

ShownReports ShowReports(const RunReports& reports, const std::vector<TableRecord>& records, const Secrets& secrets)
{
    return {Printable(reports.mode), PrintableLines(HideInOutput(reports.output, records, secrets)),
            PrintableLines(HideInErrors(reports.errors, secrets))};
}
