// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "temporary.h"

/// A folder that goes with the object: in $TMPDIR if that is set, otherwise in /dev/shm if there is enough memory for large
/// images, otherwise in /tmp. Only its owner may use it, because copies of phones hold secrets.
class Scratch
{
public:
    /// Throws `ToolError`.
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::filesystem::path Path(const std::string& name) const { return folder_->Path() / name; }

private:
    std::optional<Temporary> folder_; ///< locked as long as it is used
};

/// Removes the `Scratch` folders of this user, in memory and on the disk, whose process has ended without removing them, as one that is killed does.
/// What cannot be removed stays.
void RemoveScratchOfEndedProcesses();

/// Reads a regular file that is no link, whole. Throws `ToolError` when it cannot be read or is larger than `mostBytes`.
std::string ReadWhole(const std::filesystem::path& path, std::size_t mostBytes);

/// Makes or overwrites a file in a `Scratch` folder; a new one is for its owner only. Throws `ToolError`.
void WriteWhole(const std::filesystem::path& path, const std::string& bytes);
