// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "unifiedDiff.h"

#include <sstream>

#include "phoneImage/childProcess.h"
#include "phoneImage/scratch.h"
#include "phoneImage/toolError.h"

std::vector<std::string> UnifiedDiff(const std::string& before, const std::string& after)
{
    const Scratch scratch;
    WriteWhole(scratch.Path("before"), before);
    WriteWhole(scratch.Path("after"), after);
    const ChildResult result = RunChild({"diff", "--unified", "--text", "--label", "before", "--label", "after", "--",
                                         scratch.Path("before").string(), scratch.Path("after").string()});
    if (result.exitStatus > 1)
        throw ToolError("diff failed");
    std::vector<std::string> lines;
    std::istringstream stream(result.output);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    constexpr std::size_t kHeadLines = 2;
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(std::min(lines.size(), kHeadLines)));
    return lines;
}
