// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "carryOut.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "descriptor.h"
#include "fileBytes.h"
#include "folderFlush.h"
#include "noteOfCopies.h"
#include "privateFile.h"
#include "runCommit.h"
#include "systemLog.h"
#include "temporaryFile.h"

namespace
{

int failures = 0; ///< static: a failure is reported at several depths of a commit

/// @return 0; otherwise the error number
int Rename(const RecordedChange& change, CarryingOut turn)
{
    const std::string temporary = TemporaryPath(change.path);
    if (turn == CarryingOut::Again) {
        if (HoldsContent(change.path.c_str(), change.content)) {
            (void)unlink(temporary.c_str());
            return 0;
        }
        if (!HoldsContent(temporary.c_str(), change.content) || IsForeign(temporary))
            return 0;
    }
    if (std::rename(temporary.c_str(), change.path.c_str()) == 0)
        return 0;
    const int error = errno;
    if (change.kind != ChangeKind::Marker) // the next run tries the marker again
        (void)unlink(temporary.c_str());
    return error;
}

bool IsCopyThere(const CommitRecord& record, const std::string& path)
{
    return std::any_of(record.changes.begin(), record.changes.end(), [&path](const RecordedChange& change) {
        return change.kind == ChangeKind::Rename && change.path == path && HoldsContent(path.c_str(), change.content);
    });
}

bool IsStillAsRecorded(const RecordedChange& change)
{
    if (change.kind == ChangeKind::Remove)
        return HoldsContent(change.path.c_str(), change.content);
    struct stat status = {};
    return lstat(change.path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

/// @return 0; otherwise the error number
int Remove(const CommitRecord& record, const RecordedChange& change, CarryingOut turn)
{
    if (!change.waitsForCopy.empty() && !IsCopyThere(record, change.waitsForCopy))
        return 0;
    (void)unlink(TemporaryPath(change.path).c_str());
    if (turn == CarryingOut::Again && !IsStillAsRecorded(change))
        return 0;
    return std::remove(change.path.c_str()) == 0 ? 0 : errno;
}

void ReportIfFailed(const RecordedChange& change, int error)
{
    if (error != 0)
        ReportFailure(change.path, error);
}

void MakeChanges(const CommitRecord& record, CarryingOut turn)
{
    FolderFlush flush;
    for (const RecordedChange& change : record.changes) {
        if (change.kind != ChangeKind::Rename)
            continue;
        ReportIfFailed(change, Rename(change, turn));
        flush.Add(change.path);
    }
    for (const RecordedChange& change : record.changes) {
        if (change.kind != ChangeKind::Remove && change.kind != ChangeKind::RemoveOther)
            continue;
        ReportIfFailed(change, Remove(record, change, turn));
        flush.Add(change.path);
    }
}

bool ChangeMarker(const CommitRecord& record, CarryingOut turn)
{
    if (record.changes.empty() || record.changes.back().kind != ChangeKind::Marker)
        return true;
    const int error = Rename(record.changes.back(), turn);
    ReportIfFailed(record.changes.back(), error);
    FlushFolder(kNoteFolder);
    return error == 0;
}

/// A killed run may have left its record unflushed; if a power cut then loses the record, half a run remains.
void FlushRecord()
{
    {
        const Descriptor file(OpenForReading(kCommitRecord));
        if (file.IsOpen())
            (void)fsync(file.Number());
    }
    FlushFolder(kNoteFolder);
}

} // namespace

bool CarryOut(const CommitRecord& record, CarryingOut turn)
{
    if (turn == CarryingOut::Again)
        FlushRecord();
    MakeChanges(record, turn);
    const bool mayHaveNote = turn == CarryingOut::Again || HasNoteOfCopies();
    if ((mayHaveNote && !RemoveNoteOfCopies()) || !ChangeMarker(record, turn))
        return false;
    RemovePrivateFile(kCommitRecord);
    return true;
}

void ReportFailure(const std::string& path, int error)
{
    failures += path == kUpgradeMarker ? 0 : 1;
    try {
        WriteToSystemLog(kSystemLogWarning, "cannot save " + path + ": " + std::strerror(error));
    } catch (...) {
        // No memory for the report: the commit continues.
    }
}

int FailureCount()
{
    return failures;
}
