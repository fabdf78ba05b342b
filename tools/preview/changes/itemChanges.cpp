// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "itemChanges.h"

#include <algorithm>
#include <list>
#include <map>
#include <memory>
#include <string_view>
#include <tuple>

namespace
{

using Items = std::vector<Item>;
using Place = std::tuple<std::string_view, std::string_view, int>;
using Values = std::map<Place, std::string_view>; ///< of items that live on

Place PlaceOf(const Item& item)
{
    return {*item.group, item.name, item.number};
}

Values ValuesOf(const Items& items)
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

/// The values that the file had after each pass; passes that did not change it share one.
class History
{
public:
    History(const std::vector<PassState>& states, const std::string& path, FileFormat format) : states_(states)
    {
        const std::string* previous = nullptr;
        for (const PassState& state : states) {
            const std::string& content = ContentOf(state.phone, path);
            if (previous == nullptr || content != *previous) {
                contents_.push_back(ReadItems(format, content).value_or(Items()));
                current_ = std::make_shared<Values>(ValuesOf(contents_.back()));
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
    std::shared_ptr<Values> current_;
    std::vector<std::shared_ptr<Values>> values_;
};

class ItemComparison
{
public:
    ItemComparison(const Items& before, const Items& after, const History& history)
        : before_(ValuesOf(before)), after_(ValuesOf(after)), history_(history)
    {
        for (const Item& item : after) {
            order_.try_emplace(*item.group, static_cast<int>(order_.size()));
            Add(item);
        }
        for (const Item& item : before) {
            if (after_.count(PlaceOf(item)) == 0)
                Add(item);
        }
        std::stable_sort(changes_.begin(), changes_.end(), [this](const ItemChange& one, const ItemChange& other) {
            return OrderOf(*one.place.group) < OrderOf(*other.place.group);
        });
    }

    std::vector<ItemChange> Take() { return std::move(changes_); }

private:
    /// Removed values are next to their section or record, or to the record around it.
    int OrderOf(std::string_view group) const
    {
        for (;;) {
            const auto found = order_.find(group);
            if (found != order_.end())
                return found->second;
            const std::size_t slash = group.rfind('/');
            if (slash == std::string_view::npos)
                return static_cast<int>(order_.size());
            group = group.substr(0, slash);
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
    std::map<std::string_view, int> order_;
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
    return ItemComparison(before, after, History(states, path, format)).Take();
}

bool AreSame(const Items& before, const Items& after)
{
    return std::equal(before.begin(), before.end(), after.begin(), after.end(), [](const Item& one, const Item& other) {
        return PlaceOf(one) == PlaceOf(other) && one.value == other.value;
    });
}
