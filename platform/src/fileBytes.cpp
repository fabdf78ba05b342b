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

constexpr int kMostLinks = 40; // the kernel's limit
constexpr std::size_t kRoomForChanges = 512;

/// Reads the file into a text with room for a changed value: moving the text would take as long as reading it.
bool ReadAll(int descriptor, std::size_t size, std::string& bytes)
{
    ssize_t count = 0;
    const auto fill = [&](char* buffer, std::size_t /*room*/) {
        count = ReadInto(descriptor, buffer, size);
        return count < 0 ? std::size_t{0} : static_cast<std::size_t>(count);
    };
#ifdef __cpp_lib_string_resize_and_overwrite
    // Avoids zeroing the buffer, which takes a third of the time of reading.
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

/// Looks up a name. Tries again on any error other than a missing file.
///
/// @param look  `stat` or `lstat`
/// @return 0; otherwise the error number
template <typename Look>
int LookAt(Look look, const std::string& path, struct stat& status)
{
    int error = 0;
    for (int tries = 0; tries < kMostTries; ++tries) {
        if (look(path.c_str(), &status) == 0)
            return 0;
        error = errno;
        if (IsMissing(error))
            break;
    }
    return error;
}

enum class Trust {
    Ours,
    Foreign, ///< another user may have put it into the folder
    Unknown, ///< the folder cannot be examined
};

Trust TrustIn(const std::string& path, const struct stat& found)
{
    if (found.st_uid == geteuid() || found.st_uid == 0)
        return Trust::Ours;
    struct stat folder = {};
    if (LookAt(stat, FolderOf(path), folder) != 0)
        return Trust::Unknown;
    return (folder.st_mode & S_IWOTH) != 0 ? Trust::Foreign : Trust::Ours;
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

/// The kind and the permission bits that the commit will give a staged file.
struct stat StatusOf(const StagedFile& staged)
{
    struct stat status = {};
    if (!staged.isMadeAfresh && lstat(staged.path.c_str(), &status) == 0)
        return status;
    status = {};
    status.st_mode = S_IFREG | ModeOfNewFile(staged.origin.newFileMode);
    return status;
}

ReadResult ReadStaged(const StagedFile& staged, std::string& bytes, struct stat* status)
{
    if (staged.state == StagedState::Removed)
        return ReadResult::Missing;
    if (staged.bytes.size() > kLargestFile)
        return ReadResult::TooLarge;
    std::string content;
    content.reserve(staged.bytes.size() + kRoomForChanges);
    content = staged.bytes;
    bytes = std::move(content);
    if (status != nullptr)
        *status = StatusOf(staged);
    return ReadResult::Done;
}

/// How one attempt to read a file ended.
enum class Attempt { Ended, IsLink, Failed };

Attempt ReadOnce(const std::string& path, std::string& bytes, struct stat* status, ReadResult& result)
{
    const Descriptor file(OpenForReading(path.c_str()));
    struct stat found = {};
    if (!file.IsOpen()) {
        result = IsMissing(errno) ? ReadResult::Missing : ReadResult::Unreadable;
        if (errno == ELOOP)
            return Attempt::IsLink;
        return IsMissing(errno) || errno == ENXIO ? Attempt::Ended : Attempt::Failed; // ENXIO: a socket
    }
    result = ReadResult::Unreadable;
    if (fstat(file.Number(), &found) != 0)
        return Attempt::Failed;
    const Trust trust = TrustIn(path, found);
    if (trust == Trust::Unknown)
        return Attempt::Failed;
    std::string content;
    if (trust == Trust::Foreign)
        result = ReadResult::Missing;
    else if (S_ISREG(found.st_mode) && static_cast<std::uint64_t>(found.st_size) > kLargestFile)
        result = ReadResult::TooLarge;
    if (result != ReadResult::Unreadable || !S_ISREG(found.st_mode))
        return Attempt::Ended;
    if (!ReadAll(file.Number(), static_cast<std::size_t>(found.st_size), content))
        return Attempt::Failed;

    bytes = std::move(content);
    if (status != nullptr)
        *status = found;
    result = ReadResult::Done;
    return Attempt::Ended;
}

/// The staged change of this name, if its content differs; null if the device has the file.
const StagedFile* FindChanged(const std::string& path)
{
    const StagedFile* staged = FindStaged(path);
    return staged == nullptr || staged->state == StagedState::Touched ? nullptr : staged;
}

enum class LastLink { Follow, Refuse };

/// Forbids changes of the file that the path leads to, as far as it can be resolved.
void ForbidChangesThrough(const std::string& path)
{
    std::string target = path;
    struct stat ignored = {};
    ForbidChanges(ResolveLinks(target, ignored) == LinkResult::Resolved ? target : path);
}

ReadResult Read(const std::string& path, LastLink lastLink, std::string& bytes, struct stat* status)
{
    if (const StagedFile* staged = FindChanged(path))
        return ReadStaged(*staged, bytes, status);
    ReadResult result = ReadResult::Unreadable;
    Attempt attempt = Attempt::Failed;
    for (int tries = 0; tries < kMostTries && attempt == Attempt::Failed; ++tries)
        attempt = ReadOnce(path, bytes, status, result);
    if (attempt == Attempt::Failed)
        ForbidChangesThrough(path);
    if (attempt != Attempt::IsLink || lastLink == LastLink::Refuse)
        return result;

    // The last name is a link. Links are rare here, so they are resolved only now.
    std::string target = path;
    struct stat ignored = {};
    const LinkResult link = ResolveLinks(target, ignored);
    if (link == LinkResult::Resolved)
        return Read(target, LastLink::Refuse, bytes, status);
    return link == LinkResult::Unresolvable ? ReadResult::Unreadable : ReadResult::Missing;
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
        if (const int error = LookAt(lstat, path, status))
            return IsMissing(error) ? LinkResult::Missing : LinkResult::Unresolvable;
        const Trust trust = TrustIn(path, status);
        if (trust != Trust::Ours)
            return trust == Trust::Foreign ? LinkResult::Foreign : LinkResult::Unresolvable;
        if (!S_ISLNK(status.st_mode))
            return LinkResult::Resolved;

        std::string target;
        if (!ReadLinkTarget(path, target))
            return LinkResult::Unresolvable;
        path = target.front() == '/' ? target : FolderOf(path) + "/" + target;
    }
    return LinkResult::Unresolvable;
}

bool IsForeign(const std::string& path)
{
    struct stat status = {};
    return LookAt(lstat, path, status) == 0 && TrustIn(path, status) == Trust::Foreign;
}
