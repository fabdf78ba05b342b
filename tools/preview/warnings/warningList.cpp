// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "warningList.h"

#include <algorithm>
#include <cstdio>
#include <tuple>

#include "phoneImage/printable.h"

const std::vector<WarningText>& WarningRules()
{
    static const std::vector<WarningText> rules = {
        {WarningRule::ValueEmptied, Severity::Warning, "a value is set to empty",
         "look at the record that writes it: its source is missing, misspelt or empty"},
        {WarningRule::TooLongToEncipher, Severity::Error, "a value is too long to encipher",
         "shorten it to 103 characters of 7 bits before the upgrade, or set it again after the upgrade"},
        {WarningRule::EncipheredTwice, Severity::Error, "a value is enciphered twice",
         "set the user's EnLock to the factory's after the run, and give the table a record for every listed secret"},
        {WarningRule::SecondsAlready, Severity::Warning, "a time is in seconds already",
         "run mode \"2\" once, or set the time again after the run"},
        {WarningRule::LimitReached, Severity::Warning, "a limit is reached",
         "what is beyond the limit stays in the old file only: shorten the list before the upgrade"},
        {WarningRule::PassStopped, Severity::Error, "a pass stopped early", "fix the named file and run again"},
        {WarningRule::FileNotLoaded, Severity::Warning, "a file does not load",
         "fix or restore the file and run again"},
        {WarningRule::EmptyCertificate, Severity::Warning, "a certificate has the size 0",
         "remove it: the certificate sync copies a missing one and never replaces one"},
        {WarningRule::AccountRemoved, Severity::Warning, "an account is removed",
         "mode \"2\" makes the direct-IP account number 16: save account 16 first if it is in use"},
        {WarningRule::SecondRunChanges, Severity::Note, "a second run would still change something",
         "run this mode once"},
        {WarningRule::PassesUnknown, Severity::Warning, "changes could not be attributed to passes",
         "use kestrune-preview and kestrune of one build"},
        {WarningRule::SecretPlain, Severity::Error, "a secret is written plain",
         "give the record an encrypt flag, and list the new place in encryptconfig.xml"},
        {WarningRule::EmptyKeyAdded, Severity::Warning, "an empty key is added",
         "remove the record, or give it a source that has a value: the firmware's default no longer counts"},
        {WarningRule::TranslationsOff, Severity::Error, "translations are switched off",
         "set [SyncConfig] bEnableFromOld of version.ini to 1 or remove it, also as a destination in the table"},
        {WarningRule::NoCipherKey, Severity::Error, "no cipher key",
         "give each phone a key file of its own; for backups that leave it out, put one into the folder for "
         "--firmware"},
        {WarningRule::OldPlacePlain, Severity::Warning, "a moved secret stays plain at its old place",
         "rewrite the old place first with a record that has only a source and srcEncrypt, and list it as well"},
    };
    return rules;
}

std::string WarningId(WarningRule rule)
{
    char id[8];
    std::snprintf(id, sizeof id, "KP%03d", static_cast<int>(rule));
    return id;
}

void WarningList::Add(WarningRule rule, const std::string& place, const std::string& text)
{
    const auto known = std::find_if(WarningRules().begin(), WarningRules().end(),
                                    [rule](const WarningText& each) { return each.rule == rule; });
    warnings_.emplace_back(rule, ShownWarning{WarningId(rule), known->severity, Shown(place),
                                              std::string(known->title) + ": " + Printable(text), known->advice});
}

bool WarningList::Has(WarningRule rule, const std::string& place) const
{
    return std::any_of(warnings_.begin(), warnings_.end(), [rule, shown = Shown(place)](const auto& entry) {
        return entry.first == rule && entry.second.place == shown;
    });
}

std::string WarningList::Shown(const std::string& place) const
{
    return Printable(secrets_.HideInName(place));
}

std::vector<ShownWarning> WarningList::Take()
{
    const auto keyOf = [](const auto& entry) { return std::tie(entry.first, entry.second.place, entry.second.text); };
    std::sort(warnings_.begin(), warnings_.end(), [keyOf](const auto& one, const auto& other) {
        return one.second.severity != other.second.severity ? one.second.severity > other.second.severity
                                                            : keyOf(one) < keyOf(other);
    });
    warnings_.erase(std::unique(warnings_.begin(), warnings_.end(),
                                [keyOf](const auto& one, const auto& other) { return keyOf(one) == keyOf(other); }),
                    warnings_.end());
    std::vector<ShownWarning> taken;
    for (auto& [rule, warning] : warnings_)
        taken.push_back(std::move(warning));
    return taken;
}
