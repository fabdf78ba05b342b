// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <list>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>

#include "fileAttributes.h"

/// What a run has changed so far: seen only by this run, and not on the device before its commit.
///
/// A file is known by its folder's identity and its last name, so that linked folders and folders that are mounted twice
/// lead to the same one, and another hard link does not.

/// A name in a folder.
struct FileName {
    dev_t device = 0;
    ino_t folder = 0;
    std::string_view name; ///< part of the path that it was made of
};

enum class StagedState {
    Touched, ///< saved with the bytes that the device has
    Saved,
    Removed,
    Failed, ///< could not be committed
};

struct StagedFile {
    std::string path; ///< its last name is no link that the commit would have to follow
    dev_t device = 0;
    ino_t folder = 0;
    StagedState state = StagedState::Touched;
    std::string bytes;          ///< of a saved file
    bool isMadeAfresh = false;  ///< its attributes are a new file's, whatever the device has under this name
    FileOrigin origin;          ///< of a saved file; what it replaces is seen at the commit
    StagedFile* copy = nullptr; ///< of a removed file: the copy that this run made of it, if any

    FileName Name() const;
};

/// Begins to stage, with nothing staged.
void BeginStaging();

/// Forgets everything that was staged.
void EndStaging();

bool IsStaging();

/// All staged files, in the order of their first change. They stay where they are until `EndStaging`.
std::list<StagedFile>& StagedFiles();

/// @return false when the path's folder is not there
bool FindFileName(const std::string& path, FileName& name);

/// @return whether both paths are the same name in the same folder
bool IsSameName(const std::string& one, const std::string& other);

/// @return what was staged under this name, its last link not followed; null when nothing was
StagedFile* FindStaged(const std::string& path);

/// How a file is to be saved.
struct SaveRequest {
    const std::string& path; ///< no link that is to be followed
    std::string_view bytes;
    bool isMadeAfresh;        ///< takes the place of what has this name, and nothing from it
    const FileOrigin& origin; ///< as far as it is not seen at the commit
};

/// Stages the file's new content. What can be seen to fail, fails: no folder, no permission, a read-only file system,
/// a file that could not be read in this run.
bool StageSave(const SaveRequest& request);

/// From here on the file is neither saved nor removed in this run: what a pass makes of a file that it could not read must
/// not take the file's place.
void ForbidChanges(const std::string& path);

/// Stages a removal.
///
/// @return false when there is nothing to remove, or it can be seen that it cannot be removed
bool StageRemoval(const std::string& path);
