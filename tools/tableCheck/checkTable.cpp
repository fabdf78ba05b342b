// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "checkTable.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <tinyxml.h>
#include <tuple>

#include "attributeRules.h"
#include "configMapper.h"
#include "entryListRules.h"
#include "fileRules.h"
#include "imageRules.h"
#include "orderRules.h"
#include "phoneImage/phoneFolder.h"
#include "placeRules.h"
#include "quotedText.h"
#include "suppressions.h"
#include "translateConfigTable.h"
#include "xmlFile.h"

namespace
{

/// The image's list when no other is given; a phone need not have one.
bool LoadEntryList(const TableCheckInput& input, const PhoneFolder* phone, EntryListRules& rules, std::string& problem)
{
    std::string path = input.entryList;
    if (path.empty() && phone != nullptr)
        path = phone->Find(kEntryListFile).value_or("");
    if (path.empty() || rules.Load(path))
        return true;
    problem = "the list of enciphered entries does not load: " + EscapedText(path);
    return false;
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

bool CheckTable(const TableCheckInput& input, Findings& findings, std::string& problem)
{
    std::optional<PhoneFolder> phone;
    if (!input.image.empty() && !phone.emplace(input.image).IsOpen()) {
        problem = "the image is no folder that can be looked into: " + EscapedText(input.image);
        return false;
    }
    EntryListRules entryList;
    if (!LoadEntryList(input, phone ? &*phone : nullptr, entryList, problem))
        return false;

    TiXmlDocument table;
    std::string errorDesc;
    if (LoadXmlFile(table, input.table.c_str(), &errorDesc) == 0) {
        findings = {ExplainLoadFailure(table, input.table, errorDesc)};
        return true;
    }
    findings.clear();
    CheckFile(table, findings);
    CheckSuppressions(table, findings);
    const auto image = phone ? std::make_unique<ImageRules>(*phone) : nullptr;
    CheckRecords(table, entryList, image.get(), findings);
    std::stable_sort(findings.begin(), findings.end(), [](const Finding& one, const Finding& two) {
        return std::tie(one.line, one.rule) < std::tie(two.line, two.rule);
    });
    return true;
}
