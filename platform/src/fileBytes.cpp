// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileBytes.h"

#include <cerrno>
#include <climits>
#include <cstdint>
#include <unistd.h>

#include "descriptor.h"
#include "stagedFiles.h"
#include "temporaryFile.h"

namespace
{

constexpr int kMostLinks = 40; // as many as the kernel follows
constexpr std::size_t kRoomForChanges = 512;

/// Reads the file into a text that has room for a changed value, so that a change need not move the text elsewhere: that
/// took as long as reading did.
bool ReadAll(int descriptor, std::size_t size, std::string& bytes)
{
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

/// The attributes that the commit will give a staged file, as far as they are known before it.
struct stat StatusOf(const StagedFile& staged)
{
    struct stat status = {};
    if (!staged.isMadeAfresh && lstat(staged.path.c_str(), &status) == 0)
        return status;
    status = {};
    status.st_mode = S_IFREG | ModeOfNewFile(staged.newFileMode);
    status.st_uid = geteuid();
    status.st_gid = getegid();
    return status;
}

ReadResult ReadStaged(const StagedFile& staged, std::string& bytes, struct stat* status)
{
    if (staged.state == StagedState::Removed)
        return ReadResult::Missing;
    std::string content;
    content.reserve(staged.bytes.size() + kRoomForChanges);
    content = staged.bytes;
    bytes = std::move(content);
    if (status != nullptr)
        *status = StatusOf(staged);
    return ReadResult::Done;
}

ReadResult ReadDescriptor(const Descriptor& file, std::string& bytes, struct stat* status)
{
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

/// What was staged under this name, past what was only touched; null when the device has the file.
const StagedFile* FindChanged(const std::string& path)
{
    const StagedFile* staged = FindStaged(path);
    return staged == nullptr || staged->state == StagedState::Touched ? nullptr : staged;
}

enum class LastLink { Follow, Refuse };

ReadResult Read(const std::string& path, LastLink lastLink, std::string& bytes, struct stat* status)
{
    if (const StagedFile* staged = FindChanged(path))
        return ReadStaged(*staged, bytes, status);
    const Descriptor file(OpenForReading(path.c_str()));
    if (file.IsOpen())
        return ReadDescriptor(file, bytes, status);
    if (errno != ELOOP || lastLink == LastLink::Refuse)
        return IsMissing(errno) ? ReadResult::Missing : ReadResult::Unreadable;

    // The last name is a link. They are rare here, so only now is it looked at.
    std::string target = path;
    struct stat ignored = {};
    const LinkResult result = ResolveLinks(target, ignored);
    if (result == LinkResult::Resolved)
        return Read(target, LastLink::Refuse, bytes, status);
    return result == LinkResult::Unresolvable ? ReadResult::Unreadable : ReadResult::Missing;
}

} // namespace

ReadResult ReadFile(const char* path, std::string& bytes, struct stat* status)
{
    return Read(path, LastLink::Follow, bytes, status);
}

LinkResult ResolveLinks(std::string& path, struct stat& status)
{
    for (int followed = 0; followed <= kMostLinks; ++followed) {
        if (const StagedFile* staged = FindChanged(path)) {
            status = {};
            status.st_mode = S_IFREG;
            return staged->state == StagedState::Removed ? LinkResult::Missing : LinkResult::Resolved;
        }
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
