// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

#include "fileAttributes.h"

/// @return the name that a file's new content has until it takes the file's place: "<path>.kestrune-new"
std::string TemporaryPath(const std::string& path);

/// A file's new content in the same folder. It is removed when it goes out of scope, unless it was renamed or is kept.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& destination) : path_(TemporaryPath(destination)) {}
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Makes the file afresh (a leftover is removed, no link is followed), readable only by its owner, writes the bytes,
    /// gives it its attributes (fileAttributes.h), and flushes it.
    ///
    /// @return 0; otherwise the error number of the call that failed
    int Write(std::string_view bytes, const FileOrigin& origin);

    /// @return 0 when it has taken the destination's place; otherwise the error number
    int RenameTo(const char* destination);

    /// Leaves it to the commit record, which names it.
    void Keep() { exists_ = false; }

private:
    std::string path_;
    bool exists_ = false;
};
