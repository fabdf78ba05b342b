// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "handOverCopy.h"

#include "fileHelper.h"
#include "fileReplacement.h"
#include "iniFile.h"
#include "phoneFacts.h"
#include "runCommit.h"

void BringBackHandOver(std::string_view mode)
{
    if (mode != "2" || ETL_MiscHelper::pathFileExist(kHandOverFile) != 0)
        return;
    // Not etlCopyFile: the commit would keep the original until the copy exists, but "/tmp" may be empty again by then.
    iniFile handOver;
    if (handOver.LoadFromFile(kHandOverCopy) != 0)
        (void)handOver.SaveToFile(kHandOverFile); // on failure mode "2" runs as if there were no hand-over file
}

void KeepHandOver(std::string_view mode)
{
    if (mode == "1" && IsSavedByRun(kHandOverFile))
        (void)ETL_SubClass::etlCopyFile(kHandOverCopy, kHandOverFile); // needed only after a power cut
    else if (mode == "1" || mode == "2")
        (void)RemoveFile(kHandOverCopy); // there may be none
}
