// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// A new folder, in which the process works until it is removed with all that is in it. So recorded calls name no path of this
/// machine.
class ScratchFolder
{
public:
    enum class Place {
        Memory, ///< the folder for temporary files, which script/bench has in tmpfs
        Disk,   ///< the folder in which the program was started
    };

    explicit ScratchFolder(Place place);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

private:
    std::filesystem::path before_;
    std::filesystem::path path_;
};

/// Writes a file of the current folder, and flushes it to the device.
void WriteDurably(const std::string& path, std::string_view bytes);

/// Ends the program with a word about what failed.
void Require(bool isDone, const char* what);
