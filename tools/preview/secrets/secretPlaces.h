// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <set>
#include <string>
#include <utility>

#include "changes/items.h"
#include "steps/stepsClient.h"

/// Which places of a phone hold secrets: what its entry list names, what its table's records with an encrypt flag read
/// and write, wherever another record carries such a value, and whatever a name says to be one. Files do not count: the
/// same section and key are secret in each.
class SecretPlaces
{
public:
    explicit SecretPlaces(const PhoneLists& lists);

    bool IsSecret(const std::string& section, const std::string& key, const std::string& value) const;
    bool IsSecret(const Item& item) const;
    bool IsSecret(const TableRecord& record) const;

private:
    using Place = std::pair<std::string, std::string>;

    bool IsListed(const Place& place) const;
    void Follow(const std::vector<TableRecord>& records);

    std::set<Place> places_;
};
