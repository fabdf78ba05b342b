// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "commitStaged.h"

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

/// Sees which file a staged one takes the place of.
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

/// Marks what ends as it began.
///
/// @return whether anything else is left
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

bool IsForWantOfRoom(int error)
{
    return error == ENOSPC || error == EDQUOT;
}

FileOrigin OriginOfMarker()
{
    FileOrigin origin;
    origin.replaced = kUpgradeMarker; // one that has gone fails: another program has removed it
    return origin;
}

/// The new content of every changed file, flushed under its temporary name. A file that fails does not affect the others.
///
/// @return false when there is no room for all of them, or the marker's is not to be had
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
        (void)SumOfFile(removed.path.c_str(), change.content); // one that cannot be read is removed now or not at all
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

/// The file that this run has moved to the staged one's path, as a copy and a removal; null when it is none that a rename
/// can move.
StagedFile* FindMoved(const StagedFile& copy)
{
    for (StagedFile& staged : StagedFiles()) {
        struct stat status = {};
        if (staged.state == StagedState::Removed && staged.copy == &copy)
            return lstat(staged.path.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? &staged : nullptr;
    }
    return nullptr;
}

/// A rename needs no room: a moved account is never lost for want of it.
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

/// Each file whole, in the order of the first saves. The marker comes first: at most once rather than twice.
///
/// @return false when the marker could not be changed, and nothing else has been
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

/// All changes as one: from the moment when the record is on the device they count, and the next run finishes them.
///
/// @return false when nothing has changed, since there is no room for that
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

void CommitStaged(const RunToCommit& run)
{
    const bool hasChanges = FindChanges() || run.isOfUpgrade;
    if (hasChanges && !CommitTogether(run) && !CommitOneByOne(run))
        return; // a note of copies stays, and the next run takes them back
    if (HasNoteOfCopies())
        (void)RemoveNoteOfCopies(); // one that stays takes the copies with it in the next run, which makes them again
    TouchTheOthers();
}
