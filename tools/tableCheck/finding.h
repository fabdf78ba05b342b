// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// One thing that a rule says about a place in the table.
struct Finding {
    std::string_view rule; ///< its number, as in `kRules`
    int line;              ///< from 1
    std::string text;      ///< one line of printable UTF-8
    /// The part of the text that is not the same on all phones, such as the size of a value.
    std::string varying = {};
    /// On how many of several images it holds; 0: it does not depend on the image, or there are not several.
    std::size_t images = 0;
    std::string example = {}; ///< the first of these images, as it was named
};

using Findings = std::vector<Finding>;
