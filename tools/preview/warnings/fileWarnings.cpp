// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileWarnings.h"

#include <algorithm>
#include <pugixml.hpp>

#include "devicePaths.h"
#include "iniText.h"
#include "integerText.h"
#include "transPasswordFile.h"
#include "xmlGuard.h"

namespace
{

/// An XML file that a pass reads, and the root without which it does nothing, silently.
struct ExpectedRoot {
    const char* path;
    const char* root;
    bool isOfMode2; ///< else of modes "all" and "dev"
};

constexpr ExpectedRoot kExpectedRoots[] = {
    {"/config/data/contactData.xml", "contactData", false}, {"/config/data/dialplan.xml", "DialRule", false},
    {"/config/data/dialnow.xml", "DialNow", false},         {"/config/data/dsskey.xml", "DssKey", false},
    {"/config/data/doorphonedata.xml", "DoorPhone", false}, {"/config/data/remotebook.xml", "RemotePhoneBook", false},
    {"/config/data/linekey.xml", "dsskey", true},           {"/config/data/programkey.xml", "programkey", true},
    {"/config/data/expkey0.xml", "dsskey", true},           {"/config/data/expkey1.xml", "dsskey", true},
    {"/config/data/expkey2.xml", "dsskey", true},           {"/config/data/expkey3.xml", "dsskey", true},
    {"/config/data/expkey4.xml", "dsskey", true},           {"/config/data/expkey5.xml", "dsskey", true},
};

constexpr int kMostGroups = 50;
constexpr int kMostContacts = 1001;
constexpr int kMostKeys = 18;
constexpr int kLongestMinutes = 59;

bool IsTranslationEnabled(const Snapshot& phone)
{
    const auto value = FindIniValue(ContentOf(phone, "/config/version.ini"), "SyncConfig", "bEnableFromOld");
    return !value || ParseInt32(std::string(*value).c_str()) != 0;
}

bool Load(pugi::xml_document& document, const std::string& content)
{
    return !content.empty() && RefuseSize(content.size()) == nullptr && RefuseXml(content) == nullptr &&
           document.load_buffer(content.data(), content.size());
}

void AddGroupAndContactLimits(const pugi::xml_node& root, const std::string& path, WarningList& list)
{
    int groups = 0;
    int contacts = 0;
    for (const pugi::xml_node& group : root.children("group")) {
        const std::string name = group.attribute("sGroupName").value();
        groups += name.empty() || name == "Anonymous" || name == "Black List" ? 0 : 1;
        for (const pugi::xml_node& contact : group.children("contact"))
            contacts += *contact.attribute("sLocalRename").value() == '\0' ? 0 : 1;
    }
    if (groups > kMostGroups)
        list.Add(WarningRule::LimitReached, path,
                 "50 groups of " + std::to_string(groups) + " are kept, with their contacts");
    if (contacts > kMostContacts)
        list.Add(WarningRule::LimitReached, path, "1001 contacts of " + std::to_string(contacts) + " are kept");
}

void AddKeyLimit(const pugi::xml_node& root, const std::string& path, WarningList& list)
{
    const auto keys = root.children("Item");
    const auto count = std::distance(keys.begin(), keys.end());
    if (count > kMostKeys)
        list.Add(WarningRule::LimitReached, path, "18 keys of " + std::to_string(count) + " are kept");
}

void AddRootWarnings(const RunFacts& facts, WarningList& list)
{
    const bool isTranslated = HasMode(facts, {"all", "dev"}) && IsTranslationEnabled(facts.before);
    const bool isMigrated = HasMode(facts, {"2"}) && facts.after.count("/tmp/VersionInfo.cfg") != 0;
    for (const ExpectedRoot& expected : kExpectedRoots) {
        if (!(expected.isOfMode2 ? isMigrated : isTranslated) || !IsFile(facts.before, expected.path))
            continue;
        pugi::xml_document document;
        if (!Load(document, ContentOf(facts.before, expected.path))) {
            if (!list.Has(WarningRule::FileNotLoaded, expected.path)) // most passes report it themselves
                list.Add(WarningRule::FileNotLoaded, expected.path, "nothing is done with it");
            continue;
        }
        const pugi::xml_node root = document.child(expected.root);
        if (root.empty())
            list.Add(WarningRule::PassStopped, expected.path,
                     std::string("it has no root element \"") + expected.root + "\", nothing is done with it");
        if (std::string(expected.root) == "contactData")
            AddGroupAndContactLimits(root, expected.path, list);
        if (std::string(expected.root) == "DssKey")
            AddKeyLimit(root, expected.path, list);
    }
}

void AddBacklightWarning(const RunFacts& facts, WarningList& list)
{
    if (!HasMode(facts, {"2"}))
        return;
    const int before = ParseInt32(ReadValue(facts.before, kUserIni, "Backlight", "nBacklightTime").c_str());
    const int after = ParseInt32(ReadValue(facts.after, kUserIni, "Backlight", "nBacklightTime").c_str());
    if (before > kLongestMinutes && before != after)
        list.Add(WarningRule::SecondsAlready, std::string(kUserIni) + " [Backlight] nBacklightTime",
                 std::to_string(before) + " becomes " + std::to_string(after));
}

void AddCertificateWarnings(const RunFacts& facts, WarningList& list)
{
    for (const auto& [path, file] : facts.after) {
        if (file.kind == PhoneFile::Kind::File && file.content->empty() && path.find("/certs/") != std::string::npos)
            list.Add(WarningRule::EmptyCertificate, path, "it is empty");
    }
}

void AddEntryWarning(const RunFacts& facts, const Snapshot& phone, const std::string& path, const ListedEntry& entry,
                     WarningList& list)
{
    if (!IsFile(phone, path))
        return;
    const auto stored = FindIniValue(ContentOf(phone, path), entry.section, entry.key);
    const std::string value = stored ? std::string(*stored) : entry.defaultText;
    if (facts.secrets.Values().LayersOf(value) == 0 && CannotBeEnciphered(value))
        list.Add(WarningRule::TooLongToEncipher, path + " [" + entry.section + "] " + entry.key,
                 "passwords: it stays plain");
}

/// Detected from the traces: the password pass enciphers if one of them says so.
bool IsEnciphering(const RunFacts& facts)
{
    return std::any_of(facts.reports.begin(), facts.reports.end(), [](const RunReports& reports) {
        return reports.errors.find("etlTrace 2: Encrypt:(") != std::string::npos;
    });
}

void AddEntryWarnings(const RunFacts& facts, WarningList& list)
{
    if (!IsEnciphering(facts))
        return;
    for (const ListedEntry& entry : facts.lists.entries) {
        if (!entry.isActive)
            continue;
        if (!entry.perAccount)
            AddEntryWarning(facts, facts.after, entry.file, entry, list);
        for (int number = 0; entry.perAccount && number < kConvertedAccounts; ++number)
            AddEntryWarning(facts, facts.after, AccountFilePath(number), entry, list);
    }
}

} // namespace

void AddFileWarnings(const RunFacts& facts, WarningList& list)
{
    AddRootWarnings(facts, list);
    AddBacklightWarning(facts, list);
    AddCertificateWarnings(facts, list);
    AddEntryWarnings(facts, list);
}
