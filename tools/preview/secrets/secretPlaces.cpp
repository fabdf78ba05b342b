// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretPlaces.h"

#include <algorithm>

#include "secretNames.h"

SecretPlaces::SecretPlaces(const PhoneLists& lists)
{
    for (const ListedEntry& entry : lists.entries)
        places_.emplace(entry.section, entry.key);
    Follow(lists.records);
}

bool SecretPlaces::IsSecret(const std::string& section, const std::string& key, const std::string& value) const
{
    return places_.count({section, key}) != 0 || IsSecretValue(key, value);
}

bool SecretPlaces::IsSecret(const Item& item) const
{
    return places_.count({item.group, item.name}) != 0 ||
           std::any_of(item.names.begin(), item.names.end(),
                       [&item](const std::string& name) { return IsSecretValue(name, item.value); });
}

bool SecretPlaces::IsSecret(const TableRecord& record) const
{
    return IsListed({record.sourceSection, record.sourceKey}) || IsListed({record.section, record.key});
}

bool SecretPlaces::IsListed(const Place& place) const
{
    return places_.count(place) != 0 || IsSecretValue(place.second, "1"); // a switch is no secret
}

/// A record whose source is the destination of another carries its secret on.
void SecretPlaces::Follow(const std::vector<TableRecord>& records)
{
    std::size_t count = 0;
    do {
        count = places_.size();
        for (const TableRecord& record : records) {
            const Place source = {record.sourceSection, record.sourceKey};
            const Place destination = {record.section, record.key};
            if (!record.hasFlag && !IsListed(source) && !IsListed(destination))
                continue;
            places_.insert(source);
            places_.insert(destination);
        }
    } while (count != places_.size());
}
