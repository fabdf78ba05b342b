// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "consequences.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace
{

struct Cause {
    std::string_view rule;
    std::vector<std::string_view> consequences;
};

/// Static: a table of constants. No cause is the consequence of a later one.
const std::vector<Cause>& Causes()
{
    static const std::vector<Cause> causes = {
        // The pass ends, and nothing else in the record counts.
        {"KT006",
         {"KT005", "KT010", "KT011", "KT012", "KT013", "KT014", "KT017", "KT018", "KT020", "KT030", "KT037", "KT040"}},
        {"KT005", {"KT018", "KT025"}},                   // no source on any phone
        {"KT017", {"KT023", "KT024", "KT025", "KT040"}}, // no key of that name on any phone
        {"KT026", {"KT040"}},                            // enciphered at no place
        {"KT027", {"KT040"}},                            // enciphered at no place
        {"KT034", {"KT022", "KT023", "KT025", "KT040"}}, // no file of that name on any phone
    };
    return causes;
}

} // namespace

void DropConsequences(Findings& findings)
{
    for (const Cause& cause : Causes()) {
        const auto isOf = [&cause](const Finding& finding) { return finding.rule == cause.rule; };
        if (std::none_of(findings.begin(), findings.end(), isOf))
            continue;
        const auto follows = [&cause](const Finding& finding) {
            return std::find(cause.consequences.begin(), cause.consequences.end(), finding.rule) !=
                   cause.consequences.end();
        };
        findings.erase(std::remove_if(findings.begin(), findings.end(), follows), findings.end());
    }
}
