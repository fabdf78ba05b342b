// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

#include "fileAttributes.h"

/// @return the name of a file's new content until it replaces the file: "<path>.kestrune-new"
std::string TemporaryPath(const std::string& path);

/// A file's new content in the same folder. It is removed on destruction, unless it was renamed or is kept.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& destination) : path_(TemporaryPath(destination)) {}
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Creates the file (a leftover is removed, no link is followed), readable only by its owner, writes the bytes,
    /// sets its attributes (fileAttributes.h), and flushes it.
    ///
    /// @return 0; otherwise the error number of the call that failed
    [[nodiscard]] int Write(std::string_view bytes, const FileOrigin& origin);

    /// @return 0 if it has replaced the destination; otherwise the error number
    [[nodiscard]] int RenameTo(const char* destination);

    /// Keeps the file: the commit record names it.
    void Keep() { exists_ = false; }

private:
    std::string path_;
    bool exists_ = false;
};
