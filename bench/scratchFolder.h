// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// A new folder, which is the current folder of the process until it is removed with its content. So recorded calls
/// contain no path of this machine.
class ScratchFolder
{
public:
    enum class Place {
        Memory, ///< the folder for temporary files, which script/bench puts in tmpfs
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

/// Ends the program with a message that names the failed operation.
void Require(bool isDone, const char* what);
