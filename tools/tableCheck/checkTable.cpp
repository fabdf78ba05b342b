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
#include "consequences.h"
#include "entryList.h"
#include "entryListRules.h"
#include "fileRules.h"
#include "imageRules.h"
#include "orderRules.h"
#include "phoneImage/phoneFolder.h"
#include "phoneImage/toolError.h"
#include "placeRules.h"
#include "requireReadable.h"
#include "secretRules.h"
#include "steeringRules.h"
#include "suppressions.h"
#include "tableRecord.h"
#include "translateConfigTable.h"
#include "wellFormedness.h"
#include "xmlFile.h"

namespace
{

/// @return the list that was given, else the image's, else nothing: a phone need not have one
std::optional<EntryList> FindEntryList(const TableCheckInput& input, const PhoneFolder* phone)
{
    std::string path = input.entryList;
    if (path.empty() && phone != nullptr)
        path = phone->Find(kEntryListFile).value_or("");
    return path.empty() ? std::nullopt : std::optional(ReadEntryList(path));
}

std::vector<TableRecord> ReadRecords(const TiXmlDocument& table)
{
    std::vector<TableRecord> records;
    for (const TiXmlElement* element = FirstTableRecord(table); element != nullptr;
         element = element->NextSiblingElement())
        records.push_back(ReadTableRecord(*element));
    return records;
}

/// @param list, image  null: without it
void CheckRecords(const TiXmlDocument& table, const EntryList* list, ImageRules* image, Findings& findings)
{
    const std::vector<TableRecord> records = ReadRecords(table);
    const SecretRules secrets(records, list);
    OrderRules order;
    for (const TableRecord& record : records) {
        Findings found;
        CheckAttributes(*record.element, found);
        CheckRecordContent(*record.element, found);
        CheckPlaces(record, found);
        CheckSteering(record, found);
        order.Check(record, found);
        if (list != nullptr)
            CheckEntryList(record, *list, found);
        secrets.Check(record, found);
        if (image != nullptr)
            image->Check(record, found);

        DropConsequences(found);
        ApplySuppressions(*record.element, found);
        findings.insert(findings.end(), found.begin(), found.end());
    }
    if (image != nullptr && list != nullptr && !list->converted.empty())
        image->CheckPasswordPass(table.RootElement() == nullptr ? 1 : table.RootElement()->Row(), findings);
}

} // namespace

Findings CheckTable(const TableCheckInput& input)
{
    std::optional<PhoneFolder> phone;
    if (!input.image.empty() && !phone.emplace(input.image).IsOpen())
        throw ToolError("the image is not a folder that can be opened: " + input.image);
    const std::optional<EntryList> list = FindEntryList(input, phone ? &*phone : nullptr);

    RequireReadable("the table", input.table);
    TiXmlDocument table;
    std::string errorDesc;
    if (LoadXmlFile(table, input.table.c_str(), &errorDesc) == 0)
        return {ExplainLoadFailure(table, input.table, errorDesc)};
    Findings findings;
    CheckFile(table, findings);
    CheckWellFormedness(input.table, findings);
    CheckSuppressions(table, findings);
    const auto image = phone ? std::make_unique<ImageRules>(*phone, input.cipherKey) : nullptr;
    CheckRecords(table, list ? &*list : nullptr, image.get(), findings);
    std::stable_sort(findings.begin(), findings.end(), [](const Finding& one, const Finding& two) {
        return std::tie(one.line, one.rule) < std::tie(two.line, two.rule);
    });
    return findings;
}
