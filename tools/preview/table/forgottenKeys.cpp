// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "forgottenKeys.h"

#include <filesystem>
#include <map>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "items/items.h"
#include "phoneFacts.h"

namespace
{

using Place = std::tuple<std::string, std::string, std::string>; // file, section, key

bool IsAccount(const std::string& path)
{
    return path.starts_with(kAccountFilePrefix);
}

/// What the lists and the passes name. The lists must outlive it.
class KnownPlaces
{
public:
    explicit KnownPlaces(const PhoneLists& lists)
    {
        for (const PassKey& key : kPassKeys)
            places_.emplace(key.file, key.section, key.key);
        for (const ListedEntry& entry : lists.entries)
            places_.emplace(entry.perAccount ? std::string_view(kAllAccounts) : PathOf(entry.file), entry.section,
                            entry.key);
        for (const TableRecord& record : lists.records) {
            places_.emplace(PathOf(record.sourceFile), record.sourceSection, record.sourceKey);
            places_.emplace(PathOf(record.file), record.section, record.key);
        }
    }

    bool Has(std::string_view file, std::string_view section, std::string_view key) const
    {
        return places_.contains({file, section, key});
    }

private:
    /// A few files are named thousands of times.
    std::string_view PathOf(const std::string& file)
    {
        const auto [path, isNew] = paths_.try_emplace(file);
        if (isNew)
            path->second = std::filesystem::path(file).lexically_normal().string();
        return path->second;
    }

    std::map<std::string, std::string> paths_; ///< without "//" and "/./", by name in the lists
    std::set<std::tuple<std::string_view, std::string_view, std::string_view>> places_;
};

/// The values of a file by section and key.
class Keys
{
public:
    Keys(const Snapshot& phone, const std::string& path)
        : items_(ReadItems(FileFormat::Ini, ContentOf(phone, path)).value_or(std::vector<Item>()))
    {
        for (const Item& item : items_)
            values_.try_emplace({*item.group, item.name}, item.value); // the program reads the first of several
    }

    const auto& Values() const { return values_; }

private:
    std::vector<Item> items_;
    std::map<std::pair<std::string_view, std::string_view>, std::string_view> values_; ///< in the items
};

/// The file that a factory reset, or mode "2", makes a file from.
std::string FactoryFileOf(const std::string& path)
{
    return IsAccount(path) ? kFactoryAccount : "/phone/factory" + path.substr(std::string_view("/config").size());
}

/// Mode "2" installs a factory account without these marks.
std::string_view WithoutMark(std::string_view value, bool isAccount)
{
    return isAccount && value.starts_with('?') ? value.substr(1) : value;
}

} // namespace

std::vector<ForgottenKey> FindForgottenKeys(const Snapshot& before, const Snapshot& old, const PhoneLists& lists,
                                            const FileFormats& formats)
{
    if (lists.records.empty())
        return {};
    const KnownPlaces known(lists);
    std::map<Place, bool> forgotten; // whether it is the user's own
    for (const std::string& path : formats.Paths()) {
        const std::string& content = ContentOf(before, path);
        if (!path.starts_with("/config/") || path == kHandOverCopy || path == kDirectIPFile || content.empty() ||
            formats.Of(path, content) != FileFormat::Ini)
            continue;
        const bool isAccount = IsAccount(path);
        const std::string file = isAccount ? kAllAccounts : path;
        const Keys keys(before, path);
        const Keys factory(before, FactoryFileOf(path));
        const Keys oldFactory(old, FactoryFileOf(path));
        for (const auto& [place, value] : keys.Values()) {
            const auto& [section, key] = place;
            if (factory.Values().contains(place) || known.Has(path, section, key) || known.Has(file, section, key))
                continue;
            const auto standard = oldFactory.Values().find(place);
            forgotten[{file, std::string(section), std::string(key)}] |=
                standard == oldFactory.Values().end() || WithoutMark(standard->second, isAccount) != value;
        }
    }
    std::vector<ForgottenKey> keys;
    for (const auto& [place, isOwn] : forgotten)
        keys.push_back({std::get<0>(place), std::get<1>(place), std::get<2>(place), isOwn});
    return keys;
}
