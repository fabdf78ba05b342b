// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "forgottenKeys.h"

#include <map>
#include <set>
#include <tuple>

#include "items/items.h"
#include "phoneFacts.h"
#include "phoneImage/normalPath.h"

namespace
{

using Place = std::tuple<std::string, std::string, std::string>; // file, section, key

bool IsAccount(const std::string& path)
{
    return path.starts_with(kAccountFilePrefix);
}

std::set<Place> KnownPlaces(const PhoneLists& lists)
{
    std::set<Place> known;
    for (const PassKey& key : kPassKeys)
        known.emplace(key.file, key.section, key.key);
    const auto add = [&known](const std::string& file, const std::string& section, const std::string& key) {
        known.emplace(NormalPath(file), section, key);
    };
    for (const ListedEntry& entry : lists.entries)
        add(entry.perAccount ? kAllAccounts : entry.file, entry.section, entry.key);
    for (const TableRecord& record : lists.records) {
        add(record.sourceFile, record.sourceSection, record.sourceKey);
        add(record.file, record.section, record.key);
    }
    return known;
}

using Keys = std::map<std::pair<std::string, std::string>, std::string>; ///< values by section and key

Keys KeysOf(const Snapshot& phone, const std::string& path)
{
    Keys keys;
    for (const Item& item : ReadItems(FileFormat::Ini, ContentOf(phone, path)).value_or(std::vector<Item>()))
        keys.try_emplace({*item.group, item.name}, item.value); // the program reads the first of several
    return keys;
}

Keys FactoryKeys(const Snapshot& phone, const std::string& path)
{
    if (!IsAccount(path))
        return KeysOf(phone, "/phone/factory" + path.substr(std::string_view("/config").size()));
    Keys keys = KeysOf(phone, kFactoryAccount);
    for (auto& [place, value] : keys) // mode "2" installs it without these marks
        value.erase(0, value.starts_with('?') ? 1 : 0);
    return keys;
}

} // namespace

std::vector<ForgottenKey> FindForgottenKeys(const Snapshot& before, const Snapshot& old, const PhoneLists& lists,
                                            const FileFormats& formats)
{
    if (lists.records.empty())
        return {};
    const std::set<Place> known = KnownPlaces(lists);
    std::map<Place, bool> forgotten; // whether it is the user's own
    for (const std::string& path : formats.Paths()) {
        const std::string& content = ContentOf(before, path);
        if (!path.starts_with("/config/") || path == kHandOverCopy || path == kDirectIPFile || content.empty() ||
            formats.Of(path, content) != FileFormat::Ini)
            continue;
        const std::string file = IsAccount(path) ? kAllAccounts : path;
        const Keys factory = FactoryKeys(before, path);
        const Keys oldFactory = FactoryKeys(old, path);
        for (const auto& [place, value] : KeysOf(before, path)) {
            const auto& [section, key] = place;
            if (factory.contains(place) || known.contains({path, section, key}) || known.contains({file, section, key}))
                continue;
            const auto standard = oldFactory.find(place);
            forgotten[{file, section, key}] |= standard == oldFactory.end() || standard->second != value;
        }
    }
    std::vector<ForgottenKey> keys;
    for (const auto& [place, isOwn] : forgotten)
        keys.push_back({std::get<0>(place), std::get<1>(place), std::get<2>(place), isOwn});
    return keys;
}
