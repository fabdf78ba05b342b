// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "translateConfigTable.h"

#include <cstdio>
#include <tinyxml.h>

#include "appLog.h"
#include "convertPasswordValue.h"
#include "fileHelper.h"
#include "iniFile.h"
#include "passReports.h"
#include "phoneFacts.h"
#include "standardOutput.h"
#include "trackedNew.h"
#include "xmlFile.h"

namespace
{

/// Never released; static, so that the document stays reachable until the process ends.
TiXmlDocument* NewTableDocument()
{
    static TiXmlDocument* document = nullptr;
    document = new ("../../../app/kestrune/kestrune", __LINE__) TiXmlDocument(kTableFile);
    return document;
}

bool IsDeviceLocked()
{
    iniFile userIni;
    return userIni.LoadFromFile(kUserIni) != 0 && userIni.GetIntValue(kLockSection, kLockKey, 0) != 0;
}

/// Reads the first of the two attributes that is present, even if it is empty.
void ReadFirstPresent(const TiXmlElement& record, const char* name, const char* fallbackName, std::string& text)
{
    const char* present = record.Attribute(name);
    if (present == nullptr)
        present = record.Attribute(fallbackName);
    if (present != nullptr)
        text = present;
}

/// @return false if the destination does not load, which ends the pass
bool TranslateRecord(const TiXmlElement& record, bool bEncrypt)
{
    std::string file;
    std::string section;
    std::string key;
    bool bThisKeyEncrypt = false;
    GetDstInfo(record, file, section, key, bThisKeyEncrypt);

    const std::string value = GetSrcValue(record, bEncrypt && bThisKeyEncrypt);
    std::fprintf(StandardOutput(), kRecordReport, file.c_str(), section.c_str(), key.c_str(), value.c_str(),
                 bThisKeyEncrypt);

    // Loaded again for every record, so that each record sees the results of earlier ones.
    iniFile destination;
    if (destination.LoadFromFile(file.c_str()) == 0) {
        std::fputs(kNoDestinationReport, StandardOutput());
        return false;
    }
    if (destination.SetTextValue(section, key, value) != 0)
        (void)destination.SaveToFile(/*path=*/nullptr); // a failure does not affect the next record
    return true;
}

} // namespace

int TranslateConfigTable()
{
    if (ETL_MiscHelper::pathFileExist(kTableFile) == 0) {
        std::fprintf(StandardOutput(), kNoTableReport, kTableFile);
        return 0;
    }
    TiXmlDocument* table = NewTableDocument();
    if (table == nullptr)
        return 0;
    const bool isLoaded = LoadXmlFile(*table, kTableFile) != 0;

    const bool bEncrypt = IsDeviceLocked();
    std::fprintf(StandardOutput(), kLockReport, bEncrypt);

    const TiXmlElement* record = isLoaded ? FirstTableRecord(*table) : nullptr;
    if (record == nullptr) {
        app_log(kAppLogModule, kAppLogWarning, kNoRecordReport);
        return 0;
    }
    for (; record != nullptr; record = record->NextSiblingElement()) {
        if (!TranslateRecord(*record, bEncrypt))
            return 0;
    }
    return 1;
}

const TiXmlElement* FirstTableRecord(const TiXmlDocument& table)
{
    const TiXmlElement* root = table.RootElement();
    return root == nullptr ? nullptr : root->FirstChildElement();
}

void GetDstInfo(const TiXmlElement& record, std::string& file, std::string& section, std::string& key,
                bool& bThisKeyEncrypt)
{
    ReadFirstPresent(record, "dstFile", "srcFile", file);
    ReadFirstPresent(record, "dstSec", "srcSec", section);
    ReadFirstPresent(record, "dstKey", "srcKey", key);
    if (!QueryXmlFlag(&record, "dstEncrypt", bThisKeyEncrypt))
        (void)QueryXmlFlag(&record, "srcEncrypt", bThisKeyEncrypt); // otherwise the flag is not changed
}

std::string GetSrcValue(const TiXmlElement& record, bool wantEnciphered)
{
    const char* file = record.Attribute("srcFile");
    const char* section = record.Attribute("srcSec");
    const char* key = record.Attribute("srcKey");
    if (file == nullptr || section == nullptr || key == nullptr)
        return std::string();

    const std::string text = ReadIniText(file, section, key, "");
    std::fprintf(StandardOutput(), kSourceReport, text.c_str());
    std::string value;
    ConvertPasswordValue(&text, value, wantEnciphered);
    return value;
}

std::string ReadIniText(const char* file, const char* section, const char* key, const char* defaultText)
{
    iniFile document;
    if (document.LoadFromFile(file) == 0) {
        std::fprintf(StandardOutput(), kNoSourceReport, file);
        return std::string();
    }
    return document.GetTextValue(section, key, defaultText);
}
