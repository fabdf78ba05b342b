// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "itemChanges.h"

#include <algorithm>
#include <functional>
#include <list>
#include <memory>
#include <set>
#include <string_view>
#include <tuple>
#include <unordered_map>

namespace
{

using Items = std::vector<Item>;
using Place = std::tuple<std::string_view, std::string_view, int>;

struct PlaceHash {
    std::size_t operator()(const Place& place) const
    {
        const std::hash<std::string_view> hash;
        return (hash(std::get<0>(place)) * 31 + hash(std::get<1>(place))) * 31 +
               static_cast<std::size_t>(std::get<2>(place));
    }
};

using Values = std::unordered_map<Place, std::string_view, PlaceHash>; ///< of items that live on

Place PlaceOf(const Item& item)
{
    return {*item.group, item.name, item.number};
}

/// Gives a record the name that it has afterwards, if neither content has both names.
Items WithNamesOf(Items items, const Items& after)
{
    std::set<std::string_view> names;
    for (const Item& item : items)
        names.insert(*item.group);
    std::set<std::string_view> namesAfter;
    std::map<std::string_view, std::shared_ptr<const std::string>> newNames; // by position
    for (const Item& item : after) {
        namesAfter.insert(*item.group);
        if (!names.contains(*item.group))
            newNames[*item.position] = item.group;
    }
    for (Item& item : items) {
        const auto found = namesAfter.contains(*item.group) ? newNames.end() : newNames.find(*item.position);
        if (found != newNames.end())
            item.group = found->second;
    }
    return items;
}

Values ValuesOf(const Items& items)
{
    Values values;
    values.reserve(items.size());
    for (const Item& item : items)
        values[PlaceOf(item)] = item.value;
    return values;
}

std::optional<std::string_view> ValueAt(const Values& values, const Place& place)
{
    const auto found = values.find(place);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

/// The values that the file had before the first and after each pass; passes that did not change it share one.
class History
{
public:
    History(const Values& first, const std::vector<PassState>& states, const std::string& path, FileFormat format,
            const Items& after)
        : states_(states), current_(std::shared_ptr<const Values>(), &first)
    {
        const std::string* previous = nullptr;
        for (const PassState& state : states) {
            const std::string& content = ContentOf(state.phone, path);
            if (previous != nullptr && &content != previous && content != *previous) {
                contents_.push_back(WithNamesOf(ReadItems(format, content).value_or(Items()), after));
                current_ = std::make_shared<const Values>(ValuesOf(contents_.back()));
            }
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
    std::list<Items> contents_;
    std::shared_ptr<const Values> current_;
    std::vector<std::shared_ptr<const Values>> values_;
};

class ItemComparison
{
public:
    ItemComparison(const Items& before, const Items& after, const std::vector<PassState>& states,
                   const std::string& path, FileFormat format)
        : before_(ValuesOf(before)), after_(ValuesOf(after)), history_(before_, states, path, format, after)
    {
        for (const Item& item : before)
            groupsBefore_.insert(*item.group);
        for (const Item& item : after) {
            order_.try_emplace(*item.group, static_cast<int>(order_.size()));
            Add(item);
        }
        int last = -1; // where the value before is now; removed ones follow it
        for (const Item& item : before) {
            const auto [group, isRemoved] = order_.try_emplace(*item.group, last);
            if (isRemoved)
                removedGroups_.insert(*item.group);
            last = group->second;
            if (after_.count(PlaceOf(item)) == 0)
                Add(item);
        }
        std::stable_sort(changes_.begin(), changes_.end(), [this](const ItemChange& one, const ItemChange& other) {
            return order_.at(*one.place.group) < order_.at(*other.place.group);
        });
    }

    std::vector<ItemChange> Take() { return std::move(changes_); }

private:
    void Add(const Item& item)
    {
        const Place place = PlaceOf(item);
        const std::optional<std::string_view> valueBefore = ValueAt(before_, place);
        const std::optional<std::string_view> valueAfter = ValueAt(after_, place);
        if (valueBefore == valueAfter)
            return;
        const std::optional<std::string> before(valueBefore);
        const std::optional<std::string> after(valueAfter);
        const std::string_view group = *item.group;
        changes_.push_back({KindOf(before, after), item, before, after, history_.PassesThatChanged(place),
                            !groupsBefore_.contains(group) || removedGroups_.contains(group)});
    }

    Values before_;
    Values after_;
    const History history_;
    std::unordered_map<std::string_view, int> order_;
    std::set<std::string_view> groupsBefore_;
    std::set<std::string_view> removedGroups_;
    std::vector<ItemChange> changes_;
};

} // namespace

ChangeKind KindOf(const std::optional<std::string>& before, const std::optional<std::string>& after)
{
    if (!before)
        return ChangeKind::Added;
    if (!after)
        return ChangeKind::Removed;
    return after->empty() && !before->empty() ? ChangeKind::Emptied : ChangeKind::Changed;
}

std::vector<ItemChange> FindItemChanges(const Items& before, const Items& after, const std::vector<PassState>& states,
                                        const std::string& path, FileFormat format)
{
    return ItemComparison(WithNamesOf(before, after), after, states, path, format).Take();
}

bool AreSame(const Items& before, const Items& after)
{
    return std::equal(before.begin(), before.end(), after.begin(), after.end(), [](const Item& one, const Item& other) {
        return PlaceOf(one) == PlaceOf(other) && one.value == other.value;
    });
}
