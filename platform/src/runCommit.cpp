// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "runCommit.h"

#include <algorithm>
#include <cctype>

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

/// The mode word may be any text, and the system log is for all to read.
std::string ModeText(const std::string& mode)
{
    constexpr std::size_t kLongestMode = 8;
    const bool isWord = mode.size() <= kLongestMode && std::all_of(mode.begin(), mode.end(), [](unsigned char byte) {
                            return byte < 0x80 && std::isalnum(byte) != 0;
                        });
    return isWord ? "mode " + mode + ": " : "another mode: ";
}

std::string FilesText(int count)
{
    return std::to_string(count) + (count == 1 ? " file" : " files");
}

void ReportEnd(const CommitResult& result, const std::string& endedEarly)
{
    std::string text = run.hasFinishedEarlier ? "finished an earlier run; " : "";
    text += result.changed == 0 && result.failed == 0 ? "nothing to do" : FilesText(result.changed) + " changed";
    if (result.failed != 0)
        text += ", " + std::to_string(result.failed) + " not saved";
    if (!endedEarly.empty())
        text += "; ended early: " + endedEarly;
    const bool isWhole = result.failed == 0 && endedEarly.empty();
    WriteToSystemLog(isWhole ? kSystemLogInformation : kSystemLogWarning, ModeText(run.mode) + text);
}

void Commit(const std::string& endedEarly)
{
    const int copies = FlushForeignCopies();
    CommitResult result = CommitStaged(run);
    result.changed += copies;
    if (run.isOfUpgrade)
        RemoveEmptyMarker();
    ReportEnd(result, endedEarly);
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
    if (earlier == EarlierRun::Unfinished) {
        WriteToSystemLog(kSystemLogWarning, "an earlier run cannot be finished now: nothing is done");
        return RunStart::NothingToDo;
    }
    const bool hasFinishedEarlier = earlier == EarlierRun::Finished;
    if (!sawMarker && !IsMarkerThere()) {
        if (hasFinishedEarlier && record.mode == mode) {
            WriteToSystemLog(kSystemLogInformation, ModeText(mode) + "finished an earlier run");
            return RunStart::NothingToDo;
        }
        run = {mode, /*isOfUpgrade=*/false, "", hasFinishedEarlier};
        return RunStart::WithoutMarker;
    }
    const UpgradeMarker marker = ReadMarker();
    if (marker.isEmpty)
        RemovePrivateFile(kUpgradeMarker);
    if (marker.word.empty() || marker.word != mode) {
        const char* why = hasFinishedEarlier ? "finished an earlier run" : "not its turn";
        WriteToSystemLog(kSystemLogInformation, ModeText(mode) + why);
        return RunStart::NothingToDo;
    }
    run = {mode, /*isOfUpgrade=*/true, marker.rest, hasFinishedEarlier};
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

void CommitRun(const std::string& endedEarly)
{
    try {
        Commit(endedEarly);
    } catch (...) {
        // No memory: without a record nothing has changed, with a record the next run finishes this one.
    }
    EndRun();
}
