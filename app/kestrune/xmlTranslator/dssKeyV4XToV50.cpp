// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "dssKeyV4XToV50.h"

#include <tinyxml.h>

#include "fileHelper.h"
#include "passReports.h"
#include "phoneFacts.h"
#include "trace.h"
#include "xmlElement.h"
#include "xmlFile.h"

namespace
{

constexpr char kNoKeyType[] = "N/A";

std::string NewType(const std::string& oldType)
{
    if (oldType == "Speed Dial")
        return "SpeedDial";
    if (oldType == "BLF List")
        return "BLFList";
    return oldType;
}

DSSKeyRecord ReadKey(const TiXmlElement& item)
{
    DSSKeyRecord key;
    key.type = TinyXml_GetStringAttr(&item, "Type", "");
    const TiXmlElement* data = item.FirstChildElement("ItemData");
    if (key.type == kNoKeyType || data == nullptr)
        return key;
    key.line = TinyXml_GetIntAttr(data, "Line", 0);
    key.value = TinyXml_GetStringAttr(data, "Value", "");
    key.label = TinyXml_GetStringAttr(data, "Label", "");
    key.extension = TinyXml_GetStringAttr(data, "Extension", "");
    return key;
}

/// @return false if there is no memory for an element
bool AppendKey(TiXmlElement& root, const DSSKeyRecord& key)
{
    TiXmlElement* item = AppendElement(root, "item");
    if (item == nullptr)
        return false;
    const std::string type = NewType(key.type);
    item->SetAttribute("type", type);
    if (type == kNoKeyType)
        return true;

    TiXmlElement* data = AppendElement(*item, "itemdata");
    if (data == nullptr)
        return false;
    data->SetAttribute("line", key.line);
    data->SetAttribute("value", key.value);
    data->SetAttribute("label", key.label);
    data->SetAttribute("extension", key.extension);
    return true;
}

} // namespace

int GetV4XDSSKeyData(const char* oldPath, std::list<DSSKeyRecord>& keys)
{
    if (oldPath == nullptr)
        return 0;
    if (ETL_MiscHelper::pathFileExist(oldPath) == 0) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, "DSSKey file not exist !");
        return 0;
    }
    keys.clear();

    TiXmlDocument document;
    if (LoadDataFile(document, oldPath) == 0) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, kNoDSSKeysReport, oldPath);
        return 0;
    }
    const TiXmlElement* root = document.FirstChildElement(kOldDSSKeys.root);
    if (root == nullptr)
        return 0;

    const TiXmlElement* item = root->FirstChildElement("Item");
    for (; item != nullptr; item = item->NextSiblingElement("Item"))
        keys.push_back(ReadKey(*item));
    return 1;
}

int SetV50DSSKeyData(const char* newPath, const std::list<DSSKeyRecord>& keys, const char* oldPath)
{
    if (newPath == nullptr)
        return 0;
    TiXmlDocument document;
    TiXmlElement* root = AppendElement(document, "dsskey");
    if (root == nullptr)
        return 0;
    int count = 0;
    for (const DSSKeyRecord& key : keys) {
        if (count++ == kMostDSSKeys)
            break;
        if (!AppendKey(*root, key))
            return 0;
    }
    return SaveXmlFile(document, newPath, oldPath);
}

int DSSKeyV4XToV50(const char* oldPath, const char* newPath)
{
    ETL_TraceHelper::chTraceStack scope("DSSKeyV4XToV50");
    if (oldPath == nullptr || newPath == nullptr)
        return 0;

    std::list<DSSKeyRecord> keys;
    if (GetV4XDSSKeyData(oldPath, keys) == 0)
        return 0;
    return SetV50DSSKeyData(newPath, keys, oldPath);
}
