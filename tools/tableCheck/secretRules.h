// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "entryList.h"
#include "finding.h"

/// Rules about secrets that a record leaves plain, at their new or old place, where the password pass never enciphers them.
class SecretRules
{
public:
    /// @param records  the whole table: in a second run each record meets what all others have written
    /// @param list     null without one; outlives this
    SecretRules(const std::vector<TableRecord>& records, const EntryList* list);

    void Check(const TableRecord& record, Findings& findings) const;

private:
    void FollowMoves(const std::vector<TableRecord>& records);
    bool IsLeftAsItIs(const Place& place) const;
    bool IsPlainOnPurpose(const Place& place) const;

    const EntryList* list_;
    std::map<Place, std::string> secrets_; ///< why each of these places holds a secret
    std::set<Place> enciphered_;           ///< what records write enciphered
};
