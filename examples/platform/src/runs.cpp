// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Runs without a commit of their own: each file is saved at once, so a power cut may leave an upgrade half done. The marker
// is kept all the same, or every start would migrate again.

#include "runCommit.h"

#include <string>

#include "fileHelper.h"
#include "fileReplacement.h"
#include "files.h"

namespace
{

/// What the marker is to list after the run that has begun; no run of an upgrade without it.
std::string laterWords;
bool isOfUpgrade = false;

} // namespace

RunStart BeginRun(const char* mode)
{
    isOfUpgrade = false;
    if (ETL_MiscHelper::pathFileExist(kUpgradeMarker) == 0)
        return RunStart::WithoutMarker;
    std::string words;
    if (!ReadFile(kUpgradeMarker, words))
        return RunStart::NothingToDo;
    const std::size_t end = words.find('\n');
    if (words.substr(0, end) != mode)
        return RunStart::NothingToDo;
    laterWords = end == std::string::npos ? "" : words.substr(end + 1);
    isOfUpgrade = true;
    return RunStart::OfUpgrade;
}

bool IsSavedByRun(const char* path)
{
    return ETL_MiscHelper::pathFileExist(path) != 0; // who has saved it is not known here
}

void CommitRun()
{
    if (!isOfUpgrade)
        return;
    if (laterWords.empty())
        (void)RemoveFile(kUpgradeMarker); // one that stays is empty of words that anybody calls
    else
        (void)ReplaceFile(kUpgradeMarker, laterWords);
}
