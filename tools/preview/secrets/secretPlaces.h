// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "items/items.h"
#include "steps/phoneLists.h"

/// Which places of a phone hold secrets: those that its entry list names, the source and destination of a table record
/// with an encrypt flag, those that are added, and every place that a record copies such a value to or from.
class SecretPlaces
{
public:
    /// A section and key, or an element and attribute. The same place is secret in every file.
    using Place = std::pair<std::string, std::string>;

    explicit SecretPlaces(const PhoneLists& lists);

    /// @return whether there is a new place, also one that a record copies to or from
    bool Add(const std::set<Place>& places);

    /// By the place, or by what its names say of the value.
    bool IsSecret(std::string_view group, std::string_view name, NameSays names, std::string_view value) const;
    bool IsSecret(const Item& item) const { return IsSecret(*item.position, item.name, item.names, item.value); }

    /// Whether a record copies a secret.
    bool IsSecret(const TableRecord& record) const;

private:
    /// A place is looked up for each line of each file: without a copy of its names.
    struct ByName {
        using is_transparent = void;
        using Names = std::pair<std::string_view, std::string_view>;
        bool operator()(const Names& one, const Names& other) const { return one < other; }
    };

    bool IsSecretPlace(const Place& place) const;

    std::multimap<Place, Place> copies_; ///< between the two places of each record, in both directions
    std::set<Place, ByName> places_;
};
