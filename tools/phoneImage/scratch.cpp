// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "scratch.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <vector>

#include "descriptor.h"
#include "imageLimits.h"
#include "toolError.h"

namespace fs = std::filesystem;

namespace
{

constexpr const char* kStem = "kestrune-preview-scratch";
constexpr const char* kMemory = "/dev/shm";

/// @return $TMPDIR; empty when it is not set
fs::path WantedFolder()
{
    const char* wanted = std::getenv("TMPDIR");
    return wanted == nullptr ? "" : wanted;
}

fs::path FolderOnDisk()
{
    return WantedFolder().empty() ? "/tmp" : WantedFolder();
}

/// How many are there. Static, because they share the memory.
std::atomic<std::uint64_t> count = 0;

/// In memory no run waits for a disk. It must have space for the largest image: for each folder that is in use an archive's
/// files and two copies.
fs::path ParentFolder(std::uint64_t number)
{
    constexpr std::uint64_t kMostInFolder = 3 * kMostImageBytes;
    struct statvfs memory = {};
    const bool isWanted = WantedFolder().empty() && access(kMemory, W_OK) == 0 && statvfs(kMemory, &memory) == 0;
    return isWanted && memory.f_bavail * memory.f_frsize / kMostInFolder >= number ? kMemory : FolderOnDisk();
}

/// Locks a new folder against a process that looks for folders to remove.
///
/// @return false when such a process was faster
bool Lock(const Temporary& folder)
{
    if (flock(folder.Number(), LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EBADF))
        return false; // on a file system without locks no folder is removed
    return fs::exists(folder.Path());
}

/// @return whether it is a folder of this user, and not a link to one, that no process has locked; it is locked then
bool IsLeftBehind(const Descriptor& folder)
{
    struct stat status = {};
    return folder.IsOpen() && fstat(folder.Number(), &status) == 0 && status.st_uid == geteuid() &&
           flock(folder.Number(), LOCK_EX | LOCK_NB) == 0;
}

} // namespace

Scratch::Scratch()
{
    const fs::path parent = ParentFolder(count + 1);
    do
        folder_.emplace(parent / kStem, Temporary::Kind::Folder);
    while (!Lock(*folder_));
    ++count;
}

Scratch::~Scratch()
{
    --count;
}

void RemoveScratchOfEndedProcesses()
{
    std::error_code ignored; // as the header says
    std::vector<fs::path> found;
    for (const fs::path& parent : {FolderOnDisk(), fs::path(kMemory)}) {
        for (fs::directory_iterator entry(parent, ignored), end; entry != end; entry.increment(ignored)) {
            if (entry->path().stem() == kStem)
                found.push_back(entry->path());
        }
    }
    for (const fs::path& path : found) {
        const Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (IsLeftBehind(folder))
            fs::remove_all(path, ignored);
    }
}

std::string ReadWhole(const fs::path& path, std::size_t mostBytes)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode))
        throw ToolError("cannot read " + path.string());

    std::string bytes;
    char block[65536];
    ssize_t size = 0;
    while ((size = read(file.Number(), block, sizeof block)) > 0) {
        bytes.append(block, static_cast<std::size_t>(size));
        if (bytes.size() > mostBytes)
            throw ToolError(path.string() + " has more than " + std::to_string(mostBytes) + " bytes");
    }
    if (size < 0)
        throw ToolError("cannot read " + path.string() + ": " + std::strerror(errno));
    return bytes;
}

void WriteWhole(const fs::path& path, const std::string& bytes)
{
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (!file.IsOpen() || !WriteAll(file.Number(), bytes))
        throw ToolError("cannot write " + path.string() + ": " + std::strerror(errno));
}
