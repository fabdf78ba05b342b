// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretWarnings.h"

#include <set>
#include <tuple>

#include "phoneFacts.h"

namespace
{

using Place = std::tuple<std::string, std::string, std::string>; ///< file, section and key

Place SourceOf(const TableRecord& record)
{
    return {record.sourceFile, record.sourceSection, record.sourceKey};
}

Place DestinationOf(const TableRecord& record)
{
    return {record.file, record.section, record.key};
}

/// The entries that the password pass converts.
std::set<Place> ActiveEntries(const PhoneLists& lists)
{
    std::set<Place> places;
    for (const ListedEntry& entry : lists.entries) {
        if (entry.isActive && !entry.perAccount)
            places.emplace(entry.file, entry.section, entry.key);
        for (int account = 0; entry.isActive && entry.perAccount && account < kConvertedAccounts; ++account)
            places.emplace(AccountFilePath(account), entry.section, entry.key);
    }
    return places;
}

/// Finds secrets that a run writes plain.
class PlainSecrets
{
public:
    explicit PlainSecrets(const RunFacts& facts) : facts_(facts), entries_(ActiveEntries(facts.lists)), kept_(entries_)
    {
        for (const TableRecord& record : facts.lists.records) {
            if (record.isFlagged)
                kept_.insert(DestinationOf(record));
        }
        const bool isFactoryLocked = IsLocked(facts.after, kFactoryUserIni);
        isFactoryPlain_ = !isFactoryLocked;
        wantsEnciphered_ = HasMode(facts, {"all", "pwd"}) ? isFactoryLocked : IsLocked(facts.after, kUserIni);
    }

    /// @return what is wrong with the new value; empty when nothing is
    std::string ProblemOf(const FileChange& file, const ItemChange& item) const
    {
        const std::string value = item.after.value_or("");
        const Place place = {file.path, *item.place.group, item.place.name};
        if (value.empty() || !facts_.secrets.IsSecret(item.place) || facts_.secrets.Values().LayersOf(value) != 0 ||
            (isFactoryPlain_ && entries_.count(place) != 0))
            return std::string();
        const std::set<Place> sources = SourcesOf(place);
        if (WasEnciphered(item.before.value_or(""), value) || AnyWasEnciphered(sources, value))
            return "it was enciphered before the run";
        if (wantsEnciphered_ && !CannotBeEnciphered(value) && HoldsAny(kept_, sources))
            return "the phone keeps it enciphered elsewhere";
        return std::string();
    }

private:
    /// The place, and those that records copy to it, whatever the number of copies.
    std::set<Place> SourcesOf(const Place& place) const
    {
        std::set<Place> places = {place};
        std::size_t count = 0;
        do {
            count = places.size();
            for (const TableRecord& record : facts_.lists.records) {
                if (places.count(DestinationOf(record)) != 0)
                    places.insert(SourceOf(record));
            }
        } while (count != places.size());
        return places;
    }

    bool WasEnciphered(const std::string& before, const std::string& after) const
    {
        return facts_.secrets.Values().LayersOf(before) != 0 && facts_.secrets.Values().AreOneSecret(before, after);
    }

    bool AnyWasEnciphered(const std::set<Place>& places, const std::string& value) const
    {
        for (const auto& [file, section, key] : places) {
            if (WasEnciphered(ReadValue(facts_.before, file, section, key), value))
                return true;
        }
        return false;
    }

    static bool HoldsAny(const std::set<Place>& places, const std::set<Place>& wanted)
    {
        for (const Place& place : wanted) {
            if (places.count(place) != 0)
                return true;
        }
        return false;
    }

    const RunFacts& facts_;
    std::set<Place> entries_;
    std::set<Place> kept_; ///< places whose values the phone enciphers
    bool isFactoryPlain_ = false;
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
}
