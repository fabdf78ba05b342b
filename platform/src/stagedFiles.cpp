// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "stagedFiles.h"

#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <set>
#include <unistd.h>

#include "contentSum.h"
#include "descriptor.h"

namespace
{

struct KnownFolder {
    std::string path;
    dev_t device;
    ino_t number;
};

/// Static, because the saves and reads of all passes use it.
bool isStaging = false;
std::list<StagedFile> stagedFiles;
std::list<KnownFolder> knownFolders;    // each is looked up once, since a run uses the same folders often
std::list<std::string> unreadableFiles; // paths of files that must no longer be changed
std::set<std::string> refusals;         // paths that could not be staged

const KnownFolder* FindFolder(std::string path)
{
    if (!isStaging)
        knownFolders.clear(); // outside of a run, nothing else clears the list
    for (const KnownFolder& folder : knownFolders) {
        if (folder.path == path)
            return &folder;
    }
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return nullptr;
    knownFolders.push_back({std::move(path), status.st_dev, status.st_ino});
    return &knownFolders.back();
}

bool operator==(const FileName& one, const FileName& other)
{
    return one.device == other.device && one.folder == other.folder && one.name == other.name;
}

StagedFile* FindStaged(const FileName& name)
{
    for (StagedFile& staged : stagedFiles) {
        if (staged.Name() == name)
            return &staged;
    }
    return nullptr;
}

/// Absolute, because the run that finishes this one may be started in another folder.
std::string AbsolutePath(const std::string& path)
{
    char current[PATH_MAX];
    if (path.front() == '/' || getcwd(current, sizeof current) == nullptr)
        return path;
    return std::string(current) + "/" + path;
}

StagedFile* AddStaged(const std::string& path, const FileName& name)
{
    StagedFile staged;
    staged.path = AbsolutePath(path);
    staged.device = name.device;
    staged.folder = name.folder;
    stagedFiles.push_back(std::move(staged));
    return &stagedFiles.back();
}

/// Whether names in the file's folder can be created and removed, as far as this can be checked.
bool MayChangeFolderOf(const std::string& path)
{
    return faccessat(AT_FDCWD, FolderOf(path).c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool IsForbidden(const FileName& name)
{
    for (const std::string& path : unreadableFiles) {
        FileName unreadable;
        if (FindFileName(path, unreadable) && unreadable == name)
            return true;
    }
    return false;
}

/// The copy that this run has made of the file, if it still exists.
StagedFile* FindCopyOf(const FileName& source)
{
    for (StagedFile& staged : stagedFiles) {
        FileName origin;
        if (staged.state == StagedState::Saved && staged.origin.madeOf == MadeOf::ACopy &&
            FindFileName(staged.origin.source, origin) && origin == source)
            return &staged;
    }
    return nullptr;
}

bool IsEmptyFolder(const char* path)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path), &closedir);
    if (folder == nullptr)
        return false;
    while (const dirent* entry = readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            return false;
    }
    return true;
}

/// What `remove` would remove from the device: a file of any kind or an empty folder.
bool IsRemovable(const std::string& path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !MayChangeFolderOf(path))
        return false;
    return !S_ISDIR(status.st_mode) || IsEmptyFolder(path.c_str());
}

} // namespace

FileName StagedFile::Name() const
{
    return {device, folder, std::string_view(path).substr(path.rfind('/') + 1)};
}

void BeginStaging()
{
    isStaging = true;
}

void EndStaging()
{
    isStaging = false;
    stagedFiles.clear();
    knownFolders.clear();
    unreadableFiles.clear();
    refusals.clear();
}

bool IsStaging()
{
    return isStaging;
}

std::list<StagedFile>& StagedFiles()
{
    return stagedFiles;
}

bool FindFileName(const std::string& path, FileName& name)
{
    const KnownFolder* folder = FindFolder(FolderOf(path));
    if (folder == nullptr)
        return false;
    name = {folder->device, folder->number, std::string_view(path).substr(path.rfind('/') + 1)};
    return true;
}

bool IsSameName(const std::string& one, const std::string& other)
{
    FileName first;
    FileName second;
    return FindFileName(one, first) && FindFileName(other, second) && first == second;
}

StagedFile* FindStaged(const std::string& path)
{
    FileName name;
    if (stagedFiles.empty() || !FindFileName(path, name))
        return nullptr;
    return FindStaged(name);
}

bool StageSave(const SaveRequest& request)
{
    FileName name;
    if (!FindFileName(request.path, name) || name.name.empty() || IsForbidden(name))
        return false;
    StagedFile* staged = FindStaged(name);
    const bool isOnDevice = staged == nullptr || staged->state == StagedState::Touched;
    if (isOnDevice && !request.isMadeAfresh && HoldsBytes(request.path.c_str(), request.bytes)) {
        if (staged == nullptr)
            (void)AddStaged(request.path, name);
        return true;
    }
    if (isOnDevice && !MayChangeFolderOf(request.path))
        return false;

    FileOrigin origin = request.origin;
    if (staged == nullptr)
        staged = AddStaged(request.path, name);
    staged->bytes.assign(request.bytes);
    if (staged->state == StagedState::Removed || request.isMadeAfresh)
        staged->isMadeAfresh = true;
    if (staged->state != StagedState::Saved || origin.madeOf != MadeOf::Nothing)
        staged->origin = std::move(origin);
    staged->copy = nullptr;
    staged->state = StagedState::Saved;
    return true;
}

void ForbidChanges(const std::string& path)
{
    if (isStaging)
        unreadableFiles.push_back(AbsolutePath(path));
}

void CountRefusal(const std::string& path)
{
    try {
        if (isStaging)
            refusals.insert(AbsolutePath(path));
    } catch (...) {
        // No memory for the report: the run continues.
    }
}

int RefusalCount()
{
    return static_cast<int>(refusals.size());
}

bool StageRemoval(const std::string& path)
{
    FileName name;
    if (!FindFileName(path, name) || name.name.empty() || IsForbidden(name))
        return false;
    StagedFile* staged = FindStaged(name);
    if (staged != nullptr && staged->state == StagedState::Removed)
        return false;
    const bool isOnDevice = staged == nullptr || staged->state == StagedState::Touched;
    if (isOnDevice && !IsRemovable(path))
        return false;

    if (staged == nullptr)
        staged = AddStaged(path, name);
    staged->copy = FindCopyOf(name);
    std::string().swap(staged->bytes);
    staged->origin = {};
    staged->state = StagedState::Removed;
    return true;
}
