// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string_view>

/// How bad a finding is, for both tools. Their exit statuses follow it.
enum class Severity {
    Note,    ///< nothing is lost
    Warning, ///< may be meant, and has to be looked at
    Error,   ///< data or secrets are lost, or an upgrade stops halfway
};

constexpr Severity kSeverities[] = {Severity::Note, Severity::Warning, Severity::Error};

constexpr std::string_view SeverityName(Severity severity)
{
    constexpr std::string_view names[] = {"note", "warning", "error"};
    return names[static_cast<int>(severity)];
}

/// @return none for another word
constexpr std::optional<Severity> SeverityNamed(std::string_view name)
{
    for (const Severity severity : kSeverities) {
        if (SeverityName(severity) == name)
            return severity;
    }
    return std::nullopt;
}
