// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "runCommit.h"

#include "carryOut.h"
#include "commitRecord.h"
#include "commitStaged.h"
#include "noteOfCopies.h"
#include "privateFile.h"
#include "runLock.h"
#include "stagedFiles.h"
#include "systemLog.h"
#include "upgradeMarker.h"

namespace
{

/// The current run. Static, because the driver begins it and commits it in two calls.
RunToCommit run;

void RemoveEmptyMarker()
{
    if (ReadMarker().isEmpty)
        RemovePrivateFile(kUpgradeMarker);
}

void Commit()
{
    FlushForeignCopies();
    CommitStaged(run);
    if (run.isOfUpgrade)
        RemoveEmptyMarker();
}

void EndRun()
{
    EndStaging();
    run = {};
    UnlockRuns();
}

enum class EarlierRun {
    None,
    Finished,
    Unfinished, ///< it cannot be finished now
};

/// Finishes a run that has left a record, or removes the copies of a run without a record.
EarlierRun FinishEarlierRun(CommitRecord& record)
{
    std::string text;
    switch (ReadPrivateFile(kCommitRecord, text)) {
    case PrivateFileState::Unreadable:
        return EarlierRun::Unfinished;
    case PrivateFileState::Whole:
        if (ParseRecord(text, record))
            return CarryOut(record, CarryingOut::Again) ? EarlierRun::Finished : EarlierRun::Unfinished;
        [[fallthrough]];
    case PrivateFileState::Untrusted:
        RemovePrivateFile(kCommitRecord);
        [[fallthrough]];
    case PrivateFileState::Missing:
        break;
    }
    return TakeBackForeignCopies() ? EarlierRun::None : EarlierRun::Unfinished;
}

RunStart Begin(const char* mode)
{
    const bool sawMarker = IsMarkerThere(); // before waiting for a run that may remove it
    if (!LockRuns()) {
        WriteToSystemLog(kSystemLogWarning, "another run has not ended: nothing is done");
        return RunStart::NothingToDo;
    }
    CommitRecord record;
    const EarlierRun earlier = FinishEarlierRun(record);
    if (earlier == EarlierRun::Unfinished)
        return RunStart::NothingToDo;

    if (!sawMarker && !IsMarkerThere()) {
        if (earlier == EarlierRun::Finished && record.mode == mode)
            return RunStart::NothingToDo;
        run = {mode, /*isOfUpgrade=*/false, ""};
        return RunStart::WithoutMarker;
    }
    const UpgradeMarker marker = ReadMarker();
    if (marker.isEmpty)
        RemovePrivateFile(kUpgradeMarker);
    if (marker.word.empty() || marker.word != mode)
        return RunStart::NothingToDo;
    run = {mode, /*isOfUpgrade=*/true, marker.rest};
    return RunStart::OfUpgrade;
}

} // namespace

RunStart BeginRun(const char* mode)
{
    RunStart start = RunStart::NothingToDo;
    try {
        start = Begin(mode);
    } catch (...) {
        // No memory to find out what has to be done: it is left to the next run.
    }
    if (start == RunStart::NothingToDo)
        EndRun();
    else
        BeginStaging();
    return start;
}

bool IsSavedByRun(const char* path)
{
    const StagedFile* staged = FindStaged(path);
    return staged != nullptr && staged->state != StagedState::Removed;
}

void CommitRun()
{
    try {
        Commit();
    } catch (...) {
        // No memory: without a record nothing has changed, with a record the next run finishes this one.
    }
    EndRun();
}
