// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretRules.h"

#include "phoneImage/secretNames.h"

namespace
{

std::string RecordAt(const TableRecord& record)
{
    return "the record at line " + std::to_string(record.Line());
}

/// By the key's name. A switch ("bMenuPassword") or a size ("nPinLength") is no secret.
bool SoundsSecret(const std::string& key)
{
    return WhatNameSays(key) == NameSays::Secret;
}

} // namespace

SecretRules::SecretRules(const std::vector<TableRecord>& records, const EntryList* list) : list_(list)
{
    if (list != nullptr) {
        for (const Place& place : list->secrets)
            secrets_.emplace(place, "the list of enciphered entries names it");
    }
    for (const TableRecord& record : records) {
        if (!record.isEnciphered)
            continue;
        enciphered_.insert(record.destination);
        secrets_.emplace(record.destination, RecordAt(record) + " writes it enciphered");
        if (record.source)
            secrets_.emplace(*record.source, RecordAt(record) + " enciphers its value");
    }
    FollowMoves(records);
}

/// A record whose source holds a secret brings it to its destination, from where other records take it further.
void SecretRules::FollowMoves(const std::vector<TableRecord>& records)
{
    std::multimap<Place, const TableRecord*> movers;
    for (const TableRecord& record : records) {
        if (record.source)
            movers.emplace(*record.source, &record);
    }
    std::vector<Place> left;
    for (const auto& [place, reason] : secrets_)
        left.push_back(place);
    while (!left.empty()) {
        const Place place = left.back();
        left.pop_back();
        for (auto [mover, end] = movers.equal_range(place); mover != end; ++mover) {
            const Place& destination = mover->second->destination;
            if (secrets_.emplace(destination, RecordAt(*mover->second) + " writes a secret there").second)
                left.push_back(destination);
        }
    }
}

void SecretRules::Check(const TableRecord& record, Findings& findings) const
{
    const bool isConverted = list_ != nullptr && list_->converted.count(record.destination) != 0;
    if (!record.source)
        return;
    const Place& from = *record.source;
    const Place& to = record.destination;
    if (record.isEnciphered || isConverted) {
        if (list_ != nullptr && !record.IsInPlace() && IsLeftAsItIs(from))
            findings.push_back({"KT040", record.Line(),
                                Describe(from) + " keeps the secret that " + Describe(to) +
                                    " gets, and no record or entry enciphers it there"});
        return;
    }
    if (const auto secret = secrets_.find(from); secret != secrets_.end())
        findings.push_back({"KT030", record.Line(),
                            Describe(from) + " holds a secret (" + secret->second + "), and " + Describe(to) +
                                " gets it plain, also on a locked phone"});
    else if (!record.IsInPlace() && !IsPlainOnPurpose(from) && !IsPlainOnPurpose(to) &&
             (SoundsSecret(from.key) || SoundsSecret(to.key)))
        findings.push_back({"KT037", record.Line(),
                            Describe(from) + " seems to hold a secret, and " + Describe(to) +
                                " gets it plain, also on a locked phone"});
}

/// The firmware's own files and those in /tmp are not the phone's settings.
bool SecretRules::IsLeftAsItIs(const Place& place) const
{
    return place.file.starts_with("/config/") && list_->converted.count(place) == 0 && enciphered_.count(place) == 0 &&
           !IsPlainOnPurpose(place);
}

bool SecretRules::IsPlainOnPurpose(const Place& place) const
{
    return list_ != nullptr && list_->plain.count(place) != 0;
}
