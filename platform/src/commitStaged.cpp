// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "commitStaged.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <list>
#include <sys/stat.h>
#include <unistd.h>

#include "carryOut.h"
#include "commitRecord.h"
#include "contentSum.h"
#include "descriptor.h"
#include "fileBytes.h"
#include "folderFlush.h"
#include "noteOfCopies.h"
#include "privateFile.h"
#include "replaceAtOnce.h"
#include "runCommit.h"
#include "stagedFiles.h"
#include "temporaryFile.h"

namespace
{

/// Finds the file that a staged one replaces.
///
/// @return 0; otherwise the error number
int FindOrigin(const StagedFile& staged, FileOrigin& origin)
{
    origin = staged.origin;
    struct stat status = {};
    if (staged.isMadeAfresh)
        return 0;
    if (lstat(staged.path.c_str(), &status) != 0)
        return errno == ENOENT ? 0 : errno;
    origin.replaced = staged.path;
    return S_ISREG(status.st_mode) ? 0 : EEXIST;
}

int WriteTemporary(TemporaryFile& file, const StagedFile& staged)
{
    FileOrigin origin;
    if (const int error = FindOrigin(staged, origin))
        return error;
    return file.Write(staged.bytes, origin);
}

int ReplaceNow(const StagedFile& staged)
{
    FileOrigin origin;
    if (const int error = FindOrigin(staged, origin))
        return error;
    return ReplaceAtOnce(staged.path, staged.bytes, origin);
}

int RemoveNow(const StagedFile& staged)
{
    (void)unlink(TemporaryPath(staged.path).c_str());
    if (std::remove(staged.path.c_str()) != 0)
        return errno;
    FlushFolder(FolderOf(staged.path).c_str());
    return 0;
}

/// Marks the files that end unchanged.
///
/// @return whether there are other files
bool FindChanges()
{
    bool isAnyLeft = false;
    for (StagedFile& staged : StagedFiles()) {
        struct stat status = {};
        const bool isOurs = !staged.isMadeAfresh || !IsForeign(staged.path);
        if (staged.state == StagedState::Saved && isOurs && HoldsBytes(staged.path.c_str(), staged.bytes))
            staged.state = StagedState::Touched;
        if (staged.state == StagedState::Removed && lstat(staged.path.c_str(), &status) != 0 && errno == ENOENT)
            staged.state = StagedState::Touched;
        isAnyLeft |= staged.state != StagedState::Touched;
    }
    return isAnyLeft;
}

void Fail(StagedFile& staged, int error)
{
    staged.state = StagedState::Failed;
    ReportFailure(staged.path, error);
}

bool IsHeldBack(const StagedFile& removed)
{
    return removed.copy != nullptr && removed.copy->state == StagedState::Failed;
}

template <typename Condition>
int CountStaged(Condition condition)
{
    return static_cast<int>(std::count_if(StagedFiles().begin(), StagedFiles().end(), condition));
}

bool IsForWantOfRoom(int error)
{
    return error == ENOSPC || error == EDQUOT;
}

FileOrigin OriginOfMarker()
{
    FileOrigin origin;
    origin.replaced = kUpgradeMarker; // a missing marker makes the write fail: another program has removed it
    return origin;
}

/// Writes and flushes the new content of every changed file under its temporary name. A failure does not affect the
/// others.
///
/// @return false if there is no space for all of them, or the marker's could not be written
bool WriteTemporaries(const RunToCommit& run, std::list<TemporaryFile>& temporaries)
{
    for (StagedFile& staged : StagedFiles()) {
        if (staged.state != StagedState::Saved)
            continue;
        const int error = WriteTemporary(temporaries.emplace_back(staged.path), staged);
        if (IsForWantOfRoom(error))
            return false;
        if (error == 0)
            continue;
        temporaries.pop_back();
        Fail(staged, error);
    }
    return !run.isOfUpgrade || temporaries.emplace_back(kUpgradeMarker).Write(run.laterWords, OriginOfMarker()) == 0;
}

RecordedChange RemovalOf(const StagedFile& removed)
{
    RecordedChange change = {ChangeKind::Remove, removed.path, {}, ""};
    struct stat status = {};
    if (lstat(removed.path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        change.kind = ChangeKind::RemoveOther;
    else
        (void)SumOfFile(removed.path.c_str(), change.content); // if it cannot be read, only this run can remove it
    if (removed.copy != nullptr && removed.copy->state == StagedState::Saved)
        change.waitsForCopy = removed.copy->path;
    return change;
}

CommitRecord MakeRecord(const RunToCommit& run)
{
    CommitRecord record;
    record.mode = run.mode;
    for (const StagedFile& staged : StagedFiles()) {
        if (staged.state == StagedState::Saved)
            record.changes.push_back({ChangeKind::Rename, staged.path, SumOf(staged.bytes), ""});
        else if (staged.state == StagedState::Removed && !IsHeldBack(staged))
            record.changes.push_back(RemovalOf(staged));
    }
    if (run.isOfUpgrade)
        record.changes.push_back({ChangeKind::Marker, kUpgradeMarker, SumOf(run.laterWords), ""});
    return record;
}

/// The file that this run has moved to the staged one's path, as a copy and a removal; null if there is none that a
/// rename can move.
StagedFile* FindMoved(const StagedFile& copy)
{
    for (StagedFile& staged : StagedFiles()) {
        struct stat status = {};
        if (staged.state == StagedState::Removed && staged.copy == &copy)
            return lstat(staged.path.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? &staged : nullptr;
    }
    return nullptr;
}

/// A rename needs no space, so a moved account is never lost on a full disk.
bool Move(StagedFile& moved, const StagedFile& copy)
{
    if (std::rename(moved.path.c_str(), copy.path.c_str()) != 0)
        return false;
    FolderFlush flush;
    flush.Add(copy.path);
    flush.Add(moved.path);
    moved.state = StagedState::Touched;
    return true;
}

/// Replaces one file after the other, in the order of the first saves. The marker comes first, so that no mode runs
/// twice.
///
/// @return false if the marker could not be changed; then nothing else has been changed
bool CommitOneByOne(const RunToCommit& run)
{
    if (run.isOfUpgrade) {
        if (const int error = ReplaceAtOnce(kUpgradeMarker, run.laterWords, OriginOfMarker())) {
            ReportFailure(kUpgradeMarker, error);
            return false;
        }
    }
    for (StagedFile& staged : StagedFiles()) {
        if (staged.state != StagedState::Saved)
            continue;
        StagedFile* moved = FindMoved(staged);
        if (moved != nullptr && Move(*moved, staged))
            continue;
        if (const int error = ReplaceNow(staged))
            Fail(staged, error);
    }
    for (StagedFile& staged : StagedFiles()) {
        if (staged.state != StagedState::Removed || IsHeldBack(staged))
            continue;
        if (const int error = RemoveNow(staged))
            Fail(staged, error);
    }
    return true;
}

void FlushFoldersOfTemporaries(const RunToCommit& run)
{
    FolderFlush flush;
    for (const StagedFile& staged : StagedFiles()) {
        if (staged.state == StagedState::Saved)
            flush.Add(staged.path);
    }
    if (run.isOfUpgrade)
        flush.Add(kUpgradeMarker);
}

/// Makes all changes as one step: as soon as the record is on the device, the next run finishes them.
///
/// @return false if there is no space for that; then nothing has changed
bool CommitTogether(const RunToCommit& run)
{
    std::list<TemporaryFile> temporaries;
    if (!WriteTemporaries(run, temporaries))
        return false;
    FlushFoldersOfTemporaries(run);
    const CommitRecord record = MakeRecord(run);
    if (WritePrivateFile(kCommitRecord, TextOf(record)) != 0)
        return false;
    for (TemporaryFile& temporary : temporaries)
        temporary.Keep();
    (void)CarryOut(record, CarryingOut::First);
    return true;
}

void TouchTheOthers()
{
    for (const StagedFile& staged : StagedFiles()) {
        if (staged.state == StagedState::Touched)
            Touch(staged.path);
    }
}

} // namespace

CommitResult CommitStaged(const RunToCommit& run)
{
    const int failuresBefore = FailureCount();
    const bool hasChanges = FindChanges() || run.isOfUpgrade;
    const int toChange = CountStaged([](const StagedFile& staged) { return staged.state != StagedState::Touched; });
    if (hasChanges && !CommitTogether(run) && !CommitOneByOne(run))
        return {0, toChange + RefusalCount()}; // the note of copies stays, and the next run removes them
    if (HasNoteOfCopies())
        (void)RemoveNoteOfCopies(); // if the note stays, the next run removes the copies and makes them again
    TouchTheOthers();
    const int failed = FailureCount() - failuresBefore;
    const int heldBack = CountStaged(
        [](const StagedFile& staged) { return staged.state == StagedState::Removed && IsHeldBack(staged); });
    return {toChange - failed - heldBack, failed + RefusalCount()};
}
