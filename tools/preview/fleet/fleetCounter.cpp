// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fleetCounter.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "phoneImage/toolError.h"
#include "phoneLine.h"

using nlohmann::json;

namespace
{

std::string TextOf(const json& object, const char* name)
{
    return object.at(name).get<std::string>();
}

/// The first phone by name, so that the example does not depend on the order of the lines.
void TakeExample(std::string& example, const std::string& image)
{
    if (example.empty() || image < example)
        example = image;
}

template <typename Enum>
Enum Known(const std::optional<Enum>& named, const std::string& name)
{
    if (!named)
        throw ToolError("a line has the unknown word " + name);
    return *named;
}

std::optional<ChangeKind> KindNamed(const std::string& name)
{
    const auto found = std::find_if(std::begin(kChangeKinds), std::end(kChangeKinds),
                                    [&name](ChangeKind kind) { return KindWord(kind) == name; });
    return found == std::end(kChangeKinds) ? std::nullopt : std::optional(*found);
}

/// "a pass stopped early" of "a pass stopped early: the table does not load".
std::string TitleOf(const std::string& text)
{
    return text.substr(0, text.find(": "));
}

void AddValue(const json& change, const std::string& image, PlaceCount& place)
{
    if (place.hasTooManyValues || (!change.contains("before") && !change.contains("after")))
        return;
    const ValuePair pair = {change.value("before", ""), change.value("after", ""), change.value("secret", "")};
    ValueCount& value = place.values[pair];
    ++value.phones;
    TakeExample(value.example, image);
    place.hasTooManyValues = place.values.size() > kMostValues;
    if (place.hasTooManyValues)
        place.values.clear();
}

Ending EndingOf(const PhoneRow& row)
{
    const auto count = [&row](Severity severity) { return row.bySeverity[static_cast<std::size_t>(severity)]; };
    if (!row.error.empty() || count(Severity::Error) != 0)
        return Ending::Fail;
    return count(Severity::Warning) != 0 ? Ending::Care : Ending::Well;
}

/// Moves the values of a map into a sorted list.
template <typename Map, typename Key>
auto Sorted(Map& map, Key keyOf)
{
    std::vector<typename Map::mapped_type> list;
    for (auto& [key, value] : map)
        list.push_back(std::move(value));
    std::stable_sort(list.begin(), list.end(),
                     [keyOf](const auto& one, const auto& other) { return keyOf(one) < keyOf(other); });
    map.clear();
    return list;
}

constexpr auto kMostPhonesFirst = [](const auto& count) { return ~count.phones; };

} // namespace

void FleetCounter::BeginLog()
{
    tables_.clear();
}

void FleetCounter::Add(const json& line)
{
    if (line.contains("image"))
        AddPhone(line);
    else
        tables_.push_back(line.at("records"));
}

std::size_t FleetCounter::NumberOf(const json& table, bool& isNew)
{
    const auto found = std::find(tables_.begin(), tables_.end(), table);
    isNew = found == tables_.end();
    return static_cast<std::size_t>(found - tables_.begin());
}

void FleetCounter::AddPhone(const json& line)
{
    PhoneRow row;
    row.image = TextOf(line, "image");
    row.error = line.value("error", "");
    if (row.error.empty()) {
        AddWarnings(line.at("warnings"), /*isGone=*/false, row);
        if (line.contains("gone"))
            AddWarnings(line["gone"], /*isGone=*/true, row);
        AddChanges(line.at("changes"), row);
        if (line.contains("table"))
            AddRecords(tables_.at(line["table"].get<std::size_t>()), TextOf(line, "records"));
        AddAllForgotten(line.at("forgotten"), /*isOwn=*/false, row.image);
        AddAllForgotten(line.at("forgottenOwn"), /*isOwn=*/true, row.image);
    }
    row.ending = EndingOf(row);
    phones_.push_back(std::move(row));
}

