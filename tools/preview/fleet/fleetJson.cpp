// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <nlohmann/json.hpp>

#include "fleetOutput.h"

using Json = nlohmann::ordered_json;

namespace
{

Json RuleToJson(const RuleCount& rule)
{
    Json json = {
        {"rule", rule.rule}, {"severity", SeverityName(rule.severity)}, {"title", rule.title}, {"phones", rule.phones}};
    if (rule.isGone)
        json["gone"] = true;
    json["places"] = Json::array();
    for (const WarningCount& place : rule.places)
        json["places"].push_back({{"place", place.place}, {"phones", place.phones}, {"example", place.example}});
    return json;
}

Json PlaceToJson(const PlaceCount& place)
{
    Json json = {{"file", place.file}, {"section", place.section}, {"key", place.key}, {"phones", place.phones}};
    for (const ChangeKind kind : kChangeKinds)
        json[KindWord(kind)] = place.byKind[kind];
    json["example"] = place.example;
    if (place.hasTooManyValues)
        json["tooManyValues"] = true;
    if (!place.values.empty())
        json["values"] = Json::array();
    for (const auto& [pair, count] : place.values) {
        Json value = {{"before", pair.before}, {"after", pair.after}};
        if (!pair.secret.empty())
            value["secret"] = pair.secret;
        value.update({{"phones", count.phones}, {"example", count.example}});
        json["values"].push_back(std::move(value));
    }
    return json;
}

Json RecordToJson(const RecordCount& record)
{
    Json json = {{"line", record.line}, {"source", record.source}, {"destination", record.destination}};
    for (std::size_t i = 0; i < record.byOutcome.size(); ++i)
        json[OutcomeWords(static_cast<RecordOutcome>(i))] = record.byOutcome[i];
    return json;
}

Json PhoneToJson(const PhoneRow& row)
{
    Json json = {{"image", row.image}, {"ending", kEndings[static_cast<std::size_t>(row.ending)]}};
    if (!row.error.empty()) {
        json["error"] = row.error;
        return json;
    }
    json.update({{"errors", row.bySeverity[2]}, {"warnings", row.bySeverity[1]}, {"notes", row.bySeverity[0]}});
    json["places"] = row.places;
    return json;
}

template <typename List, typename ToJson>
Json All(const List& list, ToJson toJson)
{
    Json json = Json::array();
    for (const auto& member : list)
        json.push_back(toJson(member));
    return json;
}

} // namespace

Json FleetJson(const FleetReport& report)
{
    Json json = {{"format", "kestrune-preview-report"},
                 {"version", 1},
                 {"madeBy", "kestrune-preview " KESTRUNE_VERSION},
                 {"modes", report.modes},
                 {"difference", report.isDifference},
                 {"revealed", report.isRevealed}};
    json["phones"] = {{"all", report.phones.size()}};
    for (std::size_t i = 0; i < kEndingCount; ++i)
        json["phones"][kEndings[i]] = report.byEnding[i];
    json["warnings"] = All(report.rules, RuleToJson);
    json["changes"] = All(report.places, PlaceToJson);
    json["records"] = All(report.records, RecordToJson);
    json["forgotten"] = All(report.forgotten, [](const ForgottenCount& key) {
        return Json{{"file", key.file},     {"section", key.section}, {"key", key.key},
                    {"phones", key.phones}, {"own", key.ownPhones},   {"example", key.example}};
    });
    json["images"] = All(report.phones, PhoneToJson);
    return json;
}
