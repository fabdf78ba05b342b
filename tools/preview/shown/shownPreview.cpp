// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "shownPreview.h"

std::optional<Severity> WorstOf(const Preview& preview)
{
    if (!preview.error.empty())
        return Severity::Error;
    if (preview.warnings.empty())
        return std::nullopt;
    return preview.warnings.front().severity; // they are sorted
}

Counts CountFiles(const std::vector<ShownFile>& files)
{
    Counts counts;
    for (const ShownFile& file : files)
        ++counts[file.kind];
    return counts;
}

Counts CountValues(const std::vector<ShownFile>& files)
{
    Counts counts;
    for (const ShownFile& file : files) {
        for (const ShownChange& change : file.changes)
            counts[change.kind] += change.name.empty() ? static_cast<int>(change.attributes.size()) : 1;
    }
    return counts;
}
