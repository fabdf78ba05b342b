// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "findWarnings.h"

#include <algorithm>
#include <string>

#include "fileWarnings.h"
#include "reportWarnings.h"
#include "warningList.h"

namespace
{

std::string PlaceOf(const FileChange& file, const Item& item)
{
    return file.path + (file.format == FileFormat::Ini ? " [" + *item.group + "] " : " " + *item.group + " ") +
           item.name;
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
            const int layers = item.after ? facts.secrets.Values().LayersOf(*item.after) : 0;
            if (layers > 1 && layers > facts.secrets.Values().LayersOf(item.before.value_or("")))
                list.Add(WarningRule::EncipheredTwice, PlaceOf(file, item.place), "in this run");
        }
    }
    for (const FileChange& file : facts.secondRun) {
        for (const ItemChange& item : file.items) {
            if (item.after && facts.secrets.Values().LayersOf(*item.after) > 1)
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
