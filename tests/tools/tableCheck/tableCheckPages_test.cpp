// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The pages about kestrune-table-check and its completion say what the tool itself says.

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

#include "rules.h"
#include "scratchFolder.h"
#include "tableCheckRun.h"

namespace
{

using Lines = std::vector<std::string>;

Lines AllMatches(const std::string& text, const std::string& pattern)
{
    Lines found;
    const std::regex regex(pattern);
    for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at)
        found.push_back((*at)[1].str());
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

Lines Options()
{
    return AllMatches(RunTableCheck({"--help"}).output, "(--[a-z-]+)");
}

/// What the shell offers when the last of the words is to be completed.
Lines Completions(const std::string& words)
{
    const std::string script = "PATH=\"$1:$PATH\"; source \"$0\"; COMP_WORDS=(" + words +
                               "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kestrune_table_check; "
                               "printf '%s\\n' \"${COMPREPLY[@]}\"";
    const ProcessResult result =
        RunProcess({"bash", "-c", script, SourcePath("packaging/completions/kestrune-table-check"), TableCheckFolder()},
                   {"PATH=/usr/bin:/bin"});
    EXPECT_EQ(result.errors, "");
    return AllMatches(result.output, "(.+)\n");
}

} // namespace

TEST(TableCheckPages, TheRuleTableIsTheListOfTheTool)
{
    const std::string page = ReadBytes(SourcePath("docs/table-check.md"));
    std::string rows;
    const std::regex row("\n\\| (KT\\d{3}) \\| (\\w+) +\\| ([^|]+) \\|(?=\n)");
    for (std::sregex_iterator at(page.begin(), page.end(), row), end; at != end; ++at) {
        std::string severity = (*at)[2].str();
        severity.resize(8, ' ');
        rows += (*at)[1].str() + " " + severity + (*at)[3].str() + "\n";
    }
    EXPECT_EQ(rows, RunTableCheck({"--list-rules"}).output);
    EXPECT_EQ(static_cast<std::size_t>(std::count(rows.begin(), rows.end(), '\n')), Rules().size());
}

TEST(TableCheckPages, EveryRuleIsExplained)
{
    for (const Rule& rule : Rules()) {
        const ProcessResult result = RunTableCheck({"--explain", std::string(rule.number)});
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_EQ(result.output.find(rule.number), 0u);
        EXPECT_FALSE(rule.effect.empty() || rule.remedy.empty()) << rule.number;
        std::istringstream lines(result.output);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 80u) << line;
    }
}

TEST(TableCheckPages, TheManualPageIsCleanAndNamesEveryOption)
{
    const std::string path = SourcePath("man/kestrune-table-check.1");
    const ProcessResult lint = RunProcess({"mandoc", "-T", "lint", path}, {"PATH=/usr/bin:/bin"});
    EXPECT_EQ(lint.output + lint.errors, "");
    EXPECT_EQ(lint.exitStatus, 0);
    const std::string page =
        RunProcess({"mandoc", "-T", "ascii", "-O", "width=500", path}, {"PATH=/usr/bin:/bin"}).output;
    const std::string plain = std::regex_replace(page, std::regex(".\b"), "");
    EXPECT_EQ(AllMatches(plain.substr(0, plain.find("EXAMPLES")), "(--[a-z-]+)"), Options());
}

TEST(TableCheckPages, TheCompletionOffersEveryOption)
{
    EXPECT_EQ(Completions("kestrune-table-check -"), Options());
    EXPECT_EQ(Completions("kestrune-table-check --f"), (Lines{"--firmware", "--format"}));
}

TEST(TableCheckPages, TheCompletionOffersWhatAnOptionTakes)
{
    EXPECT_THAT(Completions("kestrune-table-check --format ''"), testing::ElementsAre("github", "json", "text"));
    EXPECT_THAT(Completions("kestrune-table-check --format = j"), testing::ElementsAre("json"));
    EXPECT_THAT(Completions("kestrune-table-check --severity ="), testing::ElementsAre("error", "note", "warning"));
    EXPECT_EQ(Completions("kestrune-table-check --explain ''").size(), Rules().size());
    EXPECT_THAT(Completions("kestrune-table-check --explain KT01"), testing::SizeIs(10));
    for (const char* option : {"--root", "--firmware"}) {
        const std::string words = "kestrune-table-check " + std::string(option) + " ";
        EXPECT_THAT(Completions(words + "/us"), testing::ElementsAre("/usr"));
        EXPECT_THAT(Completions(words + "/etc/pass"), testing::Contains("/etc/passwd")); // an archive, for instance
    }
}
