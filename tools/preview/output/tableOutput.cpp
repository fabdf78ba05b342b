// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "tableOutput.h"

#include <algorithm>
#include <array>
#include <string>

#include "summaryText.h"

namespace
{

constexpr std::size_t kColumns = 5;
using Row = std::array<std::string, kColumns>;

/// "+3 ~1 !0 -0"
std::string ShortCounts(const Counts& counts)
{
    return "+" + std::to_string(counts[ChangeKind::Added]) + " ~" + std::to_string(counts[ChangeKind::Changed]) + " !" +
           std::to_string(counts[ChangeKind::Emptied]) + " -" + std::to_string(counts[ChangeKind::Removed]);
}

Row RowOf(const Preview& preview)
{
    if (!preview.error.empty())
        return {preview.image, "error: " + preview.error, "", "", ""};
    return {preview.image, ShortCounts(CountFiles(preview.files)), ShortCounts(CountValues(preview.files)),
            std::to_string(preview.warnings.size()), std::to_string(preview.secondRun.size())};
}

std::string Padded(const std::string& text, std::size_t width)
{
    const std::size_t length = LengthOf(text);
    return length < width ? text + std::string(width - length, ' ') : text;
}

} // namespace

void WriteTable(std::ostream& out, const std::vector<Preview>& previews)
{
    std::vector<Row> rows = {{"image", "files", "keys", "warnings", "second run"}};
    for (const Preview& preview : previews)
        rows.push_back(RowOf(preview));
    std::array<std::size_t, kColumns> widths = {};
    for (const Row& row : rows) {
        const bool isError = row[2].empty();
        for (std::size_t i = 0; i < (isError ? 1 : kColumns); ++i)
            widths[i] = std::max(widths[i], LengthOf(row[i]));
    }
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < kColumns; ++i)
            line += Padded(row[i], widths[i]) + "  ";
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << "\n";
    }
}
