// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretPlaces.h"

SecretPlaces::SecretPlaces(const PhoneLists& lists)
{
    std::set<Place> seeds;
    for (const ListedEntry& entry : lists.entries)
        seeds.emplace(entry.section, entry.key);
    for (const TableRecord& record : lists.records) {
        const Place source = {record.sourceSection, record.sourceKey};
        const Place destination = {record.section, record.key};
        copies_.emplace(source, destination);
        copies_.emplace(destination, source);
        if (record.hasFlag || IsSecret(record))
            seeds.insert({source, destination});
    }
    (void)Add(seeds);
}

/// A record whose source is the destination of another copies the secret on.
bool SecretPlaces::Add(const std::set<Place>& places)
{
    const std::size_t count = places_.size();
    std::vector<Place> added(places.begin(), places.end());
    while (!added.empty()) {
        const Place place = std::move(added.back());
        added.pop_back();
        if (!places_.insert(place).second)
            continue;
        const auto [begin, end] = copies_.equal_range(place);
        for (auto copy = begin; copy != end; ++copy)
            added.push_back(copy->second);
    }
    return places_.size() != count;
}

bool SecretPlaces::IsSecret(std::string_view group, std::string_view name, NameSays names, std::string_view value) const
{
    return IsSecretValue(names, value) || places_.count(std::pair(group, name)) != 0;
}

bool SecretPlaces::IsSecret(const TableRecord& record) const
{
    return IsSecretPlace({record.sourceSection, record.sourceKey}) || IsSecretPlace({record.section, record.key});
}

bool SecretPlaces::IsSecretPlace(const Place& place) const
{
    return places_.count(place) != 0 || WhatNameSays(place.second) == NameSays::Secret;
}
