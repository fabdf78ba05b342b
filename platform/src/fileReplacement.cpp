// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileReplacement.h"

#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

#include "contentSum.h"
#include "copyFile.h"
#include "descriptor.h"
#include "fileBytes.h"
#include "replaceAtOnce.h"
#include "stagedFiles.h"

namespace
{

constexpr mode_t kPermissionBits = 07777;

/// The destination before it is replaced.
struct Destination {
    std::string path;    ///< the name of the new file
    bool exists = false; ///< as a regular file
    struct stat status = {};
};

/// Finds the file to replace, through its links.
///
/// @return false if it cannot be replaced
bool FindDestination(const char* path, Destination& destination)
{
    destination.path = path;
    const LinkResult result = ResolveLinks(destination.path, destination.status);
    if (result == LinkResult::Unresolvable)
        return false;

    // A file or link of another user is replaced itself, as if it were missing.
    destination.exists = result == LinkResult::Resolved;
    return !destination.exists || S_ISREG(destination.status.st_mode);
}

bool Replace(const Destination& destination, std::string_view bytes, FileOrigin origin)
{
    if (IsStaging())
        return StageSave({destination.path, bytes, /*isMadeAfresh=*/!destination.exists, origin});
    if (destination.exists && HoldsBytes(destination.path.c_str(), bytes)) {
        Touch(destination.path);
        return true;
    }
    if (destination.exists)
        origin.replaced = destination.path;
    return ReplaceAtOnce(destination.path, bytes, origin) == 0;
}

/// Counts a file that cannot be saved, for the report of the run.
bool CountIfRefused(bool isSaved, const char* path)
{
    if (!isSaved)
        CountRefusal(path);
    return isSaved;
}

bool Save(const char* path, std::string_view bytes, const FileOrigin& origin)
{
    Destination destination;
    return CountIfRefused(FindDestination(path, destination) && Replace(destination, bytes, origin), path);
}

/// Whether the destination is a link, or a chain of links, that ends at the source.
bool IsLinkToSource(const char* destinationPath, const Destination& destination, const char* sourcePath)
{
    if (!destination.exists || destination.path == destinationPath)
        return false;
    std::string source = sourcePath;
    struct stat ignored = {};
    return ResolveLinks(source, ignored) == LinkResult::Resolved && IsSameName(destination.path, source);
}

} // namespace

bool ReplaceFile(const char* path, std::string_view bytes, mode_t newFileMode)
{
    return Save(path, bytes, {"", "", MadeOf::Nothing, newFileMode});
}

bool ReplaceDerivedFile(const char* path, std::string_view bytes, const char* sourcePath)
{
    return Save(path, bytes, {"", sourcePath, MadeOf::Another, kModeLessUmask});
}

bool CopyFile(const char* destinationPath, const char* sourcePath)
{
    std::string bytes;
    struct stat status = {};
    Destination destination;
    if (ReadFile(sourcePath, bytes, &status) != ReadResult::Done)
        return false;
    const bool isFound = FindDestination(destinationPath, destination);
    if (IsLinkToSource(destinationPath, destination, sourcePath))
        destination = {destinationPath, /*exists=*/false, {}};
    const FileOrigin origin = {"", sourcePath, MadeOf::ACopy, static_cast<mode_t>(status.st_mode & kPermissionBits)};
    return CountIfRefused(isFound && Replace(destination, bytes, origin), destinationPath);
}

bool RemoveFile(const char* path)
{
    if (IsStaging())
        return StageRemoval(path);
    if (std::remove(path) != 0)
        return false;
    FlushFolder(FolderOf(path).c_str());
    return true;
}
