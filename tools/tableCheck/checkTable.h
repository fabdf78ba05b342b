// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "finding.h"

/// What is looked at. Empty paths: without it.
struct TableCheckInput {
    std::string table;
    std::string image;     ///< folder of a phone
    std::string entryList; ///< in place of the image's own
};

/// @param findings  gets what the rules find, by line
/// @param problem   gets what keeps the check from being made
/// @return false when the check cannot be made: the image cannot be looked into, or the list does not load
bool CheckTable(const TableCheckInput& input, Findings& findings, std::string& problem);
