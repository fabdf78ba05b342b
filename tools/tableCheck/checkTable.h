// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "finding.h"

/// The paths of what is checked.
struct TableCheckInput {
    std::string table;
    std::string image;          ///< folder of a phone; empty: no image
    std::string entryList;      ///< empty: the image's own, if there is an image
    std::string cipherKey = {}; ///< for an image without one; empty: none
};

/// @return what the rules find, by line. Throws `ToolError` when nothing can be checked: the table cannot be read, the image
///         is not a folder, or the list does not load.
Findings CheckTable(const TableCheckInput& input);
