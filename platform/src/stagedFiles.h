// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <list>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>

#include "fileAttributes.h"

/// The changes of a run so far: visible only to this run, and not on the device before its commit.
///
/// A file is identified by the identity of its folder and by its last name, so linked folders and folders that are
/// mounted twice lead to the same file, but another hard link does not.

/// A name in a folder.
struct FileName {
    dev_t device = 0;
    ino_t folder = 0;
    std::string_view name; ///< part of the path from which it was made
};

enum class StagedState {
    Touched, ///< saved with unchanged bytes
    Saved,
    Removed,
    Failed, ///< could not be committed
};

struct StagedFile {
    std::string path; ///< the commit does not follow its last name as a link
    dev_t device = 0;
    ino_t folder = 0;
    StagedState state = StagedState::Touched;
    std::string bytes;          ///< of a saved file
    bool isMadeAfresh = false;  ///< it gets the attributes of a new file, even if the device has a file of this name
    FileOrigin origin;          ///< of a saved file; the commit determines the file that it replaces
    StagedFile* copy = nullptr; ///< of a removed file: the copy that this run has made of it, if any

    FileName Name() const;
};

/// Begins staging, with no staged files.
void BeginStaging();

/// Discards all staged files.
void EndStaging();

bool IsStaging();

/// All staged files, in the order of their first change. Their addresses are valid until `EndStaging`.
std::list<StagedFile>& StagedFiles();

/// @return false if the path's folder does not exist
[[nodiscard]] bool FindFileName(const std::string& path, FileName& name);

/// @return whether both paths are the same name in the same folder
bool IsSameName(const std::string& one, const std::string& other);

/// @return the staged file of this name, whose last link is not followed; null if there is none
StagedFile* FindStaged(const std::string& path);

/// How a file is to be saved.
struct SaveRequest {
    const std::string& path; ///< its last name is not followed as a link
    std::string_view bytes;
    bool isMadeAfresh;        ///< replaces a file of this name without keeping its attributes
    const FileOrigin& origin; ///< except the parts that the commit determines
};

/// Stages the file's new content. Fails if the commit would visibly fail: no folder, no permission, a read-only file
/// system, a file that could not be read in this run.
[[nodiscard]] bool StageSave(const SaveRequest& request);

/// From then on the file is neither saved nor removed in this run: the result of a pass that could not read the file
/// must not replace it.
void ForbidChanges(const std::string& path);

/// Counts a file that a pass wanted to save, and that visibly cannot be saved; each path once in a run.
void CountRefusal(const std::string& path);
int RefusalCount();

/// Stages a removal.
///
/// @return false if there is nothing to remove, or it visibly cannot be removed
[[nodiscard]] bool StageRemoval(const std::string& path);
