// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileWarnings.h"

#include <algorithm>
#include <pugixml.hpp>

#include "allV4XToV50.h"
#include "iniText.h"
#include "integerText.h"
#include "phoneFacts.h"
#include "reportWarnings.h"
#include "xmlGuard.h"

namespace
{

bool IsTranslationEnabled(const Snapshot& phone)
{
    const auto value = FindIniValue(ContentOf(phone, kVersionIni), kSyncSection, kEnableKey);
    return !value || ParseInt32(std::string(*value).c_str()) != 0;
}

/// The table pass runs before the translators, and may have written the switch.
void AddSwitchWarning(const RunFacts& facts, WarningList& list)
{
    if (!HasMode(facts, {"all", "dev"}) || IsTranslationEnabled(facts.after))
        return;
    const bool hasData = std::any_of(
        std::begin(kXmlTranslations), std::end(kXmlTranslations),
        [&facts](const XmlTranslation& translation) { return IsFile(facts.before, translation.source.path); });
    if (hasData)
        list.Add(WarningRule::TranslationsOff, std::string(kVersionIni) + " [" + kSyncSection + "] " + kEnableKey,
                 "contacts and other XML data of the old firmware are not carried over");
}

bool Load(pugi::xml_document& document, const std::string& content)
{
    return !content.empty() && RefuseSize(content.size()) == nullptr && RefuseXml(content) == nullptr &&
           document.load_buffer(content.data(), content.size());
}

void AddGroupAndContactLimits(const pugi::xml_node& root, const std::string& path, WarningList& list)
{
    std::size_t groups = 0;
    std::size_t contacts = 0;
    for (const pugi::xml_node& group : root.children("group")) {
        const std::string name = group.attribute("sGroupName").value();
        groups += name.empty() || name == "Anonymous" || name == "Black List" ? 0u : 1u;
        for (const pugi::xml_node& contact : group.children("contact"))
            contacts += *contact.attribute("sLocalRename").value() == '\0' ? 0u : 1u;
    }
    if (groups > kMostContactGroups)
        list.Add(WarningRule::LimitReached, path,
                 std::to_string(kMostContactGroups) + " groups of " + std::to_string(groups) +
                     " are kept, with their contacts");
    if (contacts > kMostContacts)
        list.Add(WarningRule::LimitReached, path,
                 std::to_string(kMostContacts) + " contacts of " + std::to_string(contacts) + " are kept");
}

void AddKeyLimit(const pugi::xml_node& root, const std::string& path, WarningList& list)
{
    const auto keys = root.children("Item");
    const auto count = std::distance(keys.begin(), keys.end());
    if (count > kMostDSSKeys)
        list.Add(WarningRule::LimitReached, path,
                 std::to_string(kMostDSSKeys) + " keys of " + std::to_string(count) + " are kept");
}

void AddRootWarning(const RunFacts& facts, const XmlFile& file, WarningList& list)
{
    if (!IsFile(facts.before, file.path))
        return;
    pugi::xml_document document;
    if (!Load(document, ContentOf(facts.before, file.path))) {
        if (!list.Has(WarningRule::FileNotLoaded, file.path)) // most passes report it themselves
            list.Add(WarningRule::FileNotLoaded, file.path, "nothing is done with it");
        return;
    }
    const pugi::xml_node root = document.child(file.root);
    if (root.empty())
        list.Add(WarningRule::PassStopped, file.path,
                 std::string("it has no root element \"") + file.root + "\", nothing is done with it");
    if (file.root == std::string_view(kOldContacts.root))
        AddGroupAndContactLimits(root, file.path, list);
    if (file.root == std::string_view(kOldDSSKeys.root))
        AddKeyLimit(root, file.path, list);
}

void AddRootWarnings(const RunFacts& facts, WarningList& list)
{
    if (HasMode(facts, {"all", "dev"}) && IsTranslationEnabled(facts.after)) {
        for (const XmlTranslation& translation : kXmlTranslations)
            AddRootWarning(facts, translation.source, list);
    }
    if (HasMode(facts, {"2"}) && facts.after.count(kHandOverFile) != 0) {
        for (const XmlFile& layout : kKeyLayouts)
            AddRootWarning(facts, layout, list);
    }
}

void AddBacklightWarning(const RunFacts& facts, WarningList& list)
{
    if (!HasMode(facts, {"2"}))
        return;
    const int before = ParseInt32(ReadValue(facts.before, kUserIni, kBacklightSection, kBacklightKey).c_str());
    const int after = ParseInt32(ReadValue(facts.after, kUserIni, kBacklightSection, kBacklightKey).c_str());
    if (before > kLongestBacklightMinutes && before != after)
        list.Add(WarningRule::SecondsAlready, std::string(kUserIni) + " [" + kBacklightSection + "] " + kBacklightKey,
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
        return reports.errors.find("etlTrace 2: " + std::string(LiteralOf(kEncipheredReport, 0))) != std::string::npos;
    });
}

void AddEntryWarnings(const RunFacts& facts, WarningList& list)
{
    if (!IsEnciphering(facts))
        return;
    AddKeyWarning(facts, list);
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
    AddSwitchWarning(facts, list);
    AddBacklightWarning(facts, list);
    AddCertificateWarnings(facts, list);
    AddEntryWarnings(facts, list);
}
