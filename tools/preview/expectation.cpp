// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "expectation.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utf8.h>

#include "output/jsonOutput.h"
#include "phoneImage/printable.h"
#include "phoneImage/scratch.h"
#include "phoneImage/toolError.h"

using nlohmann::json;

namespace
{

constexpr std::size_t kMostBytes = 256 << 20;

json Read(const std::filesystem::path& path)
{
    json approved = json::parse(ReadWhole(path, kMostBytes), /*cb=*/nullptr, /*allow_exceptions=*/false);
    if (!approved.is_object() || approved.value("format", "") != "kestrune-preview" ||
        !approved.value("previews", json()).is_array())
        throw ToolError(path.string() + " is no JSON text of a preview");
    if (approved.value("version", 0) != kJsonVersion)
        throw ToolError(path.string() + " has another version of the form");
    return approved;
}

/// Names the members of a list by some of their own texts. A file that is new moves no other then, and a difference has
/// the place on the phone for its name.
json ByName(const json& list, std::initializer_list<const char*> names)
{
    json named = json::object();
    for (const json& member : list) {
        std::string name;
        for (const char* part : names)
            name += (name.empty() || !member.contains(part) ? "" : " ") + member.value(part, std::string());
        while (named.contains(name))
            name += "'"; // "A B" of "C" and "B C" of "A", say
        named[name] = member;
    }
    return named;
}

void NameFiles(json& files)
{
    for (json& file : files) {
        if (file.contains("changes"))
            file["changes"] = ByName(file["changes"], {"group", "name"});
    }
    files = ByName(files, {"path"});
}

/// What counts of a preview, for the comparison.
json Essence(json preview)
{
    preview.erase("image");
    preview.erase("reports");
    if (preview.contains("error"))
        return preview;
    preview["warnings"] = ByName(preview.at("warnings"), {"rule", "place", "text"});
    NameFiles(preview.at("files"));
    NameFiles(preview.at("secondRun").at("files"));
    for (json& record : preview.at("records"))
        record.erase("line"); // another comment in the table is no difference
    preview["records"] = ByName(preview.at("records"), {"source", "destination"});
    preview["forgotten"] = ByName(preview.at("forgotten"), {"file", "section", "key"});
    return preview;
}

json EssenceOfAll(const json& document)
{
    json all = json::array();
    for (const json& preview : document.at("previews"))
        all.push_back(Essence(preview));
    return all;
}

/// The texts of an approved preview are printable, unless the file was edited.
std::string Words(const json& value)
{
    constexpr std::size_t kLongest = 200;
    std::string text = Printable(value.dump(-1, ' ', false, json::error_handler_t::replace), Backslashes::Kept);
    if (text.size() <= kLongest)
        return text;
    text.resize(kLongest);
    text.resize(std::min(text.size(), utf8::find_invalid(text))); // the last character may be cut
    return text + "...";
}

std::string WordsAt(const json& document, const json::json_pointer& pointer)
{
    return document.contains(pointer) ? Words(document.at(pointer)) : "nothing";
}

/// The place of a difference, with the slashes of the phone's paths as they are.
std::string PlaceOf(std::string pointer)
{
    for (std::size_t at = pointer.find('~'); at != std::string::npos; at = pointer.find('~', at + 1))
        pointer.replace(at, 2, pointer.compare(at, 2, "~1") == 0 ? "/" : "~");
    return Printable(pointer, Backslashes::Kept);
}

} // namespace

Approved ReadApproved(const std::filesystem::path& path, Secrecy secrecy)
{
    try {
        const json document = Read(path);
        const bool isRevealed = document.at("revealed").get<bool>();
        if (isRevealed != (secrecy == Secrecy::Revealed))
            throw ToolError(path.string() + (isRevealed ? " was" : " was not") + " made with --reveal-secrets");
        return std::make_shared<const json>(EssenceOfAll(document));
    } catch (const json::exception&) {
        throw ToolError(path.string() + " is no JSON text of a preview");
    }
}

std::vector<std::string> DifferencesFrom(const Approved& approved, const std::vector<Preview>& previews)
{
    const json found = EssenceOfAll(json::parse(ToJson(previews, JsonStyle()).dump()));
    std::vector<std::string> differences;
    for (const json& step : json::diff(*approved, found)) {
        const std::string place = step.at("path").get<std::string>();
        differences.push_back(PlaceOf(place) + ": approved " + WordsAt(*approved, json::json_pointer(place)) +
                              ", now " + (step.contains("value") ? Words(step.at("value")) : "nothing"));
    }
    return differences;
}
