// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "doorPhoneV4XToV50.h"

#include <cstring>
#include <tinyxml.h>

#include "fileHelper.h"
#include "passReports.h"
#include "phoneFacts.h"
#include "trace.h"
#include "xmlElement.h"
#include "xmlFile.h"

namespace
{

/// A model's number is its index in the table; null marks the end.
constexpr const char* DoorPhoneModelTable[] = {"Mobotix", "2N", "Linkcom", "Custom", nullptr};

constexpr int kUnknownModel = 0; // also the first model's number

int FindModel(const char* name)
{
    for (int number = 0; DoorPhoneModelTable[number] != nullptr; ++number) {
        if (std::strcmp(name, DoorPhoneModelTable[number]) == 0)
            return number;
    }
    return kUnknownModel;
}

/// @return the text of the first child element of that name; null if there is no such element or its first node is not
///         text
const char* TextOf(const TiXmlElement& item, const char* name)
{
    const TiXmlElement* element = item.FirstChildElement(name);
    return element == nullptr ? nullptr : element->GetText();
}

std::string OrEmpty(const char* text)
{
    return text == nullptr ? std::string() : std::string(text);
}

} // namespace

int GetV4XDoorPhoneData(const char* oldPath, std::list<DoorPhoneRecord>& doorPhones)
{
    if (oldPath == nullptr)
        return 0;
    if (ETL_MiscHelper::pathFileExist(oldPath) == 0) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, "DoorPhone file not exist !");
        return 0;
    }
    doorPhones.clear();

    TiXmlDocument document;
    if (LoadDataFile(document, oldPath) == 0) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, kNoDoorPhonesReport, oldPath);
        return 0;
    }
    const TiXmlElement* root = document.FirstChildElement(kDoorPhones.root);
    if (root == nullptr)
        return 0;

    const TiXmlElement* item = root->FirstChildElement("item");
    for (; item != nullptr; item = item->NextSiblingElement("item")) {
        DoorPhoneRecord doorPhone;
        doorPhone.idName = OrEmpty(item->Attribute("title"));
        if (const char* model = TextOf(*item, "DeviceModel"))
            doorPhone.deviceModel = FindModel(model);
        doorPhone.displayName = OrEmpty(TextOf(*item, "DisplayName"));
        doorPhone.phoneNumber = OrEmpty(TextOf(*item, "PhoneNumber"));
        doorPhone.unlockPin = OrEmpty(TextOf(*item, "UnlockPIN"));
        doorPhones.push_back(std::move(doorPhone));
    }
    return 1;
}

int SetV50DoorPhoneData(const char* newPath, const std::list<DoorPhoneRecord>& doorPhones, const char* oldPath)
{
    if (newPath == nullptr)
        return 0;
    TiXmlDocument document;
    TiXmlElement* root = AppendElement(document, "DoorPhone");
    if (root == nullptr)
        return 0;
    for (const DoorPhoneRecord& doorPhone : doorPhones) {
        TiXmlElement* element = AppendElement(*root, "item");
        if (element == nullptr)
            return 0;
        element->SetAttribute("id_name", doorPhone.idName);
        element->SetAttribute("device_model", doorPhone.deviceModel);
        element->SetAttribute("display_name", doorPhone.displayName);
        element->SetAttribute("phone_number", doorPhone.phoneNumber);
        element->SetAttribute("unlock_pin", doorPhone.unlockPin);
        element->SetAttribute("send_audio", doorPhone.sendAudio ? 1 : 0);
        element->SetAttribute("send_video", doorPhone.sendVideo ? 1 : 0);
        element->SetAttribute("full_screen", doorPhone.fullScreen ? 1 : 0);
    }
    return SaveXmlFile(document, newPath, oldPath);
}

int DoorPhoneV4XToV50(const char* oldPath, const char* newPath)
{
    ETL_TraceHelper::chTraceStack scope("DoorPhoneV4XToV50");
    if (oldPath == nullptr || newPath == nullptr)
        return 0;

    std::list<DoorPhoneRecord> doorPhones;
    if (GetV4XDoorPhoneData(oldPath, doorPhones) == 0)
        return 0;
    return SetV50DoorPhoneData(newPath, doorPhones, oldPath);
}

int GetDoorPhoneModelIndex(const char* modelName)
{
    return modelName == nullptr ? kUnknownModel : FindModel(modelName);
}
