// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "findWarnings.h"

#include <algorithm>
#include <string>

#include "fileWarnings.h"
#include "phoneFacts.h"
#include "reportWarnings.h"
#include "runSequence.h"
#include "secretWarnings.h"
#include "warningList.h"

namespace
{

/// Account 16 makes way for the direct-IP account as a whole.
bool IsReplacedAccount(const FileChange& file)
{
    return file.path == AccountFilePath(kLastAccount) && file.kind == ChangeKind::Changed &&
           std::any_of(file.passes.begin(), file.passes.end(),
                       [](const std::string& pass) { return pass.ends_with(kDirectIPPass); });
}

/// In a file that was there before: a new file is a copy, or is written as a whole.
bool IsEmptyKeyAdded(const FileChange& file, const ItemChange& item)
{
    return file.format == FileFormat::Ini && file.kind != ChangeKind::Added && item.kind == ChangeKind::Added &&
           item.after.value_or("").empty() && !IsReplacedAccount(file);
}

void AddValueWarnings(const RunFacts& facts, WarningList& list)
{
    for (const FileChange& file : facts.changes) {
        for (const ItemChange& item : file.items) {
            if (item.kind == ChangeKind::Emptied && !IsReplacedAccount(file))
                list.Add(WarningRule::ValueEmptied, PlaceOf(file, item.place), "it had a value");
            if (IsEmptyKeyAdded(file, item))
                list.Add(WarningRule::EmptyKeyAdded, PlaceOf(file, item.place), "it was not there before");
        }
    }
}

void AddAccountWarnings(const RunFacts& facts, WarningList& list)
{
    for (const FileChange& file : facts.changes) {
        if (file.kind == ChangeKind::Removed && file.path.starts_with(kAccountFilePrefix))
            list.Add(WarningRule::AccountRemoved, file.path,
                     file.sameAs.empty() ? "no file has its settings"
                                         : "its settings are now " + facts.secrets.HideInName(file.sameAs));
        if (IsReplacedAccount(file))
            list.Add(WarningRule::AccountRemoved, file.path, "the direct-IP account takes its place");
    }
}

std::string WhatChanges(const FileChange& file)
{
    if (file.items.empty())
        return "the file";
    return file.items.size() == 1 ? "1 value in it" : std::to_string(file.items.size()) + " values in it";
}

} // namespace

std::vector<ShownWarning> FindWarnings(const RunFacts& facts)
{
    WarningList list(facts.secrets);
    AddReportWarnings(facts, list);
    AddFileWarnings(facts, list);
    AddValueWarnings(facts, list);
    AddSecretWarnings(facts, list);
    AddAccountWarnings(facts, list);
    for (const FileChange& file : facts.secondRun)
        list.Add(WarningRule::SecondRunChanges, file.path, WhatChanges(file));
    if (facts.states.empty())
        list.Add(WarningRule::PassesUnknown, "/", "the passes, run one by one, gave another phone");
    return list.Take();
}
