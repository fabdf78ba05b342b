// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "jsonOutput.h"

#include <nlohmann/json.hpp>

#include "summaryText.h"

using Json = nlohmann::ordered_json;

namespace
{

Json CountsToJson(const Counts& counts)
{
    Json json;
    for (const ChangeKind kind : kChangeKinds)
        json[KindWord(kind)] = counts[kind];
    return json;
}

Json ChangeToJson(const ShownChange& change)
{
    Json json = {{"kind", KindWord(change.kind)}, {"group", change.group}};
    if (change.name.empty()) {
        json["attributes"] = Json::array();
        for (const auto& [name, value] : change.attributes)
            json["attributes"].push_back({{"name", name}, {"value", value}});
    } else {
        json["name"] = change.name;
        json["before"] = change.before ? Json(*change.before) : Json();
        json["after"] = change.after ? Json(*change.after) : Json();
    }
    if (!change.secret.empty())
        json["secret"] = change.secret;
    json["passes"] = change.passes;
    return json;
}

Json FileToJson(const ShownFile& file)
{
    Json json = {{"path", file.path}, {"kind", KindWord(file.kind)}, {"format", file.format}, {"passes", file.passes}};
    if (!file.note.empty())
        json["note"] = file.note;
    if (!file.changes.empty()) {
        json["changes"] = Json::array();
        for (const ShownChange& change : file.changes)
            json["changes"].push_back(ChangeToJson(change));
    }
    if (!file.diff.empty())
        json["diff"] = file.diff;
    return json;
}

Json FilesToJson(const std::vector<ShownFile>& files)
{
    Json json = Json::array();
    for (const ShownFile& file : files)
        json.push_back(FileToJson(file));
    return json;
}

Json SummaryToJson(const std::vector<ShownFile>& files)
{
    return {{"files", CountsToJson(CountFiles(files))}, {"keys", CountsToJson(CountValues(files))}};
}

Json WarningsToJson(const std::vector<ShownWarning>& warnings)
{
    Json json = Json::array();
    for (const ShownWarning& warning : warnings)
        json.push_back({{"rule", warning.rule},
                        {"severity", SeverityName(warning.severity)},
                        {"place", warning.place},
                        {"text", warning.text},
                        {"advice", warning.advice}});
    return json;
}

Json RecordsToJson(const std::vector<ShownRecord>& records)
{
    Json json = Json::array();
    for (const ShownRecord& record : records)
        json.push_back({{"line", record.line},
                        {"source", record.source},
                        {"destination", record.destination},
                        {"outcome", OutcomeWords(record.outcome)}});
    return json;
}

Json ForgottenToJson(const std::vector<ShownForgottenKey>& keys)
{
    Json json = Json::array();
    for (const ShownForgottenKey& key : keys)
        json.push_back({{"file", key.file}, {"section", key.section}, {"key", key.key}, {"own", key.isOwn}});
    return json;
}

Json PreviewToJson(const Preview& preview, bool withReports)
{
    Json json = {{"image", preview.image}, {"modes", preview.modes}};
    if (!preview.error.empty()) {
        json["error"] = preview.error;
        return json;
    }
    json["summary"] = SummaryToJson(preview.files);
    json["summary"]["warnings"] = preview.warnings.size();
    json["passesKnown"] = preview.arePassesKnown;
    json["warnings"] = WarningsToJson(preview.warnings);
    json["files"] = FilesToJson(preview.files);
    json["secondRun"] = {{"summary", SummaryToJson(preview.secondRun)}, {"files", FilesToJson(preview.secondRun)}};
    json["records"] = RecordsToJson(preview.records);
    json["forgotten"] = ForgottenToJson(preview.forgotten);
    if (withReports) {
        json["reports"] = Json::array();
        for (const ShownReports& reports : preview.reports)
            json["reports"].push_back({{"mode", reports.mode}, {"output", reports.output}, {"errors", reports.errors}});
    }
    return json;
}

} // namespace

Json ToJson(const std::vector<Preview>& previews, const JsonStyle& style)
{
    Json json = {{"format", "kestrune-preview"},
                 {"version", kJsonVersion},
                 {"madeBy", "kestrune-preview " KESTRUNE_VERSION},
                 {"revealed", style.isRevealed},
                 {"previews", Json::array()}};
    for (const Preview& preview : previews)
        json["previews"].push_back(PreviewToJson(preview, style.withReports));
    return json;
}
