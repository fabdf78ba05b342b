// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "privateFile.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "descriptor.h"
#include "fileBytes.h"

namespace
{

bool IsTrusted(const struct stat& status)
{
    return S_ISREG(status.st_mode) && status.st_uid == geteuid() && status.st_nlink == 1 &&
           (status.st_mode & S_IRUSR) != 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0 &&
           static_cast<std::uint64_t>(status.st_size) <= kLargestFile;
}

bool ReadTrusted(const char* path, std::string& text)
{
    const Descriptor file(OpenForReading(path));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !IsTrusted(status))
        return false;
    text.resize(static_cast<std::size_t>(status.st_size));
    const ssize_t count = ReadInto(file.Number(), text.data(), text.size());
    return count == static_cast<ssize_t>(text.size());
}

PrivateFileState ReadOnce(const char* path, std::string& text)
{
    struct stat status = {};
    if (lstat(path, &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? PrivateFileState::Missing : PrivateFileState::Unreadable;
    if (!IsTrusted(status))
        return PrivateFileState::Untrusted;
    return ReadTrusted(path, text) ? PrivateFileState::Whole : PrivateFileState::Unreadable;
}

int WriteAndFlush(const char* path, const std::string& text)
{
    errno = 0;
    const Descriptor file(open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.IsOpen())
        return errno;
    if (WriteAll(file.Number(), text) && fsync(file.Number()) == 0)
        return 0;
    const int error = errno != 0 ? errno : ENOSPC; // a write of 0 bytes sets no error
    (void)unlink(path);                            // the file is incomplete, or lists files that do not exist
    return error;
}

} // namespace

PrivateFileState ReadPrivateFile(const char* path, std::string& text)
{
    PrivateFileState state = PrivateFileState::Unreadable;
    for (int tries = 0; tries < kMostTries && state == PrivateFileState::Unreadable; ++tries)
        state = ReadOnce(path, text);
    return state;
}

int WritePrivateFile(const char* path, const std::string& text)
{
    if (text.size() > kLargestFile)
        return EFBIG; // the next run would not trust a larger file
    const int error = WriteAndFlush(path, text);
    if (error == 0)
        FlushFolder(kNoteFolder);
    return error;
}

void RemovePrivateFile(const char* path)
{
    if (unlink(path) == 0)
        FlushFolder(kNoteFolder);
}
