// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileChanges.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace
{

using Place = std::tuple<std::string, std::string, int>;
using Values = std::map<Place, std::string>;

Place PlaceOf(const Item& item)
{
    return {item.group, item.name, item.number};
}

Values ValuesOf(const std::vector<Item>& items)
{
    Values values;
    for (const Item& item : items)
        values[PlaceOf(item)] = item.value;
    return values;
}

std::optional<std::string> ValueAt(const Values& values, const Place& place)
{
    const auto found = values.find(place);
    return found == values.end() ? std::nullopt : std::optional<std::string>(found->second);
}

ChangeKind KindOf(const std::optional<std::string>& before, const std::optional<std::string>& after)
{
    if (!before)
        return ChangeKind::Added;
    if (!after)
        return ChangeKind::Removed;
    return after->empty() && !before->empty() ? ChangeKind::Emptied : ChangeKind::Changed;
}

/// The values that the file had after each pass; passes that left it alone share one.
class History
{
public:
    History(const std::vector<PassState>& states, const std::string& path, FileFormat format) : states_(states)
    {
        const std::string* previous = nullptr;
        for (const PassState& state : states) {
            const std::string& content = ContentOf(state.phone, path);
            if (previous == nullptr || content != *previous)
                current_ = std::make_shared<Values>(ValuesOf(ReadItems(format, content).value_or(std::vector<Item>())));
            values_.push_back(current_);
            previous = &content;
        }
    }

    std::vector<std::string> PassesThatChanged(const Place& place) const
    {
        std::vector<std::string> passes;
        for (std::size_t i = 1; i < values_.size(); ++i) {
            const bool isOther =
                values_[i] != values_[i - 1] && ValueAt(*values_[i], place) != ValueAt(*values_[i - 1], place);
            if (isOther && (passes.empty() || passes.back() != states_[i].pass))
                passes.push_back(states_[i].pass);
        }
        return passes;
    }

private:
    const std::vector<PassState>& states_;
    std::shared_ptr<Values> current_;
    std::vector<std::shared_ptr<Values>> values_;
};

class ItemComparison
{
public:
    ItemComparison(const std::vector<Item>& before, const std::vector<Item>& after, const History& history)
        : before_(ValuesOf(before)), after_(ValuesOf(after)), history_(history)
    {
        for (const Item& item : after) {
            order_.try_emplace(item.group, static_cast<int>(order_.size()));
            Add(item);
        }
        for (const Item& item : before) {
            if (after_.count(PlaceOf(item)) == 0)
                Add(item);
        }
        std::stable_sort(changes_.begin(), changes_.end(), [this](const ItemChange& one, const ItemChange& other) {
            return OrderOf(one.place.group) < OrderOf(other.place.group);
        });
    }

    std::vector<ItemChange> Take() { return std::move(changes_); }

private:
    /// What has gone stands with its section or record, or with the record around it.
    int OrderOf(std::string group) const
    {
        for (;;) {
            const auto found = order_.find(group);
            if (found != order_.end())
                return found->second;
            const std::size_t slash = group.rfind('/');
            if (slash == std::string::npos)
                return static_cast<int>(order_.size());
            group.resize(slash);
        }
    }

    void Add(const Item& item)
    {
        const Place place = PlaceOf(item);
        const auto before = ValueAt(before_, place);
        const auto after = ValueAt(after_, place);
        if (before != after)
            changes_.push_back({KindOf(before, after), item, before, after, history_.PassesThatChanged(place)});
    }

    Values before_;
    Values after_;
    const History& history_;
    std::map<std::string, int> order_;
    std::vector<ItemChange> changes_;
};

void CompareItems(FileChange& change, const std::vector<PassState>& states)
{
    const bool wasThere = change.kind != ChangeKind::Added;
    const bool isThere = change.kind != ChangeKind::Removed;
    const auto before = ReadItems(change.format, change.before);
    const auto after = ReadItems(change.format, change.after);
    change.hasItems = (before || !wasThere || change.before.empty()) && (after || !isThere || change.after.empty());
    if (change.hasItems) {
        change.items = ItemComparison(before.value_or(std::vector<Item>()), after.value_or(std::vector<Item>()),
                                      History(states, change.path, change.format))
                           .Take();
    }
}

std::string FindOther(const Snapshot& files, const std::string& path, const std::string& content)
{
    for (const auto& [other, file] : files) {
        if (other != path && file.kind == PhoneFile::Kind::File && *file.content == content)
            return other;
    }
    return std::string();
}

/// The file whose bytes a new one has, at any time before.
std::string FindSource(const Snapshot& before, const std::vector<PassState>& states, const FileChange& change)
{
    std::string source = FindOther(before, change.path, change.after);
    for (auto state = states.begin(); source.empty() && state != states.end(); ++state)
        source = FindOther(state->phone, change.path, change.after);
    return source;
}

/// The file that has the bytes that a removed one had, at any time before its end.
std::string FindCopy(const Snapshot& after, const std::vector<PassState>& states, const FileChange& change)
{
    std::string copy = FindOther(after, change.path, change.before);
    for (auto state = states.begin(); copy.empty() && state != states.end(); ++state) {
        if (!ContentOf(state->phone, change.path).empty())
            copy = FindOther(after, change.path, ContentOf(state->phone, change.path));
    }
    return copy;
}

FileChange Compare(const std::string& path, const Snapshot& before, const Snapshot& after,
                   const std::vector<PassState>& states)
{
    const auto old = before.find(path);
    const auto now = after.find(path);
    FileChange change = {};
    change.path = path;
    const auto contentOf = [](auto found, const Snapshot& phone) {
        return found == phone.end() ? std::nullopt : std::optional<std::string>(*found->second.content);
    };
    const auto contentBefore = contentOf(old, before);
    const auto contentAfter = contentOf(now, after);
    change.kind = KindOf(contentBefore, contentAfter);
    change.before = contentBefore.value_or("");
    change.after = contentAfter.value_or("");
    change.isFile = (old == before.end() || old->second.kind == PhoneFile::Kind::File) &&
                    (now == after.end() || now->second.kind == PhoneFile::Kind::File);
    change.format = FormatOf(path, change.before);
    if (FormatOf(path, change.after) == FileFormat::Binary)
        change.format = FileFormat::Binary;
    change.passes = PassesThat(states, [&path](const Snapshot& one, const Snapshot& other) {
        const auto first = one.find(path);
        const auto second = other.find(path);
        return (first == one.end()) != (second == other.end()) ||
               (first != one.end() && first->second != second->second);
    });
    if (!change.isFile)
        return change;
    if (change.kind == ChangeKind::Added && !change.after.empty())
        change.sameAs = FindSource(before, states, change);
    if (change.kind == ChangeKind::Removed && !change.before.empty())
        change.sameAs = FindCopy(after, states, change);
    CompareItems(change, states);
    return change;
}

bool IsSameFile(const PhoneFile& one, const PhoneFile& other)
{
    return one.kind == other.kind && *one.content == *other.content;
}

} // namespace

std::vector<FileChange> FindChanges(const Snapshot& before, const Snapshot& after, const std::vector<PassState>& states)
{
    std::set<std::string> paths;
    for (const auto& [path, file] : before) {
        const auto now = after.find(path);
        if (now == after.end() || !IsSameFile(file, now->second))
            paths.insert(path);
    }
    for (const auto& [path, file] : after) {
        if (before.count(path) == 0)
            paths.insert(path);
    }
    std::vector<FileChange> changes;
    for (const std::string& path : paths)
        changes.push_back(Compare(path, before, after, states));
    return changes;
}
