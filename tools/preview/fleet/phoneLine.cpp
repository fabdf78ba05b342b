// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "phoneLine.h"

#include <map>
#include <nlohmann/json.hpp>
#include <tuple>

#include "output/summaryText.h"

using nlohmann::json;

namespace
{

json WarningsToJson(const std::vector<ShownWarning>& warnings)
{
    json list = json::array();
    for (const ShownWarning& warning : warnings)
        list.push_back({{"rule", warning.rule},
                        {"severity", SeverityName(warning.severity)},
                        {"place", warning.place},
                        {"text", warning.text}});
    return list;
}

json ChangeAt(const std::string& file, const std::string& section, const std::string& key, ChangeKind kind)
{
    return {{"file", file}, {"section", section}, {"key", key}, {"kind", KindWord(kind)}};
}

json ValueChange(const std::string& file, const ShownChange& change)
{
    json line = ChangeAt(file, change.group, change.name, change.kind);
    if (change.before)
        line["before"] = *change.before;
    if (change.after)
        line["after"] = *change.after;
    if (!change.secret.empty())
        line["secret"] = change.secret;
    return line;
}

/// "contactData/contact" for contactData/contact["Ann"](2): the place that phones have in common.
std::string WithoutNames(const std::string& group)
{
    std::string path;
    bool isName = false;
    bool isQuoted = false;
    for (const char character : group) {
        isQuoted = isQuoted != (character == '"');
        if (!isQuoted && (character == '[' || character == '/'))
            isName = character == '[';
        if (!isName)
            path += character;
    }
    return path;
}

void AddXmlChanges(const ShownFile& file, json& list)
{
    std::map<std::tuple<std::string, std::string, ChangeKind>, int> times;
    for (const ShownChange& change : file.changes)
        ++times[{WithoutNames(change.group), change.name, change.kind}];
    for (const auto& [place, count] : times) {
        list.push_back(ChangeAt(file.path, std::get<0>(place), std::get<1>(place), std::get<2>(place)));
        list.back()["times"] = count;
    }
}

json ChangesToJson(const std::vector<ShownFile>& files)
{
    json list = json::array();
    for (const ShownFile& file : files) {
        const bool isWhole = file.kind == ChangeKind::Added || file.kind == ChangeKind::Removed || file.changes.empty();
        if (isWhole)
            list.push_back(ChangeAt(file.path, "", "", file.kind));
        else if (file.format == "xml")
            AddXmlChanges(file, list);
        else
            for (const ShownChange& change : file.changes)
                list.push_back(ValueChange(file.path, change));
    }
    return list;
}

std::string OutcomesOf(const Preview& preview)
{
    std::string letters;
    for (const ShownRecord& record : preview.records)
        letters += kOutcomeLetters[static_cast<std::size_t>(record.outcome)];
    return letters;
}

/// By file and section, so that a line with hundreds of keys stays short.
json ForgottenToJson(const std::vector<ShownForgottenKey>& keys, bool isOwn)
{
    json files = json::object();
    for (const ShownForgottenKey& key : keys) {
        if (key.isOwn == isOwn)
            files[key.file][key.section].push_back(key.key);
    }
    return files;
}

} // namespace

json PhoneLine(const std::string& image, const Preview& preview)
{
    if (!preview.error.empty())
        return {{"image", image}, {"error", preview.error}};
    json line = {{"image", image},
                 {"warnings", WarningsToJson(preview.warnings)},
                 {"changes", ChangesToJson(preview.files)},
                 {"records", OutcomesOf(preview)},
                 {"forgotten", ForgottenToJson(preview.forgotten, false)},
                 {"forgottenOwn", ForgottenToJson(preview.forgotten, true)}};
    if (!preview.gone.empty())
        line["gone"] = WarningsToJson(preview.gone);
    return line;
}

json TableOf(const Preview& preview)
{
    json table = json::array();
    for (const ShownRecord& record : preview.records)
        table.push_back({{"line", record.line}, {"source", record.source}, {"destination", record.destination}});
    return table;
}
