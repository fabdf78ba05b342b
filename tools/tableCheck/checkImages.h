// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "checkTable.h"

/// An image that could not be checked.
struct FailedImage {
    std::string image;  ///< as it was named
    std::string reason; ///< may have bytes of the image's names
};

struct ImagesResult {
    Findings findings;      ///< by line
    bool isCounted = false; ///< there is more than one image: each finding that depends on them has a count
    std::size_t images = 0; ///< how many were checked
    std::vector<FailedImage> failed;
};

/// Checks a table against phones, one at a time. With several, findings with the same line, rule and text, apart from what
/// varies, are one, with a count. An image that cannot be read does not end the check.
///
/// Throws `ToolError`, as `CheckTable` does, for the table, the list and the firmware.
///
/// @param input     table and list; the image's fields are empty
/// @param images    folders and archives; without any, only the table is checked
/// @param firmware  folder or archive whose tree phone/ replaces that of each image; empty for none
ImagesResult CheckImages(const TableCheckInput& input, const std::vector<std::string>& images,
                         const std::string& firmware);
