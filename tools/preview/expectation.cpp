#include "expectation.h"

#include <nlohmann/json.hpp>

#include "jsonOutput.h"
#include "previewError.h"
#include "printable.h"
#include "scratch.h"

using nlohmann::json;

namespace
{

constexpr std::size_t kMostBytes = 256 << 20;

json ReadExpected(const std::filesystem::path& path)
{
    json expected = json::parse(ReadWhole(path, kMostBytes), /*cb=*/nullptr, /*allow_exceptions=*/false);
    if (!expected.is_object() || expected.value("format", "") != "kestrune-preview" ||
        !expected.value("previews", json()).is_array())
        throw PreviewError(path.string() + " is no JSON text of a preview");
    if (expected.value("version", 0) != kJsonVersion)
        throw PreviewError(path.string() + " has another version of the form");
    return expected;
}

void DropWhatDoesNotCount(json& previews)
{
    for (json& preview : previews.at("previews")) {
        if (preview.is_object()) {
            preview.erase("image");
            preview.erase("reports");
        }
    }
}

std::string ValueWords(const json& document, const json::json_pointer& pointer)
{
    constexpr std::size_t kLongest = 200;
    if (!document.contains(pointer))
        return "nothing";
    const std::string text = Printable(document.at(pointer).dump(-1, ' ', false, json::error_handler_t::replace));
    return text.size() > kLongest ? text.substr(0, kLongest) + "..." : text;
}

} // namespace

std::vector<std::string> CompareWithExpected(const std::vector<Preview>& previews, const std::filesystem::path& path)
{
    json expected = ReadExpected(path);
    json found = json::parse(ToJson(previews, /*withReports=*/false).dump()); // without the order of its names
    DropWhatDoesNotCount(expected);
    DropWhatDoesNotCount(found);
    std::vector<std::string> differences;
    for (const json& step : json::diff(expected, found)) {
        const std::string place = step.at("path").get<std::string>();
        const json::json_pointer pointer(place);
        if (step.at("op") == "add" && !place.empty() && place.back() == '-')
            differences.push_back(Printable(place) + ": not approved: " + Printable(step.at("value").dump().substr(0, 200)));
        else
            differences.push_back(Printable(place) + ": approved " + ValueWords(expected, pointer) + ", now " +
                                  ValueWords(found, pointer));
    }
    return differences;
}
