// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>

/// Reads files and follows links, with rules that every service of the platform shares: a run sees its own changes,
/// only regular files are read, opening a file never blocks, no child inherits a descriptor, and in a world-writable
/// folder such as "/tmp" only files of root and of the running user are trusted.

/// No file of the phone is larger; a larger one would need more memory than the device has.
constexpr std::size_t kLargestFile = std::size_t{4} << 20;

enum class ReadResult {
    Done,
    Missing,    ///< the path does not exist
    Unreadable, ///< the path exists, but cannot be read as a file
    TooLarge,   ///< a file of more than `kLargestFile` bytes, which were not read
};

/// Reads a whole regular file. A failed read is tried again twice; if it still fails, this run no longer changes the
/// file.
///
/// @param bytes   receives the content; unchanged unless the result is `Done`
/// @param status  receives the result of `fstat` when the file was read, or the kind and bits that the commit will give
///                a staged file; may be null
[[nodiscard]] ReadResult ReadFile(const char* path, std::string& bytes, struct stat* status = nullptr);

enum class LinkResult {
    Resolved,
    Missing,      ///< the path, or the last of its links, does not exist
    Foreign,      ///< the path leads to a file or link of another user in a world-writable folder
    Unresolvable, ///< a loop, or a link that cannot be read
};

/// Follows the link, or chain of links, if the path's last name is one.
///
/// @param path    on `Resolved` and `Missing` the path that is not a link; on `Foreign` the path that is not trusted
/// @param status  on `Resolved` the result of `lstat` for that path (of a staged file only its kind is right);
///                otherwise meaningless
[[nodiscard]] LinkResult ResolveLinks(std::string& path, struct stat& status);

/// @return whether the name is a file or link of another user except root in a world-writable folder
bool IsForeign(const std::string& path);
