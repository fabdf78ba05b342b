// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>

/// A folder of our own that goes with the object, for its owner alone: copies of phones hold secrets.
class Scratch
{
public:
    /// In $TMPDIR, else in /tmp. Throws `ToolError`.
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::filesystem::path Path(const std::string& name) const { return folder_ / name; }

private:
    std::filesystem::path folder_;
};

/// From now on, whoever interrupts or ends the process ends it, but the folders of all `Scratch` objects go first. To be
/// called before the first thread and the first object.
void RemoveScratchWhenInterrupted();

/// Reads a regular file that is no link, whole. Throws `ToolError` when it cannot be read or has more bytes than that.
std::string ReadWhole(const std::filesystem::path& path, std::size_t mostBytes);

/// Who may read a file that we make.
enum class Readers { Owner, AsUmaskSays };

/// Makes or replaces a file. Throws `ToolError`.
void WriteWhole(const std::filesystem::path& path, const std::string& bytes, Readers readers = Readers::Owner);
