// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretWarnings.h"

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "phoneFacts.h"

namespace
{

using Place = std::tuple<std::string, std::string, std::string>; ///< file, section and key

/// @param isActive  true: the entries that the password pass converts; false: those that the phone keeps plain on purpose
std::set<Place> EntriesOf(const PhoneLists& lists, bool isActive)
{
    std::set<Place> places;
    for (const ListedEntry& entry : lists.entries) {
        if (entry.isActive != isActive)
            continue;
        if (!entry.perAccount)
            places.emplace(entry.file, entry.section, entry.key);
        const int accounts = isActive ? kConvertedAccounts : kLastAccount + 1;
        for (int account = 0; entry.perAccount && account < accounts; ++account)
            places.emplace(AccountFilePath(account), entry.section, entry.key);
    }
    return places;
}

/// Where the table's records copy values, whatever the number of records.
class Copies
{
public:
    explicit Copies(const std::vector<TableRecord>& records)
    {
        for (const TableRecord& record : records)
            destinations_.emplace(Place(record.sourceFile, record.sourceSection, record.sourceKey),
                                  Place(record.file, record.section, record.key));
    }

    /// @return the places, and those that get a copy from one of them
    std::set<Place> ReachedFrom(const std::set<Place>& places) const
    {
        std::set<Place> reached;
        std::vector<Place> added(places.begin(), places.end());
        while (!added.empty()) {
            const Place place = std::move(added.back());
            added.pop_back();
            if (!reached.insert(place).second)
                continue;
            const auto [begin, end] = destinations_.equal_range(place);
            for (auto destination = begin; destination != end; ++destination)
                added.push_back(destination->second);
        }
        return reached;
    }

private:
    std::multimap<Place, Place> destinations_; ///< by source
};

/// Finds secrets that a run writes plain.
class PlainSecrets
{
public:
    explicit PlainSecrets(const RunFacts& facts)
        : facts_(facts), entries_(EntriesOf(facts.lists, /*isActive=*/true)),
          plainEntries_(EntriesOf(facts.lists, /*isActive=*/false))
    {
        std::set<Place> kept = entries_;
        std::set<Place> enciphered;
        for (const TableRecord& record : facts.lists.records) {
            if (record.isFlagged)
                kept.emplace(record.file, record.section, record.key);
            const std::string value =
                ReadValue(facts.before, record.sourceFile, record.sourceSection, record.sourceKey);
            if (facts.secrets.Values().LayersOf(value) == 0)
                continue;
            enciphered.emplace(record.sourceFile, record.sourceSection, record.sourceKey);
            decipheredTexts_.insert(facts.secrets.Values().CoreOf(value));
        }
        const Copies copies(facts.lists.records);
        kept_ = copies.ReachedFrom(kept);
        enciphered_ = copies.ReachedFrom(enciphered);
        isFactoryLocked_ = IsLocked(facts.after, kFactoryUserIni);
        wantsEnciphered_ = HasMode(facts, {"all", "pwd"}) ? isFactoryLocked_ : IsLocked(facts.after, kUserIni);
    }

    /// @return what is wrong with the new value; empty when nothing is
    std::string ProblemOf(const FileChange& file, const ItemChange& item) const
    {
        const SecretValues& values = facts_.secrets.Values();
        const std::string before = item.before.value_or("");
        const std::string after = item.after.value_or("");
        const Place place = {file.path, *item.place.group, item.place.name};
        const bool isWantedPlain = !isFactoryLocked_ && entries_.count(place) != 0;
        if (after.empty() || values.LayersOf(after) != 0 || !facts_.secrets.IsSecret(item.place) || isWantedPlain)
            return std::string();
        const bool isCopy = enciphered_.count(place) != 0 && decipheredTexts_.count(after) != 0;
        if (isCopy || (values.LayersOf(before) != 0 && values.CoreOf(before) == after))
            return "it was enciphered before the run";
        if (wantsEnciphered_ && !CannotBeEnciphered(after) && kept_.count(place) != 0)
            return "the phone keeps it enciphered elsewhere";
        return std::string();
    }

    /// @return whether the record has copied a secret that is now enciphered, but not where it was
    bool IsOldPlacePlain(const TableRecord& record) const
    {
        const Place from = {record.sourceFile, record.sourceSection, record.sourceKey};
        if (!wantsEnciphered_ || plainEntries_.count(from) != 0 || !record.sourceFile.starts_with("/config/"))
            return false;
        const SecretValues& values = facts_.secrets.Values();
        const std::string old = ReadValue(facts_.after, record.sourceFile, record.sourceSection, record.sourceKey);
        const std::string moved = ReadValue(facts_.after, record.file, record.section, record.key);
        return !old.empty() && moved != old && values.LayersOf(old) == 0 && values.CoreOf(moved) == old;
    }

private:
    const RunFacts& facts_;
    std::set<Place> entries_;
    std::set<Place> plainEntries_;
    std::set<Place> kept_;                  ///< the phone enciphers the values, or they are copies of such
    std::set<Place> enciphered_;            ///< the values were enciphered before the run, or they are copies of such
    std::set<std::string> decipheredTexts_; ///< what those decipher to
    bool isFactoryLocked_ = false;
    bool wantsEnciphered_ = false;
};

void AddTwice(const RunFacts& facts, WarningList& list)
{
    for (const FileChange& file : facts.changes) {
        for (const ItemChange& item : file.items) {
            const int layers = facts.secrets.Values().LayersOf(item.after.value_or(""));
            if (layers > 1 && layers > facts.secrets.Values().LayersOf(item.before.value_or("")))
                list.Add(WarningRule::EncipheredTwice, PlaceOf(file, item.place), "in this run");
        }
    }
    for (const FileChange& file : facts.secondRun) {
        for (const ItemChange& item : file.items) {
            if (facts.secrets.Values().LayersOf(item.after.value_or("")) > 1)
                list.Add(WarningRule::EncipheredTwice, PlaceOf(file, item.place), "in a second run");
        }
    }
}

} // namespace

void AddSecretWarnings(const RunFacts& facts, WarningList& list)
{
    AddTwice(facts, list);
    const PlainSecrets plainSecrets(facts);
    for (const FileChange& file : facts.changes) {
        for (const ItemChange& item : file.items) {
            const std::string problem = plainSecrets.ProblemOf(file, item);
            if (!problem.empty())
                list.Add(WarningRule::SecretPlain, PlaceOf(file, item.place), problem);
        }
    }
    if (!HasMode(facts, {"all", "dev", "pwd"}))
        return;
    for (const TableRecord& record : facts.lists.records) {
        if (plainSecrets.IsOldPlacePlain(record))
            list.Add(WarningRule::OldPlacePlain,
                     record.sourceFile + " [" + record.sourceSection + "] " + record.sourceKey,
                     "a record keeps it enciphered at its new place");
    }
}
