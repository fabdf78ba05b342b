// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "report.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "phoneImage/printable.h"

namespace
{

Severity SeverityOf(const Finding& finding)
{
    return FindRule(finding.rule)->severity; // every finding bears the number of a rule
}

/// @param reserved  characters that a workflow command needs for itself
/// @return the text with "%NN" for each of them
std::string PercentEncoded(std::string_view text, std::string_view reserved)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char character : text) {
        if (reserved.find(character) == std::string_view::npos)
            encoded += character;
        else
            encoded.append({'%', kDigits[character / 16], kDigits[character % 16]});
    }
    return encoded;
}

struct SameNotes {
    std::size_t first; ///< its index among those that are shown
    int count;
    int lastLine;
};

std::string CountText(const Finding& finding, std::size_t images)
{
    if (finding.images == 0)
        return "";
    return " (on " + std::to_string(finding.images) + " of " + std::to_string(images) + " images, the first is " +
           Printable(finding.example) + ")";
}

/// @return the findings with their counts in the text, and one note for each rule, which counts the others: these lines are
///         for people
Findings ForPeople(const ImagesResult& result)
{
    Findings shown;
    std::map<std::string_view, SameNotes> notes;
    for (const Finding& finding : result.findings) {
        const bool isNote = SeverityOf(finding) == Severity::Note;
        if (const auto known = notes.find(finding.rule); isNote && known != notes.end()) {
            ++known->second.count;
            known->second.lastLine = finding.line;
            continue;
        }
        if (isNote)
            notes.insert({finding.rule, {shown.size(), 1, finding.line}});
        shown.push_back(finding);
        shown.back().text += CountText(finding, result.images);
    }
    for (const auto& [rule, same] : notes) {
        if (same.count > 1)
            shown[same.first].text += " (the first of " + std::to_string(same.count) +
                                      " such records, the last is at line " + std::to_string(same.lastLine) + ")";
    }
    return shown;
}

std::string_view GithubCommand(Severity severity)
{
    return severity == Severity::Note ? "notice" : SeverityName(severity);
}

} // namespace

Tally Count(const Findings& findings)
{
    Tally tally;
    for (const Finding& finding : findings) {
        switch (SeverityOf(finding)) {
        case Severity::Error:
            ++tally.errors;
            break;
        case Severity::Warning:
            ++tally.warnings;
            break;
        case Severity::Note:
            ++tally.notes;
            break;
        }
    }
    return tally;
}

int ExitStatus(const ImagesResult& result)
{
    const Tally tally = Count(result.findings);
    if (tally.errors != 0 || !result.failed.empty())
        return 2;
    return tally.warnings != 0 ? 1 : 0;
}

void KeepFrom(Severity least, Findings& findings)
{
    findings.erase(std::remove_if(findings.begin(), findings.end(),
                                  [least](const Finding& finding) { return SeverityOf(finding) < least; }),
                   findings.end());
}

std::string TextReport(const std::string& path, const ImagesResult& result)
{
    std::string report;
    for (const Finding& finding : ForPeople(result)) {
        report.append(Printable(path)).append(":").append(std::to_string(finding.line)).append(": ");
        report.append(SeverityName(SeverityOf(finding))).append(": ").append(finding.text);
        report.append(" [").append(finding.rule).append("]\n");
    }
    return report;
}

std::string JsonReport(const std::string& path, const ImagesResult& result)
{
    using Json = nlohmann::ordered_json;
    const Tally tally = Count(result.findings);
    Json report = {{"version", 1}, {"table", path}};
    if (result.isCounted) {
        report["images"] = result.images;
        report["failed"] = Json::array();
        for (const FailedImage& failed : result.failed)
            report["failed"].push_back({{"image", failed.image}, {"reason", failed.reason}});
    }
    report.update({{"errors", tally.errors}, {"warnings", tally.warnings}, {"notes", tally.notes}});
    report["findings"] = Json::array();
    for (const Finding& finding : result.findings) {
        Json& shown = report["findings"].emplace_back();
        shown = {{"line", finding.line},
                 {"severity", SeverityName(SeverityOf(finding))},
                 {"rule", finding.rule},
                 {"text", finding.text}};
        if (finding.images != 0)
            shown.update({{"images", finding.images}, {"example", finding.example}});
    }
    constexpr int kIndent = 2;
    return report.dump(kIndent, ' ', /*ensure_ascii=*/true, Json::error_handler_t::replace) + "\n";
}

std::string GithubReport(const std::string& path, const ImagesResult& result)
{
    std::string report;
    for (const Finding& finding : ForPeople(result)) {
        report.append("::").append(GithubCommand(SeverityOf(finding)));
        report.append(" file=").append(PercentEncoded(Printable(path), "%:,"));
        report.append(",line=").append(std::to_string(finding.line)).append(",title=").append(finding.rule);
        report.append("::").append(PercentEncoded(finding.text, "%")) += '\n';
    }
    return report;
}
