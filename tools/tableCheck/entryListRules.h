// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <set>

#include "finding.h"
#include "tableRecord.h"

/// Rules about the list of entries that the phone keeps enciphered.
class EntryListRules
{
public:
    /// @param path  the list's file
    /// @return false when it does not load
    bool Load(const std::string& path);

    /// Finds nothing before a list was loaded.
    void Check(const TableRecord& record, Findings& findings) const;

private:
    bool isLoaded_ = false;
    std::set<Place> entries_; ///< the active ones
};
