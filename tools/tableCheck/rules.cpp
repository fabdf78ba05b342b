// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "rules.h"

#include <algorithm>
#include <cctype>

namespace
{

constexpr std::size_t kLineWidth = 78;

/// Breaks a text into lines at its blanks.
std::string Wrapped(std::string_view text)
{
    std::string lines;
    while (text.size() > kLineWidth) {
        const std::size_t blank = text.rfind(' ', kLineWidth);
        lines.append(text.substr(0, blank)) += '\n';
        text.remove_prefix(blank + 1);
    }
    return lines.append(text) += '\n';
}

} // namespace

const Rule* FindRule(std::string_view number)
{
    const auto found = std::find_if(Rules().begin(), Rules().end(), [number](const Rule& rule) {
        return std::equal(rule.number.begin(), rule.number.end(), number.begin(), number.end(),
                          [](unsigned char one, unsigned char two) { return one == std::toupper(two); });
    });
    return found == Rules().end() ? nullptr : &*found;
}

std::string RuleList()
{
    std::string list;
    for (const Rule& rule : Rules()) {
        std::string severity(SeverityName(rule.severity));
        severity.resize(8, ' ');
        list.append(rule.number).append(" ").append(severity).append(rule.title) += '\n';
    }
    return list;
}

std::string Explanation(const Rule& rule)
{
    std::string text;
    text.append(rule.number).append(" ").append(SeverityName(rule.severity)).append(": ").append(rule.title);
    text += "\n\n" + Wrapped(rule.effect) + "\nWhat to do:\n" + Wrapped(rule.remedy);
    return text;
}
