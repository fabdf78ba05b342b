// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <ostream>
#include <vector>

#include "shown/shownPreview.h"

/// Writes one row for each image: how many files and keys were added, changed, emptied and removed, how many warnings
/// there are, and how many files a second run would still change.
void WriteTable(std::ostream& out, const std::vector<Preview>& previews);
