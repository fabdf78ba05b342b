// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "report.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "phoneImage/printable.h"

namespace
{

Severity SeverityOf(const Finding& finding)
{
    return FindRule(finding.rule)->severity; // every finding bears the number of a rule
}

/// What a value of a workflow command's property must not hold.
std::string EscapedProperty(std::string_view text)
{
    std::string escaped;
    for (const char character : text) {
        switch (character) {
        case '%':
            escaped += "%25";
            break;
        case ':':
            escaped += "%3A";
            break;
        case ',':
            escaped += "%2C";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

/// A finding's text is one line of printable characters already.
std::string EscapedMessage(std::string_view text)
{
    std::string escaped;
    for (const char character : text)
        character == '%' ? escaped += "%25" : escaped += character;
    return escaped;
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
        const Severity severity = SeverityOf(finding);
        int& count = severity == Severity::Error     ? tally.errors
                     : severity == Severity::Warning ? tally.warnings
                                                     : tally.notes;
        ++count;
    }
    return tally;
}

int ExitStatus(const Findings& findings)
{
    const Tally tally = Count(findings);
    return tally.errors != 0 ? 2 : tally.warnings != 0 ? 1 : 0;
}

void KeepFrom(Severity least, Findings& findings)
{
    findings.erase(std::remove_if(findings.begin(), findings.end(),
                                  [least](const Finding& finding) { return SeverityOf(finding) < least; }),
                   findings.end());
}

std::string TextReport(const std::string& path, const Findings& findings)
{
    std::string report;
    for (const Finding& finding : findings) {
        report.append(Printable(path)).append(":").append(std::to_string(finding.line)).append(": ");
        report.append(SeverityName(SeverityOf(finding))).append(": ").append(finding.text);
        report.append(" [").append(finding.rule).append("]\n");
    }
    return report;
}

std::string JsonReport(const std::string& path, const Findings& findings)
{
    using Json = nlohmann::ordered_json;
    const Tally tally = Count(findings);
    Json report = {{"version", 1},           {"table", path},
                   {"errors", tally.errors}, {"warnings", tally.warnings},
                   {"notes", tally.notes},   {"findings", Json::array()}};
    for (const Finding& finding : findings) {
        report["findings"].push_back({{"line", finding.line},
                                      {"severity", SeverityName(SeverityOf(finding))},
                                      {"rule", finding.rule},
                                      {"text", finding.text}});
    }
    constexpr int kIndent = 2;
    return report.dump(kIndent, ' ', /*ensure_ascii=*/true, Json::error_handler_t::replace) + "\n";
}

std::string GithubReport(const std::string& path, const Findings& findings)
{
    std::string report;
    for (const Finding& finding : findings) {
        report.append("::").append(GithubCommand(SeverityOf(finding)));
        report.append(" file=").append(EscapedProperty(Printable(path)));
        report.append(",line=").append(std::to_string(finding.line)).append(",title=").append(finding.rule);
        report.append("::").append(EscapedMessage(finding.text)) += '\n';
    }
    return report;
}
