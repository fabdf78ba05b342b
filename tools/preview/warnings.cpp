// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "warnings.h"

#include <algorithm>
#include <cstdio>

#include "fileWarnings.h"
#include "printable.h"
#include "reportWarnings.h"

namespace
{

std::string PlaceOf(const FileChange& file, const Item& item)
{
    return file.path + (file.format == FileFormat::Ini ? " [" + item.group + "] " : " " + item.group + " ") + item.name;
}

/// Account 16 makes way for the direct-IP account as a whole.
bool IsReplacedAccount(const FileChange& file)
{
    return file.path == "/config/user/voip/sipAccount16.cfg" && file.kind == ChangeKind::Changed &&
           std::any_of(file.passes.begin(), file.passes.end(),
                       [](const std::string& pass) { return pass.find("direct-IP account") != std::string::npos; });
}

void AddValueWarnings(const RunFacts& facts, WarningList& list)
{
    for (const FileChange& file : facts.changes) {
        for (const ItemChange& item : file.items) {
            if (item.kind == ChangeKind::Emptied && !IsReplacedAccount(file))
                list.Add(WarningRule::ValueEmptied, PlaceOf(file, item.place), "it had a value");
            const int layers = item.after ? facts.secrets.LayersOf(*item.after) : 0;
            if (layers > 1 && layers > facts.secrets.LayersOf(item.before.value_or("")))
                list.Add(WarningRule::EncipheredTwice, PlaceOf(file, item.place), "in this run");
        }
    }
    for (const FileChange& file : facts.secondRun) {
        for (const ItemChange& item : file.items) {
            if (item.after && facts.secrets.LayersOf(*item.after) > 1)
                list.Add(WarningRule::EncipheredTwice, PlaceOf(file, item.place), "in a second run");
        }
    }
}

void AddAccountWarnings(const RunFacts& facts, WarningList& list)
{
    for (const FileChange& file : facts.changes) {
        if (file.kind == ChangeKind::Removed && file.path.rfind("/config/user/voip/sipAccount", 0) == 0)
            list.Add(WarningRule::AccountRemoved, file.path,
                     file.sameAs.empty() ? "no file holds it any more" : "its settings are now " + file.sameAs);
        if (IsReplacedAccount(file))
            list.Add(WarningRule::AccountRemoved, file.path, "the direct-IP account takes its place");
    }
}

} // namespace

const std::vector<WarningText>& WarningRules()
{
    static const std::vector<WarningText> rules = {
        {WarningRule::ValueEmptied, "a value is set to empty",
         "look at the record that writes it: its source is missing, misspelt or empty"},
        {WarningRule::TooLongToEncipher, "a value is too long to encipher",
         "shorten it to 103 characters of 7 bits before the upgrade, or set it anew after it"},
        {WarningRule::EncipheredTwice, "a value is enciphered twice",
         "set the user's EnLock to the factory's after the run, and give the table a record for every listed secret"},
        {WarningRule::SecondsAlready, "a time is in seconds already",
         "run mode \"2\" once, or set the time anew after the run"},
        {WarningRule::LimitReached, "a limit is reached",
         "what is beyond it stays in the old file alone: thin it out first"},
        {WarningRule::PassStopped, "a pass stopped early", "mend the file that it names and run again"},
        {WarningRule::FileNotLoaded, "a file does not load", "mend or restore the file and run again"},
        {WarningRule::EmptyCertificate, "a certificate has the size 0",
         "remove it: the certificate sync copies a missing one and never replaces one"},
        {WarningRule::AccountRemoved, "an account is removed",
         "mode \"2\" makes the direct-IP account number 16: keep what was there if it was in use"},
        {WarningRule::SecondRunChanges, "a second run would still change something", "run this mode once"},
        {WarningRule::PassesUnknown, "nobody knows which pass made which change",
         "use kestrune-preview and kestrune of one build"},
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
    ShownWarning warning = {WarningId(rule), Printable(place), Printable(text), std::string()};
    for (const WarningText& known : WarningRules()) {
        if (known.rule == rule) {
            warning.text = std::string(known.title) + ": " + warning.text;
            warning.advice = known.advice;
        }
    }
    warnings_.emplace_back(rule, std::move(warning));
}

bool WarningList::Has(WarningRule rule, const std::string& place) const
{
    return std::any_of(warnings_.begin(), warnings_.end(), [rule, shown = Printable(place)](const auto& entry) {
        return entry.first == rule && entry.second.place == shown;
    });
}

std::vector<ShownWarning> WarningList::Take()
{
    const auto keyOf = [](const auto& entry) { return std::tie(entry.first, entry.second.place, entry.second.text); };
    std::sort(warnings_.begin(), warnings_.end(),
              [keyOf](const auto& one, const auto& other) { return keyOf(one) < keyOf(other); });
    warnings_.erase(std::unique(warnings_.begin(), warnings_.end(),
                                [keyOf](const auto& one, const auto& other) { return keyOf(one) == keyOf(other); }),
                    warnings_.end());
    std::vector<ShownWarning> taken;
    for (auto& [rule, warning] : warnings_)
        taken.push_back(std::move(warning));
    return taken;
}

std::vector<ShownWarning> FindWarnings(const RunFacts& facts)
{
    WarningList list;
    AddReportWarnings(facts, list);
    AddFileWarnings(facts, list);
    AddValueWarnings(facts, list);
    AddAccountWarnings(facts, list);
    for (const FileChange& file : facts.secondRun)
        list.Add(WarningRule::SecondRunChanges, file.path,
                 file.items.empty()       ? "the file"
                 : file.items.size() == 1 ? "1 value in it"
                                          : std::to_string(file.items.size()) + " values in it");
    if (facts.states.empty())
        list.Add(WarningRule::PassesUnknown, "/", "the passes, run one by one, gave another phone");
    return list.Take();
}
