// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileBytes.h"

#include <cerrno>
#include <climits>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr int kMostLinks = 40; // as many as the kernel follows
constexpr int kMostInterruptions =
    8; // no signal of ours interrupts a call, so a call that fails this often fails for good

bool IsInterrupted(int& interruptions)
{
    return errno == EINTR && ++interruptions <= kMostInterruptions;
}

int OpenForReading(const char* path)
{
    int interruptions = 0;
    int number = -1;
    do
        number = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW | O_CLOEXEC);
    while (number == -1 && IsInterrupted(interruptions));
    return number;
}

/// Reads until the size is reached or the file ends before it.
///
/// @return how many bytes were read; -1 on failure
ssize_t ReadInto(int descriptor, char* bytes, std::size_t size)
{
    int interruptions = 0;
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = read(descriptor, bytes + done, size - done);
        if (count < 0 && IsInterrupted(interruptions))
            continue;
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(done);
}

/// Reads the file into a text that has room for a changed value, so that a change need not move the text elsewhere: that
/// took as long as reading did.
bool ReadAll(int descriptor, std::size_t size, std::string& bytes)
{
    constexpr std::size_t kRoomForChanges = 512;
    ssize_t count = 0;
    const auto fill = [&](char* buffer, std::size_t /*room*/) {
        count = ReadInto(descriptor, buffer, size);
        return count < 0 ? std::size_t{0} : static_cast<std::size_t>(count);
    };
#ifdef __cpp_lib_string_resize_and_overwrite
    // Zeroing the room first would take a third of the time that reading takes.
    bytes.resize_and_overwrite(size + kRoomForChanges, fill);
#else
    bytes.resize(size + kRoomForChanges);
    bytes.resize(fill(bytes.data(), size));
#endif
    return count >= 0;
}

bool IsMissing(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

/// Whether the link in this folder is one that somebody may have planted: the folder is sticky and open to all, and the
/// link is not ours.
bool IsForeignLink(const std::string& path, const struct stat& link)
{
    struct stat folder = {};
    if (link.st_uid == geteuid())
        return false;
    if (stat(FolderOf(path).c_str(), &folder) != 0)
        return true;
    return (folder.st_mode & S_ISVTX) != 0 && (folder.st_mode & S_IWOTH) != 0;
}

bool ReadLinkTarget(const std::string& path, std::string& target)
{
    target.resize(PATH_MAX);
    const ssize_t length = readlink(path.c_str(), target.data(), target.size());
    if (length <= 0)
        return false;
    target.resize(static_cast<std::size_t>(length));
    return true;
}

/// Opens the file that the path names, through its links. On failure -1 and the reason.
int OpenThroughLinks(const char* path, ReadResult& reason)
{
    int number = OpenForReading(path);
    if (number == -1 && errno == ELOOP) {
        // The last name is a link. They are rare here, so only now is it looked at.
        std::string target = path;
        struct stat status = {};
        const LinkResult result = ResolveLinks(target, status);
        if (result != LinkResult::Resolved) {
            reason = result == LinkResult::Unresolvable ? ReadResult::Unreadable : ReadResult::Missing;
            return -1;
        }
        number = OpenForReading(target.c_str());
    }
    if (number == -1)
        reason = IsMissing(errno) ? ReadResult::Missing : ReadResult::Unreadable;
    return number;
}

} // namespace

ReadResult ReadFile(const char* path, std::string& bytes, struct stat* status)
{
    ReadResult reason = ReadResult::Done;
    const Descriptor file(OpenThroughLinks(path, reason));
    if (!file.IsOpen())
        return reason;

    struct stat found = {};
    if (fstat(file.Number(), &found) != 0 || !S_ISREG(found.st_mode))
        return ReadResult::Unreadable;
    std::string content;
    if (static_cast<std::uint64_t>(found.st_size) > content.max_size() / 2)
        return ReadResult::Unreadable;
    if (!ReadAll(file.Number(), static_cast<std::size_t>(found.st_size), content))
        return ReadResult::Unreadable;

    bytes = std::move(content);
    if (status != nullptr)
        *status = found;
    return ReadResult::Done;
}

LinkResult ResolveLinks(std::string& path, struct stat& status)
{
    for (int followed = 0; followed <= kMostLinks; ++followed) {
        if (lstat(path.c_str(), &status) != 0)
            return IsMissing(errno) ? LinkResult::Missing : LinkResult::Unresolvable;
        if (!S_ISLNK(status.st_mode))
            return LinkResult::Resolved;
        if (IsForeignLink(path, status))
            return LinkResult::Foreign;

        std::string target;
        if (!ReadLinkTarget(path, target))
            return LinkResult::Unresolvable;
        path = target.front() == '/' ? target : FolderOf(path) + "/" + target;
    }
    return LinkResult::Unresolvable;
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool WriteAll(int descriptor, std::string_view bytes)
{
    int interruptions = 0;
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && IsInterrupted(interruptions))
            continue;
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

Descriptor::~Descriptor()
{
    if (IsOpen())
        (void)close(number_);
}
