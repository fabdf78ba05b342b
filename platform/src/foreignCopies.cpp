// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "foreignCopies.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "commitRecord.h"
#include "descriptor.h"
#include "folderFlush.h"
#include "noteOfCopies.h"
#include "privateFile.h"
#include "stagedFiles.h"

namespace
{

constexpr char kNote[] = "/config/kestrune-certificates";
constexpr std::string_view kNoteName = "kestrune-certificates 1";

/// Static, because the pass makes the copies and the commit flushes them.
std::vector<std::string> endedCopies;
bool hasNote = false;

bool IsRegular(const std::string& path, struct stat& status)
{
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

/// Whether the command can create the file, and the file does not exist yet.
bool IsToBeMade(const ForeignCopy& copy)
{
    struct stat status = {};
    if (!IsRegular(copy.sourcePath, status) || stat(FolderOf(copy.path).c_str(), &status) != 0)
        return false;
    return lstat(copy.path.c_str(), &status) != 0 && errno == ENOENT;
}

/// A link does not count: it existed before the copy.
bool IsCutShort(const ForeignCopy& copy)
{
    struct stat made = {};
    struct stat source = {};
    return lstat(copy.path.c_str(), &made) == 0 && S_ISREG(made.st_mode) && IsRegular(copy.sourcePath, source) &&
           made.st_size != source.st_size;
}

void FlushFile(const char* path)
{
    const Descriptor file(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status = {};
    if (file.IsOpen() && fstat(file.Number(), &status) == 0 && S_ISREG(status.st_mode))
        (void)fsync(file.Number());
}

void RemoveCopies(const std::vector<std::string_view>& fields)
{
    FolderFlush flush;
    for (std::size_t number = 1; number < fields.size(); ++number) {
        const std::string path(fields[number]);
        struct stat status = {};
        if (lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && unlink(path.c_str()) == 0)
            flush.Add(path);
    }
}

} // namespace

void NoteForeignCopies(const std::vector<ForeignCopy>& copies)
{
    if (!IsStaging())
        return;
    std::vector<std::string_view> fields = {kNoteName};
    for (const ForeignCopy& copy : copies) {
        if (IsToBeMade(copy))
            fields.push_back(copy.path);
    }
    // Without the note the copies are made all the same: only a power cut during a copy would leave it unfinished.
    hasNote = fields.size() > 1 && WritePrivateFile(kNote, WithChecksum(fields)) == 0;
}

void EndForeignCopy(const ForeignCopy& copy)
{
    if (IsCutShort(copy)) {
        (void)unlink(copy.path.c_str());
        return;
    }
    endedCopies.push_back(copy.path);
    if (IsStaging())
        return;
    (void)FlushForeignCopies();
}

int FlushForeignCopies()
{
    FolderFlush flush;
    const auto count = static_cast<int>(endedCopies.size());
    for (const std::string& copy : endedCopies) {
        FlushFile(copy.c_str());
        flush.Add(copy);
    }
    endedCopies.clear();
    return count;
}

bool HasNoteOfCopies()
{
    return hasNote;
}

bool RemoveNoteOfCopies()
{
    hasNote = false;
    if (unlink(kNote) != 0)
        return errno == ENOENT;
    FlushFolder(kNoteFolder);
    return true;
}

bool TakeBackForeignCopies()
{
    std::string text;
    std::vector<std::string_view> fields;
    const PrivateFileState state = ReadPrivateFile(kNote, text);
    if (state == PrivateFileState::Missing || state == PrivateFileState::Unreadable)
        return state == PrivateFileState::Missing;
    if (state == PrivateFileState::Whole && CheckAndSplit(text, fields) && fields[0] == kNoteName)
        RemoveCopies(fields);
    RemovePrivateFile(kNote); // an incomplete note was interrupted before the first copy
    return true;
}
