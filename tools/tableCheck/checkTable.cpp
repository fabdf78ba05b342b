// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "checkTable.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <tinyxml.h>
#include <tuple>
#include <unistd.h>

#include "attributeRules.h"
#include "configMapper.h"
#include "entryListRules.h"
#include "fileRules.h"
#include "imageRules.h"
#include "orderRules.h"
#include "phoneImage/phoneFolder.h"
#include "phoneImage/toolError.h"
#include "placeRules.h"
#include "suppressions.h"
#include "translateConfigTable.h"
#include "xmlFile.h"

namespace
{

/// The image's list when no other is given; a phone need not have one.
void LoadEntryList(const TableCheckInput& input, const PhoneFolder* phone, EntryListRules& rules)
{
    std::string path = input.entryList;
    if (path.empty() && phone != nullptr)
        path = phone->Find("/phone/resource/encryptconfig.xml").value_or("");
    if (!path.empty() && !rules.Load(path))
        throw ToolError("the list of enciphered entries does not load: " + path);
}

/// The program's loader does not distinguish a file that it cannot read from one that it refuses.
void RequireReadable(const std::string& path)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        error = std::make_error_code(std::errc::is_a_directory);
    else if (access(path.c_str(), R_OK) != 0)
        error = std::error_code(errno, std::generic_category());
    if (error)
        throw ToolError("the table cannot be read: " + path + ": " + error.message());
}

void CheckRecords(const TiXmlDocument& table, const EntryListRules& entryList, ImageRules* image, Findings& findings)
{
    OrderRules order;
    for (const TiXmlElement* element = FirstTableRecord(table); element != nullptr;
         element = element->NextSiblingElement()) {
        const TableRecord record = ReadTableRecord(*element);
        Findings found;
        CheckAttributes(*element, found);
        CheckPlaces(record, found);
        order.Check(record, found);
        entryList.Check(record, found);
        if (image != nullptr)
            image->Check(record, found);

        const std::set<std::string> suppressed = SuppressedRules(*element);
        std::copy_if(found.begin(), found.end(), std::back_inserter(findings),
                     [&](const Finding& finding) { return suppressed.count(std::string(finding.rule)) == 0; });
    }
}

} // namespace

Findings CheckTable(const TableCheckInput& input)
{
    std::optional<PhoneFolder> phone;
    if (!input.image.empty() && !phone.emplace(input.image).IsOpen())
        throw ToolError("the image is not a folder that can be opened: " + input.image);
    EntryListRules entryList;
    LoadEntryList(input, phone ? &*phone : nullptr, entryList);

    RequireReadable(input.table);
    TiXmlDocument table;
    std::string errorDesc;
    if (LoadXmlFile(table, input.table.c_str(), &errorDesc) == 0)
        return {ExplainLoadFailure(table, input.table, errorDesc)};
    Findings findings;
    CheckFile(table, findings);
    CheckSuppressions(table, findings);
    const auto image = phone ? std::make_unique<ImageRules>(*phone) : nullptr;
    CheckRecords(table, entryList, image.get(), findings);
    std::stable_sort(findings.begin(), findings.end(), [](const Finding& one, const Finding& two) {
        return std::tie(one.line, one.rule) < std::tie(two.line, two.rule);
    });
    return findings;
}
