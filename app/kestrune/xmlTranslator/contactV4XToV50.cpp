// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "contactV4XToV50.h"

#include <string_view>
#include <tinyxml.h>

#include "fileHelper.h"
#include "passReports.h"
#include "phoneFacts.h"
#include "trace.h"
#include "xmlElement.h"
#include "xmlFile.h"

namespace
{

constexpr std::int32_t kAllGroup = 0;
constexpr std::int32_t kBlackListGroup = 1;
constexpr std::int32_t kFirstCustomGroup = 2;

/// The folder of the photos has moved.
std::string NewPhotoPath(const std::string& oldPath)
{
    constexpr std::string_view kOldFolder = "/rundata/";
    if (oldPath.compare(0, kOldFolder.size(), kOldFolder) != 0)
        return oldPath;
    return "/data/" + oldPath.substr(kOldFolder.size());
}

/// A custom group gets the next free id.
std::int32_t GroupIdOf(const std::string& groupName, std::int32_t& nextCustomId)
{
    if (groupName.empty() || groupName == "Anonymous")
        return kAllGroup;
    if (groupName == "Black List")
        return kBlackListGroup;
    return nextCustomId++;
}

void ReadContacts(const TiXmlElement& group, std::int32_t groupId, std::list<ContactRecord>& contacts)
{
    const TiXmlElement* element = group.FirstChildElement("contact");
    for (; element != nullptr; element = element->NextSiblingElement("contact")) {
        if (contacts.size() == kMostContacts)
            return;
        ContactRecord contact;
        contact.displayName = TinyXml_GetStringAttr(element, "sLocalRename", "");
        if (contact.displayName.empty())
            continue;
        contact.officeNumber = TinyXml_GetStringAttr(element, "sOfficeNumber", "");
        contact.mobileNumber = TinyXml_GetStringAttr(element, "sMobilNumber", ""); // the device's own spelling
        contact.otherNumber = TinyXml_GetStringAttr(element, "sPrivateNumber", "");
        contact.photoPath = NewPhotoPath(TinyXml_GetStringAttr(element, "sImagePath", ""));
        contact.groupId = groupId;
        contacts.push_back(std::move(contact));
    }
}

void ReadGroups(const TiXmlElement& root, std::list<ContactRecord>& contacts, std::list<GroupRecord>& groups)
{
    std::int32_t nextCustomId = kFirstCustomGroup;
    const TiXmlElement* element = root.FirstChildElement("group");
    for (; element != nullptr; element = element->NextSiblingElement("group")) {
        if (groups.size() > kMostContactGroups)
            return;
        const std::string name = TinyXml_GetStringAttr(element, "sGroupName", "");
        const std::int32_t id = GroupIdOf(name, nextCustomId);
        ReadContacts(*element, id, contacts);
        if (id >= kFirstCustomGroup)
            groups.push_back({id, name, /*isReadOnly=*/false});
    }
}

} // namespace

int GetV4XContactData(const char* oldPath, std::list<ContactRecord>& contacts, std::list<GroupRecord>& groups)
{
    ETL_TraceHelper::chTraceStack scope("GetV4XContactData");
    if (oldPath == nullptr)
        return 0;
    if (ETL_MiscHelper::pathFileExist(oldPath) == 0)
        return 0;
    contacts.clear();
    groups.clear();

    TiXmlDocument document;
    std::string errorDesc;
    if (LoadDataFile(document, oldPath, &errorDesc) == 0) {
        // The device puts the description where the path should be.
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, kNoContactsReport, errorDesc.c_str(), "");
        return 0;
    }
    const TiXmlElement* root = document.FirstChildElement(kOldContacts.root);
    if (root == nullptr)
        return 0;

    groups.push_back({kAllGroup, "All", /*isReadOnly=*/true});
    ReadGroups(*root, contacts, groups);
    groups.push_back({kBlackListGroup, "Black List", /*isReadOnly=*/true});
    return 1;
}

int SetV50ContactData(const char* newPath, const std::list<ContactRecord>& contacts, const char* oldPath)
{
    if (newPath == nullptr)
        return 0;
    TiXmlDocument document;
    TiXmlElement* root = AppendElement(document, "root_contact");
    if (root == nullptr)
        return 0;
    for (const ContactRecord& contact : contacts) {
        TiXmlElement* element = AppendElement(*root, "contact");
        if (element == nullptr)
            return 0;
        element->SetAttribute("display_name", contact.displayName);
        element->SetAttribute("office_number", contact.officeNumber);
        element->SetAttribute("mobile_number", contact.mobileNumber);
        element->SetAttribute("other_number", contact.otherNumber);
        element->SetAttribute("line", "0");
        element->SetAttribute("ring", "");
        element->SetAttribute("group_id_name", contact.groupId);
        element->SetAttribute("default_photo", contact.photoPath);
    }
    return SaveXmlFile(document, newPath, oldPath);
}

int SetV50GroupData(const char* newPath, const std::list<GroupRecord>& groups, const char* oldPath)
{
    if (newPath == nullptr)
        return 0;
    TiXmlDocument document;
    TiXmlElement* root = AppendElement(document, "root_group");
    if (root == nullptr)
        return 0;
    for (const GroupRecord& group : groups) {
        TiXmlElement* element = AppendElement(*root, "group");
        if (element == nullptr)
            return 0;
        element->SetAttribute("id_name", group.id);
        element->SetAttribute("display_name", group.displayName);
        element->SetAttribute("ring", "");
        element->SetAttribute("read_only", group.isReadOnly ? 1 : 0);
    }
    return SaveXmlFile(document, newPath, oldPath);
}

int ContactV4XToV50(const char* oldPath, const char* newContactPath, const char* newGroupPath)
{
    ETL_TraceHelper::chTraceStack scope("ContactV4XToV50");
    if (oldPath == nullptr || newContactPath == nullptr || newGroupPath == nullptr)
        return 0;

    std::list<ContactRecord> contacts;
    std::list<GroupRecord> groups;
    if (GetV4XContactData(oldPath, contacts, groups) == 0)
        return 0;

    if (contacts.empty()) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, kEmptyContactListReport);
        return 0;
    }
    if (SetV50ContactData(newContactPath, contacts, oldPath) == 0)
        return 0;

    if (groups.empty()) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, "Group data is empty!!");
        return 0;
    }
    return SetV50GroupData(newGroupPath, groups, oldPath);
}
