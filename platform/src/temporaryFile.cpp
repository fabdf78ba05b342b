// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "temporaryFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "descriptor.h"
#include "fileReplacement.h"

namespace
{

constexpr mode_t kPermissionBits = 07777;

int OpenAfresh(const char* path)
{
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const int number = open(path, kFlags, S_IRUSR | S_IWUSR);
    if (number != -1 || errno != EEXIST || unlink(path) != 0)
        return number;
    return open(path, kFlags, S_IRUSR | S_IWUSR);
}

/// Owner and group first: a change of owner clears permission bits.
bool GiveAttributes(int file, const FileAttributes& attributes)
{
    const struct stat* replaced = attributes.replaced;
    if (replaced == nullptr)
        return fchmod(file, ModeOfNewFile(attributes.newFileMode)) == 0;
    struct stat made = {};
    if (fstat(file, &made) != 0)
        return false;
    const bool isOwned = made.st_uid == replaced->st_uid && made.st_gid == replaced->st_gid;
    if (!isOwned && fchown(file, replaced->st_uid, replaced->st_gid) != 0)
        return false;
    return fchmod(file, replaced->st_mode & kPermissionBits) == 0;
}

} // namespace

std::string TemporaryPath(const std::string& path)
{
    return path + ".kestrune-new";
}

mode_t ModeOfNewFile(mode_t newFileMode)
{
    if (newFileMode != kModeLessUmask)
        return newFileMode;
    const mode_t mask = umask(0);
    (void)umask(mask);
    return 0644 & ~mask;
}

TemporaryFile::~TemporaryFile()
{
    if (exists_)
        (void)unlink(path_.c_str()); // a leftover is removed by the next save of this file
}

int TemporaryFile::Write(std::string_view bytes, const FileAttributes& attributes)
{
    errno = 0;
    const Descriptor file(OpenAfresh(path_.c_str()));
    exists_ = file.IsOpen();
    const bool isWritten = exists_ && WriteAll(file.Number(), bytes) && GiveAttributes(file.Number(), attributes) &&
                           fsync(file.Number()) == 0;
    if (isWritten)
        return 0;
    return errno != 0 ? errno : ENOSPC; // a write that took nothing and said nothing
}

int TemporaryFile::RenameTo(const char* destination)
{
    if (rename(path_.c_str(), destination) != 0)
        return errno;
    exists_ = false;
    return 0;
}
