// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "files.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "fileHelper.h"
#include "fileReplacement.h"
#include "foreignCopies.h"

namespace
{

class OpenFile
{
public:
    OpenFile(const std::string& path, int flags, mode_t mode = 0)
        : number_(open(path.c_str(), flags | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC, mode))
    {
    }
    ~OpenFile()
    {
        if (number_ != -1)
            (void)close(number_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int Number() const { return number_; }

private:
    int number_;
};

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == path.npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// Flushes the folder of that name. Failures are ignored: the system writes the folder later.
void FlushFolder(const std::string& path)
{
    const OpenFile folder(FolderOf(path), O_RDONLY | O_DIRECTORY);
    if (folder.Number() != -1)
        (void)fsync(folder.Number());
}

/// The target of a path.
struct Place {
    std::string path;        ///< the name that is not a link, or the link that is not followed
    struct stat status = {}; ///< status of that name
    int error = 0;           ///< why there is no status; ENOENT if the name does not exist
    bool isForeign = false;  ///< the name belongs to another user in a folder such as /tmp
};

Place Find(const char* path)
{
    constexpr int kMostLinks = 40;
    Place place;
    place.path = path;
    for (int links = 0; links <= kMostLinks; ++links) {
        if (lstat(place.path.c_str(), &place.status) != 0) {
            place.error = errno;
            return place;
        }
        struct stat folder = {};
        const bool isOurs = place.status.st_uid == geteuid() || place.status.st_uid == 0;
        place.isForeign =
            !isOurs && (stat(FolderOf(place.path).c_str(), &folder) != 0 || (folder.st_mode & S_IWOTH) != 0);
        if (place.isForeign || !S_ISLNK(place.status.st_mode))
            return place;
        char target[4096];
        const ssize_t size = readlink(place.path.c_str(), target, sizeof target);
        if (size <= 0)
            break;
        const std::string name(target, static_cast<std::size_t>(size));
        place.path = name.front() == '/' ? name : FolderOf(place.path) + "/" + name;
    }
    place.error = ELOOP;
    return place;
}

bool WriteAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

mode_t ModeLessUmask()
{
    const mode_t mask = umask(0);
    (void)umask(mask);
    return 0644 & ~mask;
}

/// Writes the bytes and flushes them to the device.
///
/// @param owner  the file whose owner and group the new file gets; null for none
bool WriteNewFile(const std::string& path, std::string_view bytes, const struct stat* owner, mode_t mode)
{
    (void)unlink(path.c_str()); // an earlier run may have left it
    const OpenFile file(path, O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (file.Number() == -1 || !WriteAll(file.Number(), bytes))
        return false;
    // The owner comes first, since a change of it clears bits.
    if (owner != nullptr && (owner->st_uid != geteuid() || owner->st_gid != getegid()) &&
        fchown(file.Number(), owner->st_uid, owner->st_gid) != 0)
        return false;
    return fchmod(file.Number(), mode) == 0 && fsync(file.Number()) == 0;
}

/// @param source  the file whose owner and group a new file gets; null for none
/// @param mode    the permission bits of a new file
/// @param most    the permission bits that an existing file may keep
bool Replace(const char* path, std::string_view bytes, const struct stat* source, mode_t mode, mode_t most = 07777)
{
    const Place place = Find(path);
    if (place.path.empty() || (place.error != 0 && place.error != ENOENT))
        return false;
    const bool isThere = place.error == 0 && !place.isForeign;
    if (isThere && !S_ISREG(place.status.st_mode))
        return false;

    std::string oldBytes;
    if (isThere && ReadFile(place.path.c_str(), oldBytes) && oldBytes == bytes)
        return utimensat(AT_FDCWD, place.path.c_str(), /*times=*/nullptr, 0) == 0;

    const std::string newPath = place.path + ".kestrune-new";
    const struct stat* owner = isThere ? &place.status : source;
    if (!WriteNewFile(newPath, bytes, owner, isThere ? place.status.st_mode & most : mode) ||
        rename(newPath.c_str(), place.path.c_str()) != 0) {
        (void)unlink(newPath.c_str());
        return false;
    }
    FlushFolder(place.path);
    return true;
}

} // namespace

bool ReadFile(const char* path, std::string& bytes, struct stat* status)
{
    const Place place = Find(path);
    if (place.error != 0 || place.isForeign || !S_ISREG(place.status.st_mode))
        return false;
    const OpenFile file(place.path, O_RDONLY);
    struct stat found = {};
    if (file.Number() == -1 || fstat(file.Number(), &found) != 0 || !S_ISREG(found.st_mode))
        return false;

    std::string content;
    char buffer[65536];
    ssize_t size = 0;
    while ((size = read(file.Number(), buffer, sizeof buffer)) > 0)
        content.append(buffer, static_cast<std::size_t>(size));
    if (size < 0)
        return false;
    bytes = content;
    if (status != nullptr)
        *status = found;
    return true;
}

bool ReplaceFile(const char* path, std::string_view bytes, mode_t newFileMode)
{
    return Replace(path, bytes, /*source=*/nullptr, newFileMode == kModeLessUmask ? ModeLessUmask() : newFileMode);
}

bool ReplaceDerivedFile(const char* path, std::string_view bytes, const char* sourcePath)
{
    struct stat source = {};
    if (stat(sourcePath, &source) != 0)
        return ReplaceFile(path, bytes);
    return Replace(path, bytes, &source, ModeLessUmask() & (source.st_mode | S_IWUSR));
}

bool RemoveFile(const char* path)
{
    if (std::remove(path) != 0)
        return false;
    FlushFolder(path);
    return true;
}

void NoteForeignCopies(const std::vector<ForeignCopy>& /*copies*/)
{
    // A copy that was interrupted by a power cut stays incomplete: this library writes no note.
}

void EndForeignCopy(const ForeignCopy& copy)
{
    struct stat made = {};
    struct stat source = {};
    if (lstat(copy.path.c_str(), &made) != 0 || !S_ISREG(made.st_mode) || stat(copy.sourcePath.c_str(), &source) != 0)
        return;
    if (made.st_size != source.st_size) {
        (void)unlink(copy.path.c_str());
        return;
    }
    {
        const OpenFile file(copy.path, O_RDONLY);
        if (file.Number() != -1)
            (void)fsync(file.Number());
    }
    FlushFolder(copy.path);
}

int ETL_MiscHelper::pathFileExist(const char* path)
{
    if (path == nullptr || *path == '\0')
        return 0;
    const Place place = Find(path);
    return place.error == 0 && !place.isForeign ? 1 : 0;
}

int ETL_SubClass::etlCopyFile(const char* destinationPath, const char* sourcePath)
{
    std::string bytes;
    struct stat status = {};
    if (!ReadFile(sourcePath, bytes, &status))
        return 0;
    // A link to the source would become dangling when the source is removed.
    const Place destination = Find(destinationPath);
    const bool isLink = destination.error == 0 && destination.path != destinationPath;
    if (isLink && destination.path == Find(sourcePath).path && unlink(destinationPath) != 0)
        return 0;
    return Replace(destinationPath, bytes, &status, status.st_mode & 07777, status.st_mode & 07777) ? 1 : 0;
}