void FleetCounter::AddWarnings(const json& warnings, bool isGone, PhoneRow& row)
{
    std::set<std::string> rules;
    std::set<std::pair<std::string, std::string>> places;
    for (const json& warning : warnings) {
        const std::string rule = TextOf(warning, "rule");
        const std::string place = TextOf(warning, "place");
        RuleCount& count = rules_[{isGone, rule}];
        count.rule = rule;
        count.isGone = isGone;
        const std::string severity = TextOf(warning, "severity");
        count.severity = Known(SeverityNamed(severity), severity);
        count.title = TitleOf(TextOf(warning, "text"));
        if (!isGone)
            ++row.bySeverity[static_cast<std::size_t>(count.severity)];
        if (rules.insert(rule).second)
            ++count.phones;
        if (!places.emplace(rule, place).second)
            continue;
        WarningCount& there = warnings_[{isGone, rule}][place];
        there.place = place;
        ++there.phones;
        TakeExample(there.example, row.image);
    }
}

void FleetCounter::AddChanges(const json& changes, PhoneRow& row)
{
    std::set<Place> seen;
    for (const json& change : changes) {
        const Place key = {TextOf(change, "file"), TextOf(change, "section"), TextOf(change, "key")};
        PlaceCount& place = places_[key];
        std::tie(place.file, place.section, place.key) = key;
        place.isXml = change.contains("times");
        const std::string kind = TextOf(change, "kind");
        ++place.byKind[Known(KindNamed(kind), kind)];
        AddValue(change, row.image, place);
        if (!seen.insert(key).second)
            continue;
        ++place.phones;
        TakeExample(place.example, row.image);
    }
    row.places = seen.size();
}

void FleetCounter::AddRecords(const json& table, const std::string& outcomes)
{
    std::size_t number = 0;
    std::map<std::tuple<int, std::string, std::string>, int> times; // the same record twice in a line is two records
    for (const json& record : table) {
        const std::tuple place = {record.at("line").get<int>(), TextOf(record, "source"),
                                  TextOf(record, "destination")};
        RecordCount& count = records_[std::tuple_cat(place, std::tuple(times[place]++))];
        std::tie(count.line, count.source, count.destination) = place;
        const std::size_t outcome = std::string(kOutcomeLetters).find(outcomes.at(number++));
        ++count.byOutcome.at(outcome);
    }
}

void FleetCounter::AddAllForgotten(const json& files, bool isOwn, const std::string& image)
{
    for (const auto& [file, sections] : files.items()) {
        for (const auto& [section, keys] : sections.items()) {
            for (const json& key : keys)
                AddForgotten({file, section, key.get<std::string>()}, isOwn, image);
        }
    }
}

void FleetCounter::AddForgotten(const Place& key, bool isOwn, const std::string& image)
{
    ForgottenCount& count = forgotten_[key];
    std::tie(count.file, count.section, count.key) = key;
    if (isOwn && count.ownPhones == 0)
        count.example.clear(); // phones with a value of their own say more
    ++count.phones;
    count.ownPhones += isOwn ? 1 : 0;
    if (isOwn || count.ownPhones == 0)
        TakeExample(count.example, image);
}

FleetReport FleetCounter::Take()
{
    FleetReport report;
    for (auto& [key, rule] : rules_)
        rule.places = Sorted(warnings_[key], kMostPhonesFirst);
    report.rules =
        Sorted(rules_, [](const RuleCount& rule) { return std::tuple(-static_cast<int>(rule.severity), rule.rule); });
    report.places = Sorted(places_, [](const PlaceCount& place) { return place.phones; });
    report.records = Sorted(records_, [](const RecordCount& record) { return record.line; });
    report.forgotten =
        Sorted(forgotten_, [](const ForgottenCount& key) { return std::tuple(~key.ownPhones, ~key.phones); });
    report.phones = std::move(phones_);
    std::sort(report.phones.begin(), report.phones.end(), [](const PhoneRow& one, const PhoneRow& other) {
        const auto keyOf = [](const PhoneRow& row) {
            return std::tuple(row.error.empty(), -row.bySeverity[2], -row.bySeverity[1], row.image);
        };
        return keyOf(one) < keyOf(other);
    });
    std::set<std::string_view> images;
    for (const PhoneRow& row : report.phones) {
        if (!images.insert(row.image).second)
            throw ToolError(row.image + " is counted twice");
        ++report.byEnding[static_cast<std::size_t>(row.ending)];
    }
    *this = FleetCounter();
    return report;
}
