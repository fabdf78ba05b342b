// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <sys/types.h>

/// A file, link or folder of a phone.
struct PhoneFile {
    enum class Kind { File, Link, Folder, Other };

    Kind kind = Kind::Other;
    mode_t mode = 0;                            ///< permission bits
    std::shared_ptr<const std::string> content; ///< a file's bytes, where a link leads; never null
};

bool operator==(const PhoneFile& one, const PhoneFile& other);
inline bool operator!=(const PhoneFile& one, const PhoneFile& other)
{
    return !(one == other);
}

/// Everything on a phone, by device path such as "/config/user/user.ini".
using Snapshot = std::map<std::string, PhoneFile>;

/// Reads a whole phone; follows no link. Throws `ToolError` for a file that cannot be read or is too large.
///
/// @param phone     the folder that holds its trees
/// @param previous  contents that are still the same are shared with it
Snapshot TakeSnapshot(const std::filesystem::path& phone, const Snapshot& previous = Snapshot());

/// @return the bytes of a file; empty when the path names none
const std::string& ContentOf(const Snapshot& snapshot, const std::string& path);

/// @return whether the path names a regular file
bool IsFile(const Snapshot& snapshot, const std::string& path);
