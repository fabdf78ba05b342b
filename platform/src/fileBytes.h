// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>

/// Reading files and following links, with the rules that every service of the platform shares: what a run has changed
/// is seen by it, only regular files are read, opening one never blocks, no descriptor reaches a child, and in a folder
/// that everyone may write to, such as "/tmp", nothing of another user but root is trusted.

/// No file of the phone is larger; one that is would take more memory than the device has.
constexpr std::size_t kLargestFile = std::size_t{4} << 20;

enum class ReadResult {
    Done,
    Missing,    ///< nothing has that path
    Unreadable, ///< something has it, but it cannot be read as a file
    TooLarge,   ///< a file of more than `kLargestFile` bytes, which were not read
};

/// Reads a whole regular file. A read that fails is tried again twice; when it still fails, the file is not changed any more
/// in this run.
///
/// @param bytes   gets the content; as it was unless the result is `Done`
/// @param status  gets what `fstat` says of the file when it was read, or the kind and bits that the commit will give a
///                staged one; may be null
ReadResult ReadFile(const char* path, std::string& bytes, struct stat* status = nullptr);

enum class LinkResult {
    Resolved,
    Missing,      ///< the path, or the last of its links, names nothing
    Foreign,      ///< the path reaches something of another user in a folder that everyone may write to
    Unresolvable, ///< a loop, or a link that cannot be read
};

/// Follows the link, or chain of links, that the path's last name may be.
///
/// @param path    on `Resolved` and `Missing` the path that is no link; on `Foreign` that of what is not trusted
/// @param status  on `Resolved` what `lstat` says of that path (of a staged file only its kind is right); otherwise of
///                no meaning
LinkResult ResolveLinks(std::string& path, struct stat& status);

/// @return whether the name has something of another user, root excepted, in a folder that everyone may write to
bool IsForeign(const std::string& path);
