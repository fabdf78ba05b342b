// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "shownPreview.h"

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
