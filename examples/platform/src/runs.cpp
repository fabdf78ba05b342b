// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Runs without a commit: each file is saved at once, so a power cut may leave an upgrade half done. The marker is
// maintained all the same, because otherwise every start would migrate again.

#include "runCommit.h"

#include <string>

#include "fileHelper.h"
#include "fileReplacement.h"
#include "files.h"

namespace
{

/// Of the current run: the content of the marker afterwards, and whether the marker lists the run's mode.
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
    return ETL_MiscHelper::pathFileExist(path) != 0; // this library does not know which run has saved it
}

void CommitRun()
{
    if (!isOfUpgrade)
        return;
    if (laterWords.empty())
        (void)RemoveFile(kUpgradeMarker); // if this fails, the marker still lists this mode
    else
        (void)ReplaceFile(kUpgradeMarker, laterWords);
}
