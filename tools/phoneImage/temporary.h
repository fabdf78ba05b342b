// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>

/// A new file or folder that is removed, with everything in it, when the object goes or a signal ends the process.
class Temporary
{
public:
    enum class Kind { File, Folder };

    /// Makes it for its owner only: mode 0600 or 0700. Throws `ToolError`.
    ///
    /// @param stem  its path without the last part, a dot and six characters that make it new
    Temporary(const std::filesystem::path& stem, Kind kind);
    ~Temporary();
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    const std::filesystem::path& Path() const { return path_; }

    /// @return its descriptor, open for writing a file or for reading a folder, until the object goes; -1 for a folder
    ///         that was removed in between
    int Number() const { return number_; }

    /// Gives it its place, that of an older file included. It is then no longer removed. Throws `ToolError`.
    void RenameTo(const std::filesystem::path& path);

private:
    std::filesystem::path path_; ///< empty when it has its place
    int number_ = -1;
};

/// From now on the signals that interrupt or end a process (HUP, INT, QUIT and TERM) end it only after every `Temporary`
/// has been removed. To be called before the first thread and the first object.
void RemoveTemporariesWhenInterrupted();
