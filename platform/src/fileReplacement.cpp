// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileReplacement.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "fileBytes.h"

namespace
{

constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kNewFileMode = 0644;

/// Folders whose entries changed and that are not flushed yet: static, because renames of many passes share one flush.
std::set<std::string> changedFolders;

/// The new file until it takes the destination's place: removed when it goes out of scope before that.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& destination)
        : path_(destination + ".kestrune-new"), file_(Make(path_.c_str())), exists_(file_.IsOpen())
    {
    }

    ~TemporaryFile()
    {
        if (exists_)
            (void)unlink(path_.c_str()); // a leftover is removed by the next save of this file
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool IsOpen() const { return file_.IsOpen(); }
    int Number() const { return file_.Number(); }

    bool RenameTo(const std::string& destination)
    {
        if (rename(path_.c_str(), destination.c_str()) != 0)
            return false;
        exists_ = false;
        return true;
    }

private:
    static int Make(const char* path)
    {
        constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        const int number = open(path, kFlags, S_IRUSR | S_IWUSR);
        if (number != -1 || errno != EEXIST || unlink(path) != 0)
            return number;
        return open(path, kFlags, S_IRUSR | S_IWUSR);
    }

    std::string path_;
    Descriptor file_;
    bool exists_;
};

/// What stands at the destination before it is replaced.
struct Destination {
    std::string path;    ///< the name that the new file takes
    bool exists = false; ///< as a regular file
    struct stat status = {};
};

/// Finds the file to replace, through its links.
///
/// @return false when there is something that cannot be replaced
bool FindDestination(const char* path, Destination& destination)
{
    destination.path = path;
    const LinkResult result = ResolveLinks(destination.path, destination.status);
    if (result == LinkResult::Unresolvable)
        return false;

    // Another user's link is replaced itself, as if nothing stood there.
    destination.exists = result == LinkResult::Resolved;
    return !destination.exists || S_ISREG(destination.status.st_mode);
}

bool HoldsBytes(const Destination& destination, std::string_view bytes)
{
    if (!destination.exists || static_cast<std::uint64_t>(destination.status.st_size) != bytes.size())
        return false;
    std::string present;
    return ReadFile(destination.path.c_str(), present) == ReadResult::Done && present == bytes;
}

mode_t LessUmask(mode_t mode)
{
    const mode_t mask = umask(0);
    (void)umask(mask);
    return mode & ~mask;
}

/// Owner and group first: a change of owner clears permission bits.
bool GiveOwnerAndMode(int file, const Destination& destination, mode_t newFileMode)
{
    if (!destination.exists)
        return fchmod(file, newFileMode == kModeLessUmask ? LessUmask(kNewFileMode) : newFileMode) == 0;

    struct stat made = {};
    if (fstat(file, &made) != 0)
        return false;
    const bool isOwned = made.st_uid == destination.status.st_uid && made.st_gid == destination.status.st_gid;
    if (!isOwned && fchown(file, destination.status.st_uid, destination.status.st_gid) != 0)
        return false;
    return fchmod(file, destination.status.st_mode & kPermissionBits) == 0;
}

void FlushFolder(const std::string& path)
{
    const Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.IsOpen())
        (void)fsync(folder.Number());
}

} // namespace

bool ReplaceFile(const char* path, std::string_view bytes, mode_t newFileMode)
{
    Destination destination;
    if (!FindDestination(path, destination))
        return false;

    if (HoldsBytes(destination, bytes)) {
        // Only the time is behind: nothing is lost when it stays so.
        (void)utimensat(AT_FDCWD, destination.path.c_str(), /*times=*/nullptr, AT_SYMLINK_NOFOLLOW);
        return true;
    }

    TemporaryFile file(destination.path);
    if (!file.IsOpen() || !WriteAll(file.Number(), bytes))
        return false;
    if (!GiveOwnerAndMode(file.Number(), destination, newFileMode) || fsync(file.Number()) != 0)
        return false;

    // Remembered before the rename: running out of memory here must not leave a rename that nobody flushes.
    changedFolders.insert(FolderOf(destination.path));
    return file.RenameTo(destination.path);
}

bool RemoveFile(const char* path)
{
    // Also when this run renamed nothing there: the copy may be that of a run which was killed before it flushed.
    changedFolders.insert(FolderOf(path));
    FlushChangedFolders();
    changedFolders.insert(FolderOf(path));
    return std::remove(path) == 0;
}

void FlushChangedFolders()
{
    for (const std::string& folder : changedFolders)
        FlushFolder(folder);
    changedFolders.clear();
}

void FlushForeignFile(const char* path)
{
    {
        const Descriptor file(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        struct stat status = {};
        if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode))
            return;
        (void)fsync(file.Number());
    }
    FlushFolder(FolderOf(path));
}
