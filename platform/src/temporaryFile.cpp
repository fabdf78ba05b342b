// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "temporaryFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "descriptor.h"

namespace
{

int OpenAfresh(const char* path)
{
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const int number = open(path, kFlags, S_IRUSR | S_IWUSR);
    if (number != -1 || errno != EEXIST || unlink(path) != 0)
        return number;
    return open(path, kFlags, S_IRUSR | S_IWUSR);
}

} // namespace

std::string TemporaryPath(const std::string& path)
{
    return path + ".kestrune-new";
}

TemporaryFile::~TemporaryFile()
{
    if (exists_)
        (void)unlink(path_.c_str()); // if this fails, the next save of this file removes it
}

int TemporaryFile::Write(std::string_view bytes, const FileOrigin& origin)
{
    errno = 0;
    const Descriptor file(OpenAfresh(path_.c_str()));
    exists_ = file.IsOpen();
    if (!exists_)
        return errno;
    if (!WriteAll(file.Number(), bytes))
        return errno != 0 ? errno : ENOSPC; // a write of 0 bytes sets no error
    if (const int error = GiveAttributes(file.Number(), origin))
        return error;
    return fsync(file.Number()) == 0 ? 0 : errno;
}

int TemporaryFile::RenameTo(const char* destination)
{
    if (rename(path_.c_str(), destination) != 0)
        return errno;
    exists_ = false;
    return 0;
}
