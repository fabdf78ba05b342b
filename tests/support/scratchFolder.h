// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// A new, empty folder, which is removed with its content on destruction.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// @return the folder's absolute path without a slash at its end, or that of a name in it
    std::string Path() const { return path_; }
    std::string Path(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

/// The file's bytes; the test fails if it cannot be read.
std::string ReadBytes(const std::string& path);

/// Writes the file and creates missing folders; the test fails if it cannot be written.
void WriteBytes(const std::string& path, const std::string& bytes);
