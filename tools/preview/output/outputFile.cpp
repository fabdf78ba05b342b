// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "outputFile.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "descriptor.h"
#include "phoneImage/toolError.h"

namespace fs = std::filesystem;

namespace
{

[[noreturn]] void Fail(const fs::path& path, const char* reason)
{
    throw ToolError("cannot write " + path.string() + ": " + reason);
}

void RequireWritableFolder(const fs::path& path)
{
    if (access(FolderOf(path.string()).c_str(), W_OK | X_OK) != 0)
        Fail(path, std::strerror(errno));
}

mode_t ReadUmask()
{
    const mode_t bits = umask(0); // there is no other way to ask for it
    (void)umask(bits);
    return bits;
}

const mode_t kUmask = ReadUmask(); // before any thread: archive libraries change it for a moment

mode_t ModeFor(const fs::path& path, Readers readers)
{
    struct stat status = {};
    if (readers == Readers::Owner)
        return 0600;
    if (lstat(path.c_str(), &status) == 0)
        return status.st_mode & 0777;
    return 0666 & ~kUmask;
}

} // namespace

void RequireWritable(const fs::path& path)
{
    RequireWritableFolder(path);
    // A link or a pipe would be replaced, not written to.
    struct stat status = {};
    if (lstat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        Fail(path, "it is no regular file; - means standard output");
}

void RequireNewFolder(const fs::path& path)
{
    RequireWritableFolder(path);
    if (fs::exists(fs::symlink_status(path)))
        Fail(path, "it exists already");
}

OutputFile::OutputFile(const fs::path& path, std::string_view text, Readers readers)
    : path_(path), temporary_(path, Temporary::Kind::File)
{
    // The mode comes first: the text may hold secrets.
    if (fchmod(temporary_.Number(), ModeFor(path, readers)) != 0 || !WriteAll(temporary_.Number(), text))
        Fail(path, std::strerror(errno));
}

void OutputFile::Commit()
{
    RequireWritable(path_); // it may have become something else meanwhile
    temporary_.RenameTo(path_);
}
