// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>

/// @return the name that a file's new content has until it takes the file's place: "<path>.kestrune-new"
std::string TemporaryPath(const std::string& path);

/// @param newFileMode  permission bits, or `kModeLessUmask`
/// @return the permission bits that a new file gets
mode_t ModeOfNewFile(mode_t newFileMode);

/// Whose a new file becomes, and who may use it.
struct FileAttributes {
    const struct stat* replaced; ///< the file whose owner, group and permission bits it takes; null for a new file
    mode_t newFileMode;          ///< permission bits of a new file; `kModeLessUmask` for 0644 less the umask
};

/// A file's new content in the same folder. It is removed when it goes out of scope, unless it was renamed or is kept.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& destination) : path_(TemporaryPath(destination)) {}
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Makes the file afresh (a leftover is removed, no link is followed), readable by its owner alone, writes the bytes,
    /// gives it its attributes, and flushes it.
    ///
    /// @return 0; otherwise the error number of the call that failed
    int Write(std::string_view bytes, const FileAttributes& attributes);

    /// @return 0 when it has taken the destination's place; otherwise the error number
    int RenameTo(const char* destination);

    /// Leaves it to the commit record, which names it.
    void Keep() { exists_ = false; }

private:
    std::string path_;
    bool exists_ = false;
};
