// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretPlaces.h"

SecretPlaces::SecretPlaces(const PhoneLists& lists) : records_(lists.records)
{
    for (const ListedEntry& entry : lists.entries)
        places_.emplace(entry.section, entry.key);
    for (const TableRecord& record : records_) {
        if (record.hasFlag) {
            places_.emplace(record.sourceSection, record.sourceKey);
            places_.emplace(record.section, record.key);
        }
    }
    Follow();
}

bool SecretPlaces::Add(const std::set<Place>& places)
{
    const std::size_t count = places_.size();
    places_.insert(places.begin(), places.end());
    Follow();
    return places_.size() != count;
}

bool SecretPlaces::IsSecret(std::string_view group, std::string_view name, NameSays names, std::string_view value) const
{
    return IsSecretValue(names, value) || places_.count({std::string(group), std::string(name)}) != 0;
}

bool SecretPlaces::IsSecret(const TableRecord& record) const
{
    return IsSecretPlace({record.sourceSection, record.sourceKey}) || IsSecretPlace({record.section, record.key});
}

bool SecretPlaces::IsSecretPlace(const Place& place) const
{
    return places_.count(place) != 0 || WhatNameSays(place.second) == NameSays::Secret;
}

/// A record whose source is the destination of another copies the secret on.
void SecretPlaces::Follow()
{
    std::size_t count = 0;
    do {
        count = places_.size();
        for (const TableRecord& record : records_) {
            if (!IsSecret(record))
                continue;
            places_.emplace(record.sourceSection, record.sourceKey);
            places_.emplace(record.section, record.key);
        }
    } while (count != places_.size());
}
