// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "expectation.h"

#include <nlohmann/json.hpp>

#include "output/jsonOutput.h"
#include "phoneImage/printable.h"
#include "phoneImage/scratch.h"
#include "phoneImage/toolError.h"

using nlohmann::json;

namespace
{

constexpr std::size_t kMostBytes = 256 << 20;

json ReadExpected(const std::filesystem::path& path)
{
    json expected = json::parse(ReadWhole(path, kMostBytes), /*cb=*/nullptr, /*allow_exceptions=*/false);
    if (!expected.is_object() || expected.value("format", "") != "kestrune-preview" ||
        !expected.value("previews", json()).is_array())
        throw ToolError(path.string() + " is no JSON text of a preview");
    if (expected.value("version", 0) != kJsonVersion)
        throw ToolError(path.string() + " has another version of the form");
    return expected;
}

/// Names the members of a list by some of their own texts: a file that comes in between moves no other then, and what
/// differs is told by its place on the phone.
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
    return preview;
}

json EssenceOfAll(const json& document)
{
    json all = json::array();
    for (const json& preview : document.at("previews"))
        all.push_back(Essence(preview));
    return all;
}

std::string Words(const json& value)
{
    constexpr std::size_t kLongest = 200;
    const std::string text = Printable(value.dump(-1, ' ', false, json::error_handler_t::replace));
    return text.size() > kLongest ? text.substr(0, kLongest) + "..." : text;
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
    return Printable(pointer);
}

} // namespace

std::vector<std::string> CompareWithExpected(const std::vector<Preview>& previews, const std::filesystem::path& path)
{
    try {
        const json expected = EssenceOfAll(ReadExpected(path));
        const json found = EssenceOfAll(json::parse(ToJson(previews, /*withReports=*/false).dump()));
        std::vector<std::string> differences;
        for (const json& step : json::diff(expected, found)) {
            const std::string place = step.at("path").get<std::string>();
            const json::json_pointer pointer(place);
            differences.push_back(PlaceOf(place) + ": approved " + WordsAt(expected, pointer) + ", now " +
                                  (step.contains("value") ? Words(step.at("value")) : "nothing"));
        }
        return differences;
    } catch (const json::exception&) {
        throw ToolError(path.string() + " is no JSON text of a preview");
    }
}
