// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <set>
#include <string>

#include "tableRecord.h"

/// The list of entries that the phone keeps enciphered, as the rules ask for it.
struct EntryList {
    std::set<Place> converted; ///< what the password pass converts
    std::set<Place> secrets;   ///< these, and entries per account in the account files that the pass leaves out
    std::set<Place> plain;     ///< entries that are not active: the phone keeps them plain on purpose
};

/// @param path  the list's file. Throws `ToolError` when it does not load.
EntryList ReadEntryList(const std::string& path);
