// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "handOverCopy.h"

#include "devicePaths.h"
#include "fileHelper.h"
#include "fileReplacement.h"
#include "iniFile.h"
#include "runCommit.h"

void BringBackHandOver(std::string_view mode)
{
    if (mode != "2" || ETL_MiscHelper::pathFileExist(kHandOverFile) != 0)
        return;
    // Not as a copy, whose original would stay until the copy is there: after the next power cut "/tmp" is empty again.
    iniFile handOver;
    if (handOver.LoadFromFile(kHandOverCopy) != 0)
        (void)handOver.SaveToFile(kHandOverFile); // without it mode "2" does what it does without a hand-over
}

void KeepHandOver(std::string_view mode)
{
    if (mode == "1" && IsSavedByRun(kHandOverFile))
        (void)ETL_SubClass::etlCopyFile(kHandOverCopy, kHandOverFile); // only a power cut would ask for it
    else if (mode == "1" || mode == "2")
        (void)RemoveFile(kHandOverCopy); // there may be none
}
